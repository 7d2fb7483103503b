// SPDX-License-Identifier: Apache-2.0
#include "monitor/ApprovalNotifications.h"

#include "gateway/MaskedReason.h"
#include "model/CommandRules.h"
#include "model/HonestDisplay.h"
#include "model/TextRules.h"
#include "system/Clock.h"
#include "system/SystemLog.h"

#include <algorithm>
#include <chrono>

namespace bram
{

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{
constexpr qsizetype maxBodyCharacters = 80;
/// A character can be written with any number of code points.
constexpr qsizetype maxBodySize = 640;
constexpr qsizetype maxReasonCharacters = 160;
/// How long the line tells of a failure before it tells the service's state again.
constexpr auto failureShownFor = 8s;
constexpr qint64 longestWaitMs = 24 * 60 * 60 * 1000;

QString tagFor(const QString &approvalId)
{
    return u"approval-"_s + approvalId;
}

QList<NotificationAction> approvalActions()
{
    return {{actionAllowOnce, u"Allow once"_s},
            {actionAllowAlways, u"Always allow"_s},
            {actionDeny, u"Deny"_s}};
}

Notification toNotification(const ApprovalItem &item)
{
    const bool isHighRisk = commandRiskLevel(item.command) == CommandRisk::High;
    return {.tag = tagFor(item.approvalId),
            .title
            = isHighRisk ? u"Brackwen HIGH-RISK approval needed"_s : u"Brackwen approval needed"_s,
            .body = notificationBody(item.command),
            .category = approvalCategory,
            .isUrgent = isHighRisk,
            .actions = approvalActions()};
}

/// A reason in a stranger's words, fit for the log and for one line of a menu.
QString shownReason(const QString &reason)
{
    return honestLine(firstCharacters(maskedReason(reason).simplified(), maxReasonCharacters)).text;
}

/// Which styles the service offers, as " (banner badge sound)".
QString notificationDetailText(const QStringList &capabilities)
{
    QString words = u"banner "_s;
    if (capabilities.contains("persistence"_L1)) {
        words += u"badge "_s; // kept and counted until they are dealt with
    }
    if (capabilities.contains("sound"_L1)) {
        words += u"sound "_s;
    }
    return u" ("_s + words.trimmed() + u')';
}
} // namespace

NotificationLine notificationLine(const NotificationServiceState &state)
{
    const QString enabled
        = u"Notifications: enabled"_s + notificationDetailText(state.capabilities);
    switch (state.kind) {
    case NotificationServiceState::Kind::Unknown:
        return {u"Notifications: permission not requested yet"_s, IndicatorState::Gray};
    case NotificationServiceState::Kind::Present:
        if (!state.capabilities.contains("actions"_L1)) {
            return {enabled + u", but this service shows no buttons"_s, IndicatorState::Yellow};
        }
        return {enabled, IndicatorState::Green};
    case NotificationServiceState::Kind::DoNotDisturb:
        return {enabled + u", but held back by do-not-disturb"_s, IndicatorState::Yellow};
    case NotificationServiceState::Kind::Absent:
        return {u"Notifications: unavailable ("_s + shownReason(state.reason)
                    + (state.startsOnDemand ? u"; the next one starts it)"_s : u")"_s),
                state.startsOnDemand ? IndicatorState::Yellow : IndicatorState::Red};
    }
    Q_UNREACHABLE();
}

QString notificationBody(const QString &command)
{
    QString body = firstCharacters(command, maxBodyCharacters);
    if (body.size() > maxBodySize) {
        body.truncate(body.at(maxBodySize - 1).isHighSurrogate() ? maxBodySize - 1 : maxBodySize);
    }
    return body.size() < command.size() ? body + u'…' : body;
}

ApprovalNotifications::ApprovalNotifications(NotificationService &service, const Clock &clock,
                                             SystemLog &log)
    : m_service(service)
    , m_clock(clock)
    , m_log(log)
    , m_line(notificationLine(service.state()))
{
    m_failureShown.setSingleShot(true);
    m_failureShown.setInterval(failureShownFor);
    connect(&m_failureShown, &QTimer::timeout, this,
            &ApprovalNotifications::applyNotificationSettings);
    m_expiryTimer.setSingleShot(true);
    connect(&m_expiryTimer, &QTimer::timeout, this, &ApprovalNotifications::withdrawExpired);
    connect(&service, &NotificationService::stateChanged, this,
            &ApprovalNotifications::applyNotificationSettings);
    connect(&service, &NotificationService::failed, this, &ApprovalNotifications::onFailed);
    connect(&service, &NotificationService::actionInvoked, this,
            &ApprovalNotifications::onActionInvoked);
}

void ApprovalNotifications::start()
{
    m_service.start();
    applyNotificationSettings();
}

void ApprovalNotifications::stop()
{
    m_expiryTimer.stop();
    m_expiries.clear();
    const auto items = std::exchange(m_items, {});
    for (const auto &[tag, item] : items.asKeyValueRange()) {
        m_service.withdraw(tag);
    }
}

void ApprovalNotifications::schedule(const ApprovalItem &item)
{
    m_service.show(toNotification(item));
    keep(item);
}

void ApprovalNotifications::update(const ApprovalItem &item)
{
    auto changed = toNotification(item);
    changed.body.prepend(u"This request has changed. It is now:\n"_s);
    m_service.update(changed);
    keep(item);
}

void ApprovalNotifications::updateTimes(const ApprovalItem &item)
{
    if (m_items.contains(tagFor(item.approvalId))) {
        keep(item);
    }
}

void ApprovalNotifications::keep(const ApprovalItem &item)
{
    const QString tag = tagFor(item.approvalId);
    m_expiries.erase({m_items.value(tag).expiresAtMs, tag});
    m_items.insert(tag, item);
    if (item.expiresAtMs >= 1) {
        m_expiries.insert({item.expiresAtMs, tag});
    }
    withdrawExpired();
}

void ApprovalNotifications::withdraw(const QString &approvalId)
{
    const QString tag = tagFor(approvalId);
    m_expiries.erase({m_items.take(tag).expiresAtMs, tag});
    m_service.withdraw(tag);
}

void ApprovalNotifications::applyNotificationSettings()
{
    m_failureShown.stop();
    setLine(notificationLine(m_service.state()));
}

void ApprovalNotifications::onFailed(const QString &tag, const QString &reason)
{
    if (!m_items.contains(tag)) {
        return; // nobody waits for it any more
    }
    const QString error = shownReason(reason);
    m_log.write(QString(u"Failed to schedule notification: "_s + error));
    m_failureShown.start();
    setLine({u"Notifications: failed ("_s + error + u')', IndicatorState::Red});
}

void ApprovalNotifications::onActionInvoked(const QString &tag, const QString &actionId)
{
    const auto item = m_items.constFind(tag);
    const auto decision = approvalDecisionFromRawText(actionId);
    if (item != m_items.cend() && decision) {
        Q_EMIT decisionChosen(QString(item->approvalId), *decision);
    }
}

void ApprovalNotifications::withdrawExpired()
{
    const qint64 nowMs = m_clock.nowMs();
    while (!m_expiries.empty() && m_expiries.begin()->first <= nowMs) {
        withdraw(QString(m_items.value(m_expiries.begin()->second).approvalId));
    }
    if (m_expiries.empty()) {
        m_expiryTimer.stop();
    } else {
        const qint64 waitMs = std::min(m_expiries.begin()->first - nowMs, longestWaitMs);
        m_expiryTimer.start(std::chrono::milliseconds(waitMs));
    }
}

void ApprovalNotifications::setLine(const NotificationLine &line)
{
    if (line != m_line) {
        m_line = line;
        Q_EMIT statusLinesChanged();
    }
}

} // namespace bram
