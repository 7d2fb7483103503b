// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalItem.h"

#include <QList>

namespace bram
{

/// The pending requests, newest first, at most 50.
class PendingApprovals
{
public:
    static constexpr qsizetype maxItems = 50;

    const QList<ApprovalItem> &items() const { return m_items; }

    /// Replaces the request with the same id where it stands, or puts a new one first; the oldest falls
    /// off the end, and its id is the result.
    std::optional<QString> upsert(const ApprovalItem &item);
    void remove(const QString &approvalId);
    void clear() { m_items.clear(); }
    const ApprovalItem *find(const QString &approvalId) const;

private:
    QList<ApprovalItem> m_items;
};

} // namespace bram
