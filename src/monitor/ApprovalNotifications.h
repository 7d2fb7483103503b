// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalDecision.h"
#include "model/IndicatorState.h"
#include "monitor/MonitorPorts.h"
#include "system/NotificationService.h"

#include <QHash>
#include <QObject>
#include <QTimer>

#include <set>
#include <utility>

namespace bram
{

class Clock;
class SystemLog;

/// Category of every approval notification.
inline constexpr QLatin1StringView approvalCategory("exec-approval");
/// Identifiers of the buttons; each is the wire text of its decision.
inline constexpr QLatin1StringView actionAllowOnce("allow-once");
inline constexpr QLatin1StringView actionAllowAlways("allow-always");
inline constexpr QLatin1StringView actionDeny("deny");

/// What views show about notifications.
struct NotificationLine {
    QString notificationStatus;
    IndicatorState notificationIndicator = IndicatorState::Gray;

    bool operator==(const NotificationLine &) const = default;
};

/// The service's state in words. Permission, as other desktops ask for it, is not a thing here: a service
/// that is there may be used. So:
///   not known yet    gray    "Notifications: permission not requested yet"
///   present          green   "Notifications: enabled (banner badge sound)", what it offers of these
///   without buttons  yellow  "Notifications: enabled (banner), but this service shows no buttons"
///   do not disturb   yellow  "Notifications: enabled (banner), but held back by do-not-disturb"
///   absent           red     "Notifications: unavailable (REASON)"
///   startable        yellow  "Notifications: unavailable (REASON; the next one starts it)"
NotificationLine notificationLine(const NotificationServiceState &state);

/// A command as a notification's body: at most its first 80 characters, and "…" when there is more.
QString notificationBody(const QString &command);

/// One desktop notification for each request, with a button for each decision. It goes when the request
/// does, or when its time is over. Opening, closing or ignoring it decides nothing. Main thread only.
class ApprovalNotifications final : public QObject, public ApprovalNotifier
{
    Q_OBJECT

public:
    ApprovalNotifications(NotificationService &service, const Clock &clock, SystemLog &log);

    void start();
    /// Takes all notifications off the screen: after the end of the program their buttons would be dead.
    void stop();

    const NotificationLine &line() const { return m_line; }

    void schedule(const ApprovalItem &item) override;
    void update(const ApprovalItem &item) override;
    void updateTimes(const ApprovalItem &item) override;
    void withdraw(const QString &approvalId) override;

Q_SIGNALS:
    /// The line really changed.
    void statusLinesChanged();
    /// A person has pressed a button of the request's notification.
    void decisionChosen(const QString &approvalId, bram::ApprovalDecision decision);

private:
    void applyNotificationSettings();
    void keep(const ApprovalItem &item);
    void onFailed(const QString &tag, const QString &reason);
    void onActionInvoked(const QString &tag, const QString &actionId);
    void withdrawExpired();
    void setLine(const NotificationLine &line);

    NotificationService &m_service;
    const Clock &m_clock;
    SystemLog &m_log;
    NotificationLine m_line;
    QTimer m_failureShown; ///< while it runs, the line tells of a failure
    QHash<QString, ApprovalItem> m_items; ///< with a notification, by its tag
    std::set<std::pair<qint64, QString>> m_expiries; ///< of these: when, and which tag
    QTimer m_expiryTimer;
};

} // namespace bram
