// SPDX-License-Identifier: Apache-2.0
#include "monitor/ApprovalHistory.h"

#include <algorithm>

namespace bram
{

namespace
{
ApprovalHistoryEntry newRow(const QString &approvalId, const QString &command,
                            ApprovalHistoryState state, qint64 nowMs)
{
    return {.id = approvalId + u'-' + QString::number(nowMs),
            .approvalId = approvalId,
            .command = command,
            .state = state,
            .updatedAt = QDateTime::fromMSecsSinceEpoch(nowMs)};
}
} // namespace

void ApprovalHistory::upsertPending(const ApprovalItem &item, qint64 nowMs)
{
    if (auto *row = find(item.approvalId)) {
        row->command = item.command;
        row->state = ApprovalHistoryState::Pending;
        row->updatedAt = QDateTime::fromMSecsSinceEpoch(nowMs);
        return;
    }
    insertNewest(newRow(item.approvalId, item.command, ApprovalHistoryState::Pending, nowMs));
}

void ApprovalHistory::update(const QString &approvalId, ApprovalHistoryState state, qint64 nowMs)
{
    if (auto *row = find(approvalId)) {
        if (state == ApprovalHistoryState::Resolved && row->state != ApprovalHistoryState::Pending) {
            return;
        }
        row->state = state;
        row->updatedAt = QDateTime::fromMSecsSinceEpoch(nowMs);
        return;
    }
    insertNewest(newRow(approvalId, {}, state, nowMs));
}

std::optional<QString> ApprovalHistory::commandFor(const QString &approvalId) const
{
    const auto row = std::ranges::find(m_entries, approvalId, &ApprovalHistoryEntry::approvalId);
    return row == m_entries.end() ? std::nullopt : std::optional(row->command);
}

void ApprovalHistory::clear()
{
    m_entries.clear();
}

ApprovalHistoryEntry *ApprovalHistory::find(const QString &approvalId)
{
    const auto row = std::ranges::find(std::as_const(m_entries), approvalId,
                                       &ApprovalHistoryEntry::approvalId);
    return row == m_entries.cend() ? nullptr : &m_entries[row - m_entries.cbegin()];
}

void ApprovalHistory::insertNewest(ApprovalHistoryEntry entry)
{
    m_entries.prepend(std::move(entry));
    if (m_entries.size() > maxHistoryItems) {
        m_entries.resize(maxHistoryItems);
    }
}

} // namespace bram
