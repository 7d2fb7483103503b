// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/MenuRows.h"

#include <QHash>
#include <QSet>

namespace bram
{

QList<MenuRow> rowsOfClosedMenu(const QList<ApprovalItem> &items)
{
    QList<MenuRow> rows;
    rows.reserve(items.size());
    for (const ApprovalItem &item : items) {
        rows.append({item, true});
    }
    return rows;
}

QList<MenuRow> rowsOfOpenMenu(const QList<MenuRow> &shown, const QList<ApprovalItem> &items,
                              qsizetype mostRows)
{
    QHash<QStringView, const ApprovalItem *> pending;
    for (const ApprovalItem &item : items) {
        pending.insert(item.approvalId, &item);
    }
    QList<MenuRow> rows = shown;
    QSet<QStringView> shownIds;
    for (MenuRow &row : rows) {
        const ApprovalItem *now = pending.value(row.item.approvalId);
        row.isPending = row.isPending && now != nullptr && *now == row.item;
        if (row.isPending) {
            shownIds.insert(row.item.approvalId);
        }
    }
    for (const ApprovalItem &item : items) {
        if (rows.size() >= mostRows) {
            break;
        }
        if (!shownIds.contains(item.approvalId)) {
            rows.append({item, true});
        }
    }
    return rows;
}

} // namespace bram
