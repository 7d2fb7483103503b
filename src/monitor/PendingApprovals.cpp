// SPDX-License-Identifier: Apache-2.0
#include "monitor/PendingApprovals.h"

#include <algorithm>

namespace bram
{

std::optional<QString> PendingApprovals::upsert(const ApprovalItem &item)
{
    const auto known = std::ranges::find(m_items, item.approvalId, &ApprovalItem::approvalId);
    if (known != m_items.end()) {
        *known = item;
        return std::nullopt;
    }
    m_items.prepend(item);
    if (m_items.size() <= maxItems) {
        return std::nullopt;
    }
    return m_items.takeLast().approvalId;
}

void PendingApprovals::remove(const QString &approvalId)
{
    m_items.removeIf([&](const ApprovalItem &item) { return item.approvalId == approvalId; });
}

const ApprovalItem *PendingApprovals::find(const QString &approvalId) const
{
    const auto found = std::ranges::find(m_items, approvalId, &ApprovalItem::approvalId);
    return found == m_items.end() ? nullptr : &*found;
}

} // namespace bram
