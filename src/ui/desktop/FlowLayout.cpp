// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/FlowLayout.h"

#include <QStyle>
#include <QWidget>

#include <algorithm>

namespace bram
{

FlowLayout::FlowLayout(QWidget *parent)
    : QLayout(parent)
{
}

FlowLayout::~FlowLayout() = default;

void FlowLayout::addItem(QLayoutItem *item)
{
    m_items.emplace_back(item);
}

QLayoutItem *FlowLayout::itemAt(int index) const
{
    const auto position = static_cast<std::size_t>(index);
    return position < m_items.size() ? m_items[position].get() : nullptr;
}

QLayoutItem *FlowLayout::takeAt(int index)
{
    const auto position = static_cast<std::size_t>(index);
    if (position >= m_items.size()) {
        return nullptr;
    }
    QLayoutItem *taken = m_items[position].release();
    m_items.erase(m_items.begin() + index);
    return taken;
}

int FlowLayout::heightForWidth(int width) const
{
    return arrange({0, 0, width, 0}, Placing::Measure);
}

void FlowLayout::setGeometry(const QRect &area)
{
    QLayout::setGeometry(area);
    arrange(area, Placing::Place);
}

QSize FlowLayout::sizeHint() const
{
    const QMargins margins = contentsMargins();
    QSize hint;
    for (const auto &item : m_items) {
        const QSize size = item->isEmpty() ? QSize() : item->sizeHint();
        hint = QSize(hint.width() + std::max(0, size.width()) + std::max(0, spacing()),
                     std::max(hint.height(), size.height()));
    }
    return hint.grownBy(margins);
}

QSize FlowLayout::minimumSize() const
{
    QSize least;
    for (const auto &item : m_items) {
        least = item->isEmpty() ? least : least.expandedTo(item->minimumSize());
    }
    return least.grownBy(contentsMargins());
}

int FlowLayout::arrange(const QRect &area, Placing placing) const
{
    const QRect inside = area.marginsRemoved(contentsMargins());
    const int gap = spacing() >= 0
        ? spacing()
        : QLayout::parentWidget()->style()->layoutSpacing(QSizePolicy::PushButton,
                                                          QSizePolicy::PushButton, Qt::Horizontal);
    const bool isMirrored = parentWidget() != nullptr && parentWidget()->isRightToLeft();
    int x = inside.x();
    int y = inside.y();
    int rowHeight = 0;
    for (const auto &item : m_items) {
        if (item->isEmpty()) {
            continue;
        }
        const QSize size = item->sizeHint();
        if (x > inside.x() && x + size.width() > inside.x() + inside.width()) {
            x = inside.x();
            y += rowHeight + gap;
            rowHeight = 0;
        }
        if (placing == Placing::Place) {
            const QRect place(QPoint(x, y),
                              QSize(std::min(size.width(), inside.width()), size.height()));
            item->setGeometry(isMirrored ? QStyle::visualRect(Qt::RightToLeft, inside, place)
                                         : place);
        }
        x += size.width() + gap;
        rowHeight = std::max(rowHeight, size.height());
    }
    return y + rowHeight - inside.y() + contentsMargins().top() + contentsMargins().bottom();
}

} // namespace bram
