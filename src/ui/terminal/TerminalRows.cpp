// SPDX-License-Identifier: Apache-2.0
#include "ui/terminal/TerminalRows.h"

#include <algorithm>
#include <limits>

namespace bram
{

namespace
{
constexpr int leastRoom = 8;

/// Columns a character may take, rather too many than too few: too many breaks a row early, too few
/// would leave the breaking to the terminal.
int columnsOf(char32_t c, bool isFirst)
{
    const bool joinsTheOneBefore
        = QChar::isMark(c) || (c >= 0x1160 && c <= 0x11FF) || (c >= 0xD7B0 && c <= 0xD7FB);
    if (joinsTheOneBefore && !isFirst) {
        return 0;
    }
    return c < 0x80 ? 1 : 2;
}
} // namespace

void appendRows(TerminalLines &lines, const QString &firstPrefix, const QString &nextPrefix,
                const QString &text, LineStyle style, int columns, RowBreaks breaks)
{
    const auto roomBehind = [columns](const QString &prefix) {
        return columns == 0 ? std::numeric_limits<int>::max()
                            : std::max(leastRoom, columns - 1 - int(prefix.size()));
    };
    int room = roomBehind(firstPrefix);
    QString row = firstPrefix;
    int used = 0;
    qsizetype wordStart = row.size(); // what follows may have to go to the next row as a whole
    int usedByWord = 0;
    for (const char32_t c : text.toUcs4()) {
        const int width = columnsOf(c, used == 0);
        const bool isBreak = breaks == RowBreaks::AtBlanks && c == U' ';
        if (used > room - width) {
            const bool takesWordAlong
                = breaks == RowBreaks::AtBlanks && !isBreak && usedByWord < used;
            const QString word = takesWordAlong ? row.sliced(wordStart) : QString();
            lines.append({takesWordAlong ? row.first(wordStart - 1) : row, style});
            row = nextPrefix + word;
            room = roomBehind(nextPrefix);
            wordStart = nextPrefix.size();
            usedByWord = takesWordAlong ? usedByWord : 0;
            used = usedByWord;
            if (isBreak) {
                continue;
            }
        }
        row.append(QChar::fromUcs4(c));
        used += width;
        usedByWord = isBreak ? 0 : usedByWord + width;
        wordStart = isBreak ? row.size() : wordStart;
    }
    lines.append({row, style});
}

} // namespace bram
