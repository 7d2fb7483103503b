// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/CommandTextLayout.h"

#include "model/HonestDisplay.h"

#include <QFontMetrics>
#include <QTextLayout>
#include <QTextOption>

#include <algorithm>
#include <cmath>

namespace bram
{

namespace
{
QString firstLines(const QString &text, int count)
{
    qsizetype end = -1;
    for (; count > 0; --count) {
        end = text.indexOf(u'\n', end + 1);
        if (end < 0) {
            return text;
        }
    }
    return text.first(end);
}

/// What a text takes when its rows are broken at `width`.
QSize extentOf(QString text, const QFont &font, int width)
{
    QTextLayout layout(text.replace(u'\n', QChar::LineSeparator), font);
    layout.setTextOption(wrapAnywhere());
    QSizeF extent;
    layout.beginLayout();
    for (QTextLine row = layout.createLine(); row.isValid(); row = layout.createLine()) {
        row.setLeadingIncluded(true);
        row.setLineWidth(width);
        extent.setWidth(std::max(extent.width(), row.naturalTextWidth()));
        extent.rheight() += row.height();
    }
    layout.endLayout();
    return {int(std::ceil(extent.width())), int(std::ceil(extent.height()))};
}
} // namespace

QTextOption wrapAnywhere()
{
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAnywhere);
    return option;
}

qsizetype nextLineStart(const QString &text, qsizetype from)
{
    const qsizetype lineFeed = text.indexOf(u'\n', from);
    return lineFeed < 0 ? text.size() : lineFeed + 1;
}

QStringView indentationAt(QStringView text, qsizetype lineStart)
{
    qsizetype end = lineStart;
    while (end < text.size() && (text[end] == blankCell || text[end] == tabSign)) {
        ++end;
    }
    return text.sliced(lineStart, end - lineStart);
}

QList<int> blanksOfIndentation(QStringView line)
{
    QList<int> blanks;
    qsizetype tabEnd = 0;
    const qsizetype end = indentationAt(line, 0).size();
    for (qsizetype column = 0; column < end; ++column) {
        if (line[column] == tabSign) {
            tabEnd = (column / tabColumns + 1) * tabColumns;
        } else if (column >= tabEnd) {
            blanks.append(int(column));
        }
    }
    return blanks;
}

CommandFit fitCommand(const QString &text, const QFont &font, QSize least, QSize most,
                      int scrollBarWidth)
{
    // The lines that there is no room for in any case need not be looked at.
    const int mostLines = most.height() / std::max(1, QFontMetrics(font).height()) + 1;
    const QString lines = firstLines(text, mostLines);
    const bool isCut = lines.size() < text.size();
    if (!isCut && extentOf(lines, font, least.width()).height() <= least.height()) {
        return {least, true};
    }
    constexpr int unbroken = 1 << 20;
    const int width = std::clamp(extentOf(lines, font, unbroken).width() + scrollBarWidth,
                                 least.width(), most.width());
    const int height
        = isCut ? most.height() + 1 : extentOf(lines, font, width - scrollBarWidth).height();
    return {QSize(width, std::clamp(height, least.height(), most.height())),
            height <= most.height()};
}

} // namespace bram
