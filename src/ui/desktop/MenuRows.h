// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalItem.h"

#include <QList>

namespace bram
{

/// One row of a list of requests in a menu.
struct MenuRow {
    ApprovalItem item;
    bool isPending = true; ///< false: it ended while the menu was open, and keeps its place

    bool operator==(const MenuRow &) const = default;
};

enum class MenuState {
    Closed,
    Open,
};

/// The rows for `items` in a menu that is closed.
QList<MenuRow> rowsOfClosedMenu(const QList<ApprovalItem> &items);

/// The rows for `items` where `shown` is in a menu that is open: nothing moves under the pointer. What is
/// no longer pending, or has changed, keeps its row as ended; what is new comes after the last row, up to
/// `mostRows` in all.
QList<MenuRow> rowsOfOpenMenu(const QList<MenuRow> &shown, const QList<ApprovalItem> &items,
                              qsizetype mostRows);

} // namespace bram
