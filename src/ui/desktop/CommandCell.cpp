// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/CommandCell.h"

#include "ui/desktop/AlwaysAllowModel.h"
#include "ui/desktop/CommandTextView.h"

#include <QApplication>
#include <QPainter>
#include <QTextLayout>

#include <cmath>
#include <utility>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr int sidePadding = 4;
constexpr int verticalPadding = 8;
constexpr qreal smallShare = 0.85;

QFont lowerFont(const QFont &font)
{
    QFont small = font;
    small.setPointSizeF(font.pointSizeF() * smallShare);
    return small;
}

/// With room for the letters that come from another face.
int lineHeight(const QFont &font)
{
    QTextLayout layout(u"Åg한"_s, font);
    layout.beginLayout();
    const QTextLine line = layout.createLine();
    layout.endLayout();
    return static_cast<int>(std::ceil(line.height()));
}
} // namespace

int CommandCell::heightFor(const QFont &font)
{
    return lineHeight(commandFont(font.pointSizeF())) + lineHeight(lowerFont(font))
        + verticalPadding;
}

void CommandCell::paint(QPainter *painter, const QStyleOptionViewItem &option,
                        const QModelIndex &index) const
{
    QStyleOptionViewItem cell = option;
    initStyleOption(&cell, index);
    const QString command = std::exchange(cell.text, QString());
    const QStyle *style = cell.widget != nullptr ? cell.widget->style() : QApplication::style();
    style->drawControl(QStyle::CE_ItemViewItem, &cell, painter, cell.widget);

    const bool isSelected = cell.state.testFlag(QStyle::State_Selected);
    QColor ink = cell.palette.color(isSelected ? QPalette::HighlightedText : QPalette::Text);
    const QRect lines
        = cell.rect.adjusted(sidePadding, verticalPadding / 2, -sidePadding, -verticalPadding / 2);
    const int lowerHeight = lineHeight(lowerFont(cell.font));
    painter->save();
    painter->setPen(ink);
    painter->setFont(commandFont(cell.font.pointSizeF()));
    painter->drawText(lines.adjusted(0, 0, 0, -lowerHeight),
                      Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                      painter->fontMetrics().elidedText(command, Qt::ElideRight, lines.width()));
    constexpr qreal dimmed = 0.72;
    ink.setAlphaF(dimmed);
    painter->setPen(ink);
    painter->setFont(lowerFont(cell.font));
    const QString id = index.data(AlwaysAllowModel::idRole).toString();
    painter->drawText(lines.adjusted(0, lines.height() - lowerHeight, 0, 0),
                      Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                      painter->fontMetrics().elidedText(id, Qt::ElideRight, lines.width()));
    painter->restore();
}

} // namespace bram
