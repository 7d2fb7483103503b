// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QStyledItemDelegate>

namespace bram
{

/// A command on one line in the fixed-width face, and a smaller line below it.
class CommandCell final : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    /// Of a row, in a table with this font.
    static int heightFor(const QFont &font);

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
};

} // namespace bram
