// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalDecision.h"
#include "model/IndicatorState.h"
#include "monitor/BannerReading.h"
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
class StoredSwitch;
class SystemLog;

/// Category of every approval notification.
inline constexpr QLatin1StringView approvalCategory("exec-approval");
/// Identifiers of the buttons; each is the wire text of its decision.
inline constexpr QLatin1StringView actionAllowOnce("allow-once");
inline constexpr QLatin1StringView actionAllowAlways("allow-always");
inline constexpr QLatin1StringView actionDeny("deny");
/// Decides nothing.
inline constexpr QLatin1StringView actionShow("show");

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

/// One desktop notification for each request. It goes when the request does, or when its time is over. Opening,
/// closing or ignoring it decides nothing. Main thread only.
///
/// One that shows its command whole has a button for each decision; any other can only be denied and shown. A
/// decision to allow that comes before it could be read (`BannerReading`) is not taken: the notification comes
/// back and says so.
class ApprovalNotifications final : public QObject, public ApprovalNotifier
{
    Q_OBJECT

public:
    ApprovalNotifications(NotificationService &service, const Clock &clock, SystemLog &log);

    /// Whether *allow* is offered also where the command is not shown whole; never without this. Asked for each
    /// notification that is shown, which then stays as it is.
    void setAllowPartlyShown(const StoredSwitch &allowPartlyShown)
    {
        m_allowPartlyShown = &allowPartlyShown;
    }

    void start();
    /// Takes all notifications off the screen: after the end of the program their buttons would be dead.
    void stop();

    /// What every title ends with, as that it is an exercise; empty for nothing.
    void setMark(const QString &mark) { m_mark = mark; }

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
    /// A person wants to see the request whole.
    void showRequested(const QString &approvalId);

private:
    /// A request, and its notification as it was shown last.
    struct Asked {
        ApprovalItem item;
        Notification notification;
    };

    Notification toNotification(const ApprovalItem &item) const;
    QList<NotificationAction> actionsFor(const ApprovalItem &item) const;
    void applyNotificationSettings();
    void keep(const ApprovalItem &item, const Notification &notification);
    void onFailed(const QString &tag, const QString &reason);
    void onShown(const QString &tag);
    void onActionInvoked(const QString &tag, const QString &actionId);
    void sayThatItCameTooEarly(const Notification &notification);
    void withdrawExpired();
    void setLine(const NotificationLine &line);

    NotificationService &m_service;
    const Clock &m_clock;
    SystemLog &m_log;
    const StoredSwitch *m_allowPartlyShown = nullptr;
    BannerReading m_reading;
    NotificationLine m_line;
    QString m_mark;
    QTimer m_failureShown; ///< while it runs, the line tells of a failure
    QHash<QString, Asked> m_asked; ///< by tag
    std::set<std::pair<qint64, QString>> m_expiries; ///< of these: when, and which tag
    QTimer m_expiryTimer;
};

} // namespace bram
