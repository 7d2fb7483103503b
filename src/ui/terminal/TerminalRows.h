// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ui/terminal/TerminalLine.h"

namespace bram
{

enum class RowBreaks {
    Anywhere, ///< the rows put together again are the text
    AtBlanks, ///< where there are any, and the blank goes: for sentences
};

/// Appends `text`, which holds no line feed, in rows that fit into `columns` (0: any width fits), the first one
/// behind `firstPrefix` and the others behind `nextPrefix`.
void appendRows(TerminalLines &lines, const QString &firstPrefix, const QString &nextPrefix,
                const QString &text, LineStyle style, int columns,
                RowBreaks breaks = RowBreaks::Anywhere);

} // namespace bram
