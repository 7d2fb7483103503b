// SPDX-License-Identifier: Apache-2.0
#include "monitor/ApprovalBoard.h"

#include "system/Clock.h"
#include "system/Memory.h"
#include "system/NextTurn.h"
#include "system/SystemLog.h"

#include <QElapsedTimer>
#include <QPointer>

#include <algorithm>
#include <ranges>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
/// From this many requests on, a list that shrinks to a tenth was a burst.
constexpr qsizetype burstSize = 1000;
constexpr int longPublicationMs = 2;
constexpr int restsPerPublication = 4;
constexpr int longestRestMs = 250;
} // namespace

QList<ApprovalItem> deriveDisplayItems(const PopupQueue &popups, const PendingApprovals &pending,
                                       const AgentFilter *filter)
{
    QList<ApprovalItem> items;
    const auto take = [&](const ApprovalItem &item) {
        if (filter == nullptr || filter->matches(item)) {
            items.append(item);
        }
    };
    if (popups.activeItem()) {
        take(*popups.activeItem());
    }
    for (const auto &[turn, item] : popups.waiting()) {
        take(item);
    }
    for (const auto &item : pending.items()) {
        if (!popups.contains(item.approvalId)) {
            take(item);
        }
    }
    return items;
}

ApprovalBoard::ApprovalBoard(const Clock &clock, SystemLog &log, const MonitorPorts &ports)
    : m_clock(clock)
    , m_log(log)
    , m_ports(ports)
{
    m_publishRest.setSingleShot(true);
    connect(&m_publishRest, &QTimer::timeout, this, [this] {
        if (m_publishScheduled) {
            publishAtRest();
        }
    });
}

const ApprovalItem *ApprovalBoard::find(const QString &approvalId) const
{
    const auto *item = m_pending.find(approvalId);
    // One that fell off the pending list may still wait for the popup.
    return item != nullptr ? item : m_popups.find(approvalId);
}

const QList<ApprovalItem> &ApprovalBoard::displayItems() const
{
    if (m_displayStale) {
        m_displayItems = deriveDisplayItems(m_popups, m_pending, m_ports.agentFilter);
        m_displayStale = false;
    }
    return m_displayItems;
}

QString ApprovalBoard::commandFor(const QString &approvalId) const
{
    const auto *item = find(approvalId);
    return item != nullptr ? item->command : m_history.commandFor(approvalId).value_or(QString());
}

void ApprovalBoard::add(const ApprovalItem &item, AskReason reason)
{
    if (reason == AskReason::Usual) {
        m_askReasons.remove(item.approvalId);
    } else {
        m_askReasons.insert(item.approvalId, reason);
    }
    const auto *known = find(item.approvalId);
    const bool isChanged = known != nullptr && !isSameQuestion(*known, item);
    const bool isKnownOtherwise = known != nullptr && *known != item;
    m_unlisted.remove(item.approvalId);
    const auto fallenOff = m_pending.upsert(item);
    if (fallenOff) {
        letGoUnlessListed(*fallenOff);
    }
    addToHistory(item);
    refreshDerivedDisplays();
    if (!passesFilter(item)) {
        // It may have been another agent's request, which was asked about.
        withdrawNotification(item.approvalId);
        if (m_popups.remove(item.approvalId)) {
            dismissPopup();
            presentNextPopupIfNeeded();
        }
        return;
    }
    const bool isNotified = m_notifiedIds.contains(item.approvalId);
    ask(item);
    if (isNotified && m_ports.notifier != nullptr) {
        if (isChanged) {
            // Its buttons decide about the request as it is now: it must not show an older one.
            m_ports.notifier->update(item);
        } else if (isKnownOtherwise) {
            m_ports.notifier->updateTimes(item);
        }
    }
}

void ApprovalBoard::ask(const ApprovalItem &item)
{
    const auto active = m_popups.activeItem();
    switch (m_popups.enqueue(item)) {
    case PopupQueue::Entry::Queued:
        presentNextPopupIfNeeded();
        break;
    case PopupQueue::Entry::Known:
        if (active && active->approvalId == item.approvalId && *active != item) {
            presentActive();
        }
        break;
    case PopupQueue::Entry::NoRoom:
        tellOfLeavingOut(item);
        return;
    }
    if (isApprovalExpired(item, m_clock.nowMs())) {
        return; // on its way out
    }
    if (!m_notifiedIds.contains(item.approvalId)) {
        m_notifiedIds.insert(item.approvalId);
        if (m_ports.notifier != nullptr) {
            m_ports.notifier->schedule(item);
        }
    }
}

