// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalHistoryEntry.h"
#include "model/ApprovalItem.h"

#include <QList>
#include <QSet>

#include <optional>

namespace bram
{

/// Every request seen lately and what became of it: newest first, at most 300 rows. Commands can have megabytes, and
/// rows outlive their requests: of a long command only the beginning is kept, and less where all together are
/// too long.
class ApprovalHistory
{
public:
    static constexpr qsizetype maxHistoryItems = 300;
    static constexpr qsizetype maxKeptUnits = 32 * 1024; ///< of one command
    static constexpr qsizetype maxKeptUnitsTogether = 4 * 1024 * 1024;
    static constexpr qsizetype leastKeptUnits = 1024; ///< of an old command where room is short

    const QList<ApprovalHistoryEntry> &entries() const { return m_entries; }

    /// Makes the request's row, or sets the existing one back to pending where it stands.
    void upsertPending(const ApprovalItem &item, qint64 nowMs);

    /// Sets the state of the request's row; a request without one gets a row with an empty command.
    /// `Resolved` does not replace a decision taken here: the gateway announces every decision, ours too, and a row
    /// that says which it was knows more than the announcement. It does replace an end by our own clock, which
    /// may be fast.
    void update(const QString &approvalId, ApprovalHistoryState state, DecisionMaker maker,
                qint64 nowMs);

    /// The request's row; null when there is none.
    const ApprovalHistoryEntry *row(const QString &approvalId) const;
    /// The command of the request's row; nothing when there is no row, or not all of it is kept.
    std::optional<QString> commandFor(const QString &approvalId) const;

    void clear();

private:
    ApprovalHistoryEntry *find(const QString &approvalId);
    void insertNewest(ApprovalHistoryEntry entry);
    void keepCommand(ApprovalHistoryEntry &row, const QString &command, qsizetype maxUnits);
    void shortenOldest();

    QList<ApprovalHistoryEntry> m_entries;
    qsizetype m_keptUnits = 0; ///< of all commands
    QSet<QString> m_ids; ///< of the rows; an id has one row
};

} // namespace bram
