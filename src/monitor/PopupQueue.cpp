// SPDX-License-Identifier: Apache-2.0
#include "monitor/PopupQueue.h"

#include <algorithm>

namespace bram
{

bool PopupQueue::enqueue(const ApprovalItem &item)
{
    if (m_queuedIds.contains(item.approvalId)) {
        std::ranges::replace_if(
            m_waiting, [&](const auto &known) { return known.approvalId == item.approvalId; },
            item);
        if (m_active && m_active->approvalId == item.approvalId) {
            m_active = item;
        }
        return false;
    }
    m_queuedIds.insert(item.approvalId);
    m_waiting.append(item);
    return true;
}

const ApprovalItem *PopupQueue::find(const QString &approvalId) const
{
    if (m_active && m_active->approvalId == approvalId) {
        return &*m_active;
    }
    if (!contains(approvalId)) {
        return nullptr;
    }
    const auto found = std::ranges::find(m_waiting, approvalId, &ApprovalItem::approvalId);
    return found == m_waiting.end() ? nullptr : &*found;
}

std::optional<ApprovalItem> PopupQueue::takeNext(qint64 nowMs)
{
    if (m_active) {
        return std::nullopt;
    }
    const auto next = std::ranges::find_if(
        m_waiting, [nowMs](const ApprovalItem &item) { return !isApprovalExpired(item, nowMs); });
    if (next == m_waiting.end()) {
        return std::nullopt;
    }
    m_active = *next;
    m_waiting.erase(next);
    return m_active;
}

void PopupQueue::finish(const QString &approvalId)
{
    if (m_active && m_active->approvalId == approvalId) {
        m_active.reset();
        m_finishedIds.insert(approvalId);
    }
}

bool PopupQueue::remove(const QString &approvalId)
{
    m_finishedIds.remove(approvalId);
    if (m_queuedIds.remove(approvalId)) {
        m_waiting.removeIf([&](const ApprovalItem &item) { return item.approvalId == approvalId; });
    }
    if (!m_active || m_active->approvalId != approvalId) {
        return false;
    }
    m_active.reset();
    return true;
}

bool PopupQueue::retain(const std::function<bool(const ApprovalItem &)> &isKept)
{
    m_waiting.removeIf([&](const ApprovalItem &item) {
        const bool isOut = !isKept(item);
        if (isOut) {
            m_queuedIds.remove(item.approvalId);
        }
        return isOut;
    });
    if (!m_active || isKept(*m_active)) {
        return false;
    }
    m_queuedIds.remove(m_active->approvalId);
    m_active.reset();
    return true;
}

void PopupQueue::reset()
{
    m_waiting.clear();
    m_queuedIds.clear();
    m_finishedIds.clear();
    m_active.reset();
}

} // namespace bram