/// Once for each time that the queue is full.
void ApprovalBoard::tellOfLeavingOut(const ApprovalItem &item)
{
    if (!std::exchange(m_isLeavingOut, true)) {
        const QString count = QString::number(m_popups.waiting().size());
        m_log.write(QString(u"[Brackwen] the popup's queue is full count="_s + count
                            + u"; newer requests are only listed, from id="_s + item.approvalId));
        recordActivity(ActivityActor::App, ActivityAction::PopupQueueFull, u"count="_s + count);
    }
}

void ApprovalBoard::askPendingNeverAsked()
{
    // In the order of arrival.
    const QList<ApprovalItem> items = m_pending.items();
    for (const ApprovalItem &item : items | std::views::reverse) {
        if (passesFilter(item) && !m_popups.wasQueued(item.approvalId)) {
            ask(item);
        }
    }
}

void ApprovalBoard::askLeftOutWhenThereIsRoom()
{
    if (m_isLeavingOut && m_popups.isHalfEmpty()) {
        m_isLeavingOut = false;
        askPendingNeverAsked();
    }
}

void ApprovalBoard::applyAgentChoice()
{
    const auto notified = m_notifiedIds;
    for (const QString &approvalId : notified) {
        const auto *item = find(approvalId);
        if (item != nullptr && !passesFilter(*item)) {
            withdrawNotification(approvalId);
        }
    }
    if (m_popups.retain([this](const ApprovalItem &item) { return passesFilter(item); })) {
        dismissPopup();
    }
    m_isLeavingOut = false;
    askPendingNeverAsked();
    refreshDerivedDisplays();
    presentNextPopupIfNeeded();
}

void ApprovalBoard::withdrawNotification(const QString &approvalId)
{
    if (m_notifiedIds.remove(approvalId) && m_ports.notifier != nullptr) {
        m_ports.notifier->withdraw(approvalId);
    }
}

void ApprovalBoard::dismissPopup()
{
    ++m_presentationSerial; // an answer that is on its way counts no more
    if (m_ports.popup != nullptr) {
        m_ports.popup->dismiss();
    }
}

void ApprovalBoard::letGoUnlessListed(const QString &approvalId)
{
    if (m_pending.find(approvalId) != nullptr || m_popups.contains(approvalId)) {
        return;
    }
    if (m_ports.notifier != nullptr && m_notifiedIds.contains(approvalId)) {
        m_ports.notifier->withdraw(approvalId);
    }
    if (const auto forgotten = m_unlisted.add(approvalId)) {
        m_notifiedIds.remove(*forgotten);
        m_popups.remove(*forgotten);
        Q_EMIT requestForgotten(*forgotten);
    }
}

void ApprovalBoard::addToHistory(const ApprovalItem &item)
{
    m_history.upsertPending(item, m_clock.nowMs());
    Q_EMIT historyChanged();
}

void ApprovalBoard::remove(const QString &approvalId, ApprovalHistoryState state,
                           DecisionMaker maker)
{
    const bool wasListed = find(approvalId) != nullptr;
    m_unlisted.remove(approvalId);
    m_pending.remove(approvalId);
    if (m_popups.remove(approvalId)) {
        dismissPopup();
    }
    withdrawNotification(approvalId);
    m_history.update(approvalId, state, maker, m_clock.nowMs());
    Q_EMIT historyChanged();
    refreshDerivedDisplays();
    if (wasListed) {
        Q_EMIT requestRemoved(approvalId, state);
    }
    askLeftOutWhenThereIsRoom();
    presentNextPopupIfNeeded();
}

void ApprovalBoard::clearPending()
{
    m_pending.clear();
    m_unlisted.clear();
    const auto notified = std::exchange(m_notifiedIds, {});
    for (const auto &approvalId : notified) {
        if (m_ports.notifier != nullptr) {
            m_ports.notifier->withdraw(approvalId);
        }
    }
    dismissPopups();
}

