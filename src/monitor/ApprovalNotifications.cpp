// SPDX-License-Identifier: Apache-2.0
#include "monitor/ApprovalNotifications.h"

#include "config/StoredSwitch.h"
#include "gateway/MaskedReason.h"
#include "model/CommandRules.h"
#include "model/HonestDisplay.h"
#include "model/ShownWhole.h"
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
const QString showLabel = u"Show"_s;
constexpr qint64 longestWaitMs = 24 * 60 * 60 * 1000;

QString tagFor(const QString &approvalId)
{
    return u"approval-"_s + approvalId;
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
    , m_reading(clock)
    , m_line(notificationLine(service.state()))
{
    m_failureShown.setSingleShot(true);
    m_failureShown.setInterval(failureShownFor);
    connect(&m_failureShown, &QTimer::timeout, this,
            &ApprovalNotifications::applyNotificationSettings);
    m_expiryTimer.setSingleShot(true);
    connect(&m_expiryTimer, &QTimer::timeout, this, &ApprovalNotifications::withdrawExpired);
    connect(&service, &NotificationService::stateChanged, this, [this] {
        m_reading.oneHasCome(); // what do-not-disturb has held back comes now
        applyNotificationSettings();
    });
    connect(&service, &NotificationService::shown, this, &ApprovalNotifications::onShown);
    connect(&service, &NotificationService::oneHasGone, this, [this] { m_reading.oneHasGone(); });
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
    for (const auto &tag : std::exchange(m_asked, {}).keys()) {
        m_service.withdraw(tag);
    }
}

Notification ApprovalNotifications::toNotification(const ApprovalItem &item) const
{
    const bool isHighRisk = commandRiskLevel(item.command) == CommandRisk::High;
    return {.tag = tagFor(item.approvalId),
            .title
            = (isHighRisk ? u"Brackwen HIGH-RISK approval needed"_s : u"Brackwen approval needed"_s)
                + (m_mark.isEmpty() ? QString() : u" · "_s + m_mark),
            .body = notificationBody(item.command),
            .category = approvalCategory,
            .isUrgent = isHighRisk,
            .actions = actionsFor(item),
            .clickLabel = showLabel};
}

QList<NotificationAction> ApprovalNotifications::actionsFor(const ApprovalItem &item) const
{
    const NotificationAction deny {actionDeny, u"Deny"_s};
    const bool isShownWhole = isShownWholeOnOneLine(item.command, maxBodyCharacters)
        && notificationBody(item.command) == item.command;
    if (isShownWhole || (m_allowPartlyShown != nullptr && m_allowPartlyShown->isOn())) {
        return {{actionAllowOnce, u"Allow once"_s}, {actionAllowAlways, u"Always allow"_s}, deny};
    }
    return {{actionShow, showLabel}, deny};
}

void ApprovalNotifications::schedule(const ApprovalItem &item)
{
    const auto notification = toNotification(item);
    m_service.show(notification);
    keep(item, notification);
}

void ApprovalNotifications::update(const ApprovalItem &item)
{
    auto changed = toNotification(item);
    changed.body.prepend(u"This request has changed. It is now:\n"_s);
    m_service.update(changed);
    m_reading.oneHasGone();
    keep(item, changed);
}

void ApprovalNotifications::updateTimes(const ApprovalItem &item)
{
    const auto asked = m_asked.constFind(tagFor(item.approvalId));
    if (asked != m_asked.cend()) {
        keep(item, Notification(asked->notification));
    }
}

void ApprovalNotifications::keep(const ApprovalItem &item, const Notification &notification)
{
    const QString tag = tagFor(item.approvalId);
    m_expiries.erase({m_asked.value(tag).item.expiresAtMs, tag});
    m_asked.insert(tag, {item, notification});
    if (item.expiresAtMs >= 1) {
        m_expiries.insert({item.expiresAtMs, tag});
    }
    withdrawExpired();
}

void ApprovalNotifications::withdraw(const QString &approvalId)
{
    const QString tag = tagFor(approvalId);
    m_expiries.erase({m_asked.take(tag).item.expiresAtMs, tag});
    m_service.withdraw(tag);
    m_reading.forget(tag);
    m_reading.oneHasGone();
}

void ApprovalNotifications::applyNotificationSettings()
{
    m_failureShown.stop();
    setLine(notificationLine(m_service.state()));
}

void ApprovalNotifications::onFailed(const QString &tag, const QString &reason)
{
    if (!m_asked.contains(tag)) {
        return; // nobody waits for it any more
    }
    const QString error = shownReason(reason);
    m_log.write(QString(u"Failed to schedule notification: "_s + error));
    m_failureShown.start();
    setLine({u"Notifications: failed ("_s + error + u')', IndicatorState::Red});
}

void ApprovalNotifications::onShown(const QString &tag)
{
    const auto asked = m_asked.constFind(tag);
    if (asked == m_asked.cend()) {
        m_reading.oneHasCome();
        return;
    }
    m_reading.came(
        tag, asked->notification.isUrgent ? BannerReading::highRiskTime : BannerReading::usualTime);
}

void ApprovalNotifications::onActionInvoked(const QString &tag, const QString &actionId)
{
    const bool isRead = m_reading.isRead(tag);
    m_reading.oneHasGone(); // also where the service keeps that to itself
    if (!m_asked.contains(tag)) {
        return;
    }
    const Asked asked = m_asked.value(tag);
    const auto decision = approvalDecisionFromRawText(actionId);
    if (actionId == actionShow || actionId == actionClick) {
        Q_EMIT showRequested(asked.item.approvalId);
    } else if (decision == ApprovalDecision::Deny || (decision && isRead)) {
        Q_EMIT decisionChosen(asked.item.approvalId, *decision);
    } else if (decision) {
        sayThatItCameTooEarly(asked.notification);
    }
}

/// Most services close a notification whose button was pressed: without a word it would look decided.
void ApprovalNotifications::sayThatItCameTooEarly(const Notification &notification)
{
    auto again = notification;
    again.body.prepend(
        u"Not allowed: this had only just appeared, changed or moved. Press again once you have read it.\n"_s);
    m_service.show(again);
}

void ApprovalNotifications::withdrawExpired()
{
    const qint64 nowMs = m_clock.nowMs();
    while (!m_expiries.empty() && m_expiries.begin()->first <= nowMs) {
        withdraw(QString(m_asked.value(m_expiries.begin()->second).item.approvalId));
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
