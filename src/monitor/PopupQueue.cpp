// SPDX-License-Identifier: Apache-2.0
#include "monitor/PopupQueue.h"

#include <algorithm>
#include <iterator>

namespace bram
{

PopupQueue::Entry PopupQueue::enqueue(const ApprovalItem &item)
{
    if (const auto turn = m_turns.constFind(item.approvalId); turn != m_turns.cend()) {
        if (const auto known = m_waiting.find(*turn); known != m_waiting.end()) {
            m_waitingUnits += item.command.size() - known->second.command.size();
            known->second = item;
        }
        if (isActive(item.approvalId)) {
            m_active = item;
        }
        return Entry::Known;
    }
    const bool hasRoom = m_waiting.size() < maxWaiting
        && (m_waiting.empty() || m_waitingUnits + item.command.size() <= maxWaitingUnits);
    if (!hasRoom) {
        return Entry::NoRoom;
    }
    m_turns.insert(item.approvalId, ++m_lastTurn);
    m_waiting.emplace_hint(m_waiting.end(), m_lastTurn, item);
    m_waitingUnits += item.command.size();
    return Entry::Queued;
}

const ApprovalItem *PopupQueue::find(const QString &approvalId) const
{
    if (isActive(approvalId)) {
        return &*m_active;
    }
    const auto turn = m_turns.constFind(approvalId);
    const auto found = turn == m_turns.cend() ? m_waiting.end() : m_waiting.find(*turn);
    return found == m_waiting.end() ? nullptr : &found->second;
}

std::optional<ApprovalItem> PopupQueue::takeNext(qint64 nowMs)
{
    if (m_active) {
        return std::nullopt;
    }
    const auto next = std::ranges::find_if(m_waiting, [nowMs](const auto &waiting) {
        return !isApprovalExpired(waiting.second, nowMs);
    });
    if (next == m_waiting.end()) {
        return std::nullopt;
    }
    m_active = next->second;
    drop(next);
    return m_active;
}

void PopupQueue::finish(const QString &approvalId)
{
    if (isActive(approvalId)) {
        m_active.reset();
        m_finishedIds.insert(approvalId);
    }
}

bool PopupQueue::remove(const QString &approvalId)
{
    m_finishedIds.remove(approvalId);
    if (const auto turn = m_turns.constFind(approvalId); turn != m_turns.cend()) {
        if (const auto waiting = m_waiting.find(*turn); waiting != m_waiting.end()) {
            drop(waiting);
        }
        m_turns.erase(turn);
    }
    if (!isActive(approvalId)) {
        return false;
    }
    m_active.reset();
    return true;
}

bool PopupQueue::retain(const std::function<bool(const ApprovalItem &)> &isKept)
{
    for (auto waiting = m_waiting.begin(); waiting != m_waiting.end();) {
        if (isKept(waiting->second)) {
            ++waiting;
        } else {
            m_turns.remove(waiting->second.approvalId);
            waiting = drop(waiting);
        }
    }
    if (!m_active || isKept(*m_active)) {
        return false;
    }
    m_turns.remove(m_active->approvalId);
    m_active.reset();
    return true;
}

void PopupQueue::reset()
{
    m_waiting.clear();
    m_waitingUnits = 0;
    m_turns.clear();
    m_finishedIds.clear();
    m_active.reset();
}

PopupQueue::Waiting::iterator PopupQueue::drop(Waiting::iterator waiting)
{
    m_waitingUnits -= waiting->second.command.size();
    return m_waiting.erase(waiting);
}

} // namespace bram
