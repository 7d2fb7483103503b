// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QFont>
#include <QPalette>
#include <QStyledItemDelegate>

class QPainter;

namespace bram
{

/// What a chip says by its looks, beside its word.
enum class ChipTone {
    Plain,
    Accent,
    Warning,
};

/// The size of a chip with this word, in points.
QSize chipSize(const QString &word, const QFont &font);

/// Paints a small capsule with a word at the left of `area`, in colours of the palette. On a selected row the
/// colours are those of its text.
void paintChip(QPainter &painter, const QRect &area, const QString &word, ChipTone tone,
               const QPalette &palette, bool isSelected);

/// Shows the text of a cell as a chip; an empty one as nothing.
class ChipDelegate final : public QStyledItemDelegate
{
    Q_OBJECT

public:
    /// Of an index: an int, one of `ChipTone`.
    static constexpr int toneRole = Qt::UserRole + 100;

    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
};

} // namespace bram
