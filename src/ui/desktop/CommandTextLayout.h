// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QList>
#include <QSize>
#include <QString>

class QFont;
class QTextOption;

namespace bram
{

// How a command that is shown honestly (see model/HonestDisplay.h) is laid out, its blanks as `blankCell`.

/// Stands for a blank: the layout lets a U+0020 at the end of a row vanish. It cannot be mistaken, because
/// one in the command is shown as a mark.
inline constexpr QChar blankCell(0x00A0);

QTextOption wrapAnywhere();

/// Behind the text when there is none.
qsizetype nextLineStart(const QString &text, qsizetype from);

/// What a line begins with of blanks, and of tabs as they are drawn.
QStringView indentationAt(QStringView text, qsizetype lineStart);
/// Those of an indentation that do not belong to a tab.
QList<int> blanksOfIndentation(QStringView line);

struct CommandFit {
    QSize size;
    bool isWhole; ///< all of the text is in view at that size
};
/// The size in which to show a text: `least` where that will do, else wider and then higher, up to `most`. A
/// larger one leaves room for a scroll bar beside the text, which may be there before the view has grown.
CommandFit fitCommand(const QString &text, const QFont &font, QSize least, QSize most,
                      int scrollBarWidth);

} // namespace bram
