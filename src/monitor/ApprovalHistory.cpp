// SPDX-License-Identifier: Apache-2.0
#include "monitor/ApprovalHistory.h"

#include "model/UtcTime.h"

#include <QStringBuilder>

#include <algorithm>

namespace bram
{

namespace
{
/// As UTC, which costs no look at the system's time zone; shown in local time.
QDateTime instant(qint64 ms)
{
    return utcTime(ms);
}

ApprovalHistoryEntry newRow(const QString &approvalId, const QString &command,
                            ApprovalHistoryState state, qint64 nowMs)
{
    return {.id = approvalId % u'-' % QString::number(nowMs),
            .approvalId = approvalId,
            .command = command,
            .state = state,
            .updatedAt = instant(nowMs)};
}
} // namespace

void ApprovalHistory::upsertPending(const ApprovalItem &item, qint64 nowMs)
{
    if (auto *row = find(item.approvalId)) {
        row->command = item.command;
        row->state = ApprovalHistoryState::Pending;
        row->maker = DecisionMaker::Person;
        row->updatedAt = instant(nowMs);
        return;
    }
    insertNewest(newRow(item.approvalId, item.command, ApprovalHistoryState::Pending, nowMs));
}

void ApprovalHistory::update(const QString &approvalId, ApprovalHistoryState state,
                             DecisionMaker maker, qint64 nowMs)
{
    if (auto *row = find(approvalId)) {
        if (state == ApprovalHistoryState::Resolved
            && row->state != ApprovalHistoryState::Pending) {
            return;
        }
        row->state = state;
        row->maker = maker;
        row->updatedAt = instant(nowMs);
        return;
    }
    auto row = newRow(approvalId, {}, state, nowMs);
    row.maker = maker;
    insertNewest(std::move(row));
}

std::optional<QString> ApprovalHistory::commandFor(const QString &approvalId) const
{
    const auto row = std::ranges::find(m_entries, approvalId, &ApprovalHistoryEntry::approvalId);
    return row == m_entries.end() ? std::nullopt : std::optional(row->command);
}

void ApprovalHistory::clear()
{
    m_entries.clear();
    m_ids.clear();
}

ApprovalHistoryEntry *ApprovalHistory::find(const QString &approvalId)
{
    if (!m_ids.contains(approvalId)) {
        return nullptr;
    }
    const auto row = std::ranges::find(std::as_const(m_entries), approvalId,
                                       &ApprovalHistoryEntry::approvalId);
    return row == m_entries.cend() ? nullptr : &m_entries[row - m_entries.cbegin()];
}

void ApprovalHistory::insertNewest(ApprovalHistoryEntry entry)
{
    m_ids.insert(entry.approvalId);
    m_entries.prepend(std::move(entry));
    if (m_entries.size() > maxHistoryItems) {
        m_ids.remove(m_entries.constLast().approvalId);
        m_entries.removeLast();
    }
}

} // namespace bram
