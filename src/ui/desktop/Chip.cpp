// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/Chip.h"

#include "ui/desktop/WarningColours.h"

#include <QApplication>
#include <QPainter>

#include <algorithm>

namespace bram
{

namespace
{
constexpr int sidePadding = 8;
constexpr int topPadding = 2;
constexpr int cellMargin = 4;

QFont chipFont(QFont font)
{
    constexpr qreal share = 0.9;
    font.setPointSizeF(font.pointSizeF() * share);
    return font;
}

QColor withAlpha(QColor colour, int alpha)
{
    colour.setAlpha(alpha);
    return colour;
}
} // namespace

QSize chipSize(const QString &word, const QFont &font)
{
    const QFontMetrics metrics(chipFont(font));
    return {metrics.horizontalAdvance(word) + 2 * sidePadding, metrics.height() + 2 * topPadding};
}

void paintChip(QPainter &painter, const QRect &area, const QString &word, ChipTone tone,
               const QPalette &palette, bool isSelected)
{
    constexpr int faint = 34;
    constexpr int strong = 150;
    QColor ink = palette.color(QPalette::Text);
    QColor fill = withAlpha(ink, faint / 2);
    if (isSelected) {
        ink = palette.color(QPalette::HighlightedText);
        fill = withAlpha(ink, faint);
    } else if (tone == ChipTone::Warning) {
        ink = warningColour(palette);
        fill = withAlpha(ink, faint);
    } else if (tone == ChipTone::Accent) {
        fill = withAlpha(palette.color(QPalette::Highlight), 2 * faint);
    }
    const QSize size = chipSize(word, painter.font());
    const QRectF capsule(area.x() + 0.5, area.y() + (area.height() - size.height()) / 2 + 0.5,
                         std::min(size.width(), area.width()) - 1, size.height() - 1);
    const qreal radius = capsule.height() / 2;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(withAlpha(ink, strong));
    painter.setBrush(fill);
    painter.drawRoundedRect(capsule, radius, radius);
    painter.setPen(ink);
    painter.setFont(chipFont(painter.font()));
    const QRectF inside = capsule.adjusted(sidePadding - 1, 0, 1 - sidePadding, 0);
    painter.drawText(inside, Qt::AlignCenter | Qt::TextSingleLine,
                     painter.fontMetrics().elidedText(word, Qt::ElideRight,
                                                      static_cast<int>(inside.width()) + 1));
    painter.restore();
}

void ChipDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                         const QModelIndex &index) const
{
    QStyleOptionViewItem cell = option;
    initStyleOption(&cell, index);
    const QString word = std::exchange(cell.text, QString());
    const QStyle *style = cell.widget != nullptr ? cell.widget->style() : QApplication::style();
    style->drawControl(QStyle::CE_ItemViewItem, &cell, painter, cell.widget);
    if (word.isEmpty()) {
        return;
    }
    painter->save();
    painter->setFont(cell.font);
    paintChip(*painter, cell.rect.adjusted(cellMargin, 0, -cellMargin, 0), word,
              ChipTone(index.data(toneRole).toInt()), cell.palette,
              cell.state.testFlag(QStyle::State_Selected));
    painter->restore();
}

QSize ChipDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const QSize chip = chipSize(index.data(Qt::DisplayRole).toString(), option.font);
    return {chip.width() + 2 * cellMargin, chip.height() + cellMargin};
}

} // namespace bram