void ApprovalBoard::clearHistory()
{
    m_history.clear();
    Q_EMIT historyChanged();
}

void ApprovalBoard::recordActivity(ActivityActor actor, ActivityAction action,
                                   const QString &detail)
{
    m_activity.record(actor, action, detail, m_clock.nowMs());
    Q_EMIT activityChanged();
}

void ApprovalBoard::dismissPopups()
{
    m_popups.reset();
    m_isLeavingOut = false;
    dismissPopup();
    refreshDerivedDisplays();
}

void ApprovalBoard::refreshDerivedDisplays()
{
    m_displayStale = true;
    if (!std::exchange(m_publishScheduled, true) && !m_publishRest.isActive()) {
        inNextTurn(this, [this] { publishAtRest(); });
    }
}

bool ApprovalBoard::passesFilter(const ApprovalItem &item) const
{
    return m_ports.agentFilter == nullptr || m_ports.agentFilter->matches(item);
}

void ApprovalBoard::presentNextPopupIfNeeded()
{
    if (m_ports.popup == nullptr) {
        return;
    }
    if (const auto item = m_popups.takeNext(m_clock.nowMs())) {
        m_log.write(QString(u"[Brackwen] presenting approval popup id="_s + item->approvalId));
        presentActive();
        refreshDerivedDisplays();
    }
}

void ApprovalBoard::presentActive()
{
    if (m_ports.popup == nullptr) {
        return;
    }
    const ApprovalItem item = *m_popups.activeItem();
    // An answer counts for the form of the request it was given to, and only for the newest.
    const auto serial = ++m_presentationSerial;
    m_ports.popup->present(item,
                           [self = QPointer(this), id = item.approvalId, serial](auto decision) {
                               if (self && self->m_presentationSerial == serial) {
                                   self->onPopupAnswered(id, decision);
                               }
                           });
}

void ApprovalBoard::onPopupAnswered(const QString &approvalId,
                                    std::optional<ApprovalDecision> decision)
{
    m_log.write(QString(u"[Brackwen] approval popup response id="_s + approvalId + u" decision="_s
                        + (decision ? rawText(*decision) : u"cancel"_s)));
    if (decision) {
        Q_EMIT decidedInPopup(approvalId, *decision);
    }
    m_popups.finish(approvalId);
    letGoUnlessListed(approvalId);
    askLeftOutWhenThereIsRoom();
    refreshDerivedDisplays();
    presentNextPopupIfNeeded();
}

/// Every surface looks at the whole list then, so that thousands of requests that go one by one would take the
/// square of their number: a publication that has taken long is given a rest, a few times as long.
void ApprovalBoard::publishAtRest()
{
    QElapsedTimer taken;
    taken.start();
    publish();
    if (const auto ms = static_cast<int>(taken.elapsed()); ms >= longPublicationMs) {
        m_publishRest.start(std::min(ms * restsPerPublication, longestRestMs));
    }
}

void ApprovalBoard::publish()
{
    m_publishScheduled = false;
    if (!m_askReasons.isEmpty()) { // a hash is slow to walk through even when nothing is in it
        m_askReasons.removeIf([this](auto reason) { return find(reason.key()) == nullptr; });
    }
    const auto previous = std::exchange(m_publishedItems, displayItems());
    if (m_ports.mirror != nullptr) {
        m_ports.mirror->update(m_pending.items());
    }
    if (m_publishedItems == previous) {
        return;
    }
    Q_EMIT displayItemsChanged();
    if (m_publishedItems.size() != previous.size()) {
        Q_EMIT badgeCountChanged(m_publishedItems.size());
    }
    returnMemoryAfterBurst();
}

void ApprovalBoard::returnMemoryAfterBurst()
{
    m_mostPublished = std::max(m_mostPublished, m_publishedItems.size());
    if (m_mostPublished >= burstSize && m_publishedItems.size() <= m_mostPublished / 10) {
        m_mostPublished = m_publishedItems.size();
        // In a later turn, when the old lists are gone.
        QMetaObject::invokeMethod(this, &returnFreeMemory, Qt::QueuedConnection);
    }
}

} // namespace bram
