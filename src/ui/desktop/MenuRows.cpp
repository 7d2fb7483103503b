// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/MenuRows.h"

#include <algorithm>

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

QList<MenuRow> rowsOfOpenMenu(const QList<MenuRow> &shown, const QList<ApprovalItem> &items)
{
    QList<MenuRow> rows = shown;
    for (MenuRow &row : rows) {
        row.isPending = row.isPending && items.contains(row.item);
    }
    for (const ApprovalItem &item : items) {
        const auto isItsRow = [&](const MenuRow &row) { return row.isPending && row.item == item; };
        if (std::ranges::none_of(rows, isItsRow)) {
            rows.append({item, true});
        }
    }
    return rows;
}

} // namespace bram
