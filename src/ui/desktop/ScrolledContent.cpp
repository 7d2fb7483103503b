// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/ScrolledContent.h"

#include <QEvent>
#include <QLayout>
#include <QStyle>

#include <algorithm>

namespace bram
{

ScrolledContent::ScrolledContent(QWidget *content, QWidget *parent)
    : QScrollArea(parent)
{
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setWidget(content);
}

bool ScrolledContent::eventFilter(QObject *watched, QEvent *event)
{
    const bool isHandled = QScrollArea::eventFilter(watched, event);
    if (watched == widget() && event->type() == QEvent::LayoutRequest) {
        fit();
    }
    return isHandled;
}

void ScrolledContent::resizeEvent(QResizeEvent *event)
{
    QScrollArea::resizeEvent(event);
    fit();
}

void ScrolledContent::fit()
{
    const QLayout &layout = *widget()->layout();
    const QSize smallest = widget()->minimumSize().expandedTo(layout.totalMinimumSize());
    const auto heightFor = [&](int width) {
        return std::max(smallest.height(), layout.totalMinimumHeightForWidth(width));
    };
    const QSize room = maximumViewportSize();
    int width = std::max(room.width(), smallest.width());
    if (heightFor(width) > room.height()) {
        width = std::max(room.width()
                             - style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, this),
                         smallest.width());
    }
    widget()->resize(width, std::max(room.height(), heightFor(width)));
}

} // namespace bram
