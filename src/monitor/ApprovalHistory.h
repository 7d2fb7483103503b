// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalHistoryEntry.h"
#include "model/ApprovalItem.h"

#include <QList>
#include <QSet>

#include <optional>

namespace bram
{

/// Every request seen lately and what became of it: newest first, at most 300 rows.
class ApprovalHistory
{
public:
    static constexpr qsizetype maxHistoryItems = 300;

    const QList<ApprovalHistoryEntry> &entries() const { return m_entries; }

    /// Makes the request's row, or sets the existing one back to pending where it stands.
    void upsertPending(const ApprovalItem &item, qint64 nowMs);

    /// Sets the state of the request's row; a request without one gets a row with an empty command.
    /// `Resolved` replaces only `Pending`: the gateway announces every decision, ours too, and a row that
    /// says which it was knows more than the announcement.
    void update(const QString &approvalId, ApprovalHistoryState state, DecisionMaker maker,
                qint64 nowMs);

    /// The command of the request's newest row; nothing when there is no row.
    std::optional<QString> commandFor(const QString &approvalId) const;

    void clear();

private:
    ApprovalHistoryEntry *find(const QString &approvalId);
    void insertNewest(ApprovalHistoryEntry entry);

    QList<ApprovalHistoryEntry> m_entries;
    QSet<QString> m_ids; ///< of the rows; an id has one row
};

} // namespace bram
