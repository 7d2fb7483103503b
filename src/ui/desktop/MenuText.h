// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalHistoryEntry.h"
#include "model/ApprovalItem.h"

#include <QString>
#include <QStringList>

namespace bram
{

/// Who draws a menu. Both read a mark for the underlined letter in a label, and each reads it differently.
enum class MenuDrawing {
    OwnWindow, ///< drawn by this program: "&" is the mark
    TrayHost, ///< sent over D-Bus and drawn by the panel: "_" is the mark there, and the toolkit on our
    ///< side turns the first "&" of a label into one
};

/// The label that is shown as exactly `text`: no character of it disappears or underlines its neighbour. But a
/// panel of another toolkit than GTK shows "_" doubled in a text with an "&" before it.
QString menuLabel(const QString &text, MenuDrawing drawing);

/// A command on one row: its first line, honestly, at most 60 characters; "…" where something is left out.
QString shortenedCommand(const QString &command);

/// The command whole, honestly, in rows of at most 64 characters. Of a very long one the first rows only;
/// `isWhole` says which.
struct MenuCommandRows {
    QStringList rows;
    bool isWhole = true;
};
MenuCommandRows commandRows(const QString &command);

/// The row of a pending request: what is asked, until when it can be decided, and a word when it is risky or could
/// mislead. The time of day rather than what is left, because a row of an open menu does not change.
QString pendingRowText(const ApprovalItem &item);

/// A status line on one row: a menu that is wider than the screen loses the beginning of its rows. The window and the
/// tool tip have it whole.
QString statusRowText(const QString &line);

/// The row of an ended request: what became of it, when, and the command.
QString historyRowText(const ApprovalHistoryEntry &entry);

} // namespace bram
