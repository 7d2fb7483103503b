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

ApprovalHistoryEntry newRow(const QString &approvalId, ApprovalHistoryState state, qint64 nowMs)
{
    return {.id = approvalId % u'-' % QString::number(nowMs),
            .approvalId = approvalId,
            .command = {},
            .state = state,
            .updatedAt = instant(nowMs)};
}
} // namespace

void ApprovalHistory::upsertPending(const ApprovalItem &item, qint64 nowMs)
{
    if (auto *row = find(item.approvalId)) {
        keepCommand(*row, item.command, maxKeptUnits);
        row->state = ApprovalHistoryState::Pending;
        row->maker = DecisionMaker::Person;
        row->updatedAt = instant(nowMs);
    } else {
        auto made = newRow(item.approvalId, ApprovalHistoryState::Pending, nowMs);
        keepCommand(made, item.command, maxKeptUnits);
        insertNewest(std::move(made));
    }
    shortenOldest();
}

void ApprovalHistory::update(const QString &approvalId, ApprovalHistoryState state,
                             DecisionMaker maker, qint64 nowMs)
{
    if (auto *row = find(approvalId)) {
        if (state == ApprovalHistoryState::Resolved && isOwnDecision(row->state)) {
            return;
        }
        row->state = state;
        row->maker = maker;
        row->updatedAt = instant(nowMs);
        return;
    }
    auto row = newRow(approvalId, state, nowMs);
    row.maker = maker;
    insertNewest(std::move(row));
}

const ApprovalHistoryEntry *ApprovalHistory::row(const QString &approvalId) const
{
    if (!m_ids.contains(approvalId)) {
        return nullptr;
    }
    const auto row = std::ranges::find(m_entries, approvalId, &ApprovalHistoryEntry::approvalId);
    return row == m_entries.end() ? nullptr : &*row;
}

std::optional<QString> ApprovalHistory::commandFor(const QString &approvalId) const
{
    const auto *found = row(approvalId);
    return found == nullptr || found->isCut ? std::nullopt : std::optional(found->command);
}

void ApprovalHistory::clear()
{
    m_entries.clear();
    m_keptUnits = 0;
    m_ids.clear();
}

ApprovalHistoryEntry *ApprovalHistory::find(const QString &approvalId)
{
    const auto *found = row(approvalId);
    return found == nullptr ? nullptr : &m_entries[found - m_entries.constData()];
}

void ApprovalHistory::insertNewest(ApprovalHistoryEntry entry)
{
    m_ids.insert(entry.approvalId);
    m_entries.prepend(std::move(entry));
    if (m_entries.size() > maxHistoryItems) {
        m_ids.remove(m_entries.constLast().approvalId);
        m_keptUnits -= m_entries.constLast().command.size();
        m_entries.removeLast();
    }
}

void ApprovalHistory::keepCommand(ApprovalHistoryEntry &row, const QString &command,
                                  qsizetype maxUnits)
{
    m_keptUnits -= row.command.size();
    if (command.size() <= maxUnits) {
        row.command = command;
    } else {
        const bool wouldSplit = command.at(maxUnits - 1).isHighSurrogate();
        row.command = command.first(wouldSplit ? maxUnits - 1 : maxUnits);
    }
    row.isCut = row.command.size() < command.size();
    m_keptUnits += row.command.size();
}

void ApprovalHistory::shortenOldest()
{
    for (auto i = m_entries.size() - 1; m_keptUnits > maxKeptUnitsTogether && i >= 0; --i) {
        if (m_entries.at(i).command.size() > leastKeptUnits) {
            keepCommand(m_entries[i], QString(m_entries.at(i).command), leastKeptUnits);
        }
    }
}

} // namespace bram
