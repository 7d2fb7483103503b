// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/StatusDot.h"

#include <QPainter>
#include <QPixmap>

namespace bram
{

namespace
{
/// Distinct from one another and from both light and dark backgrounds.
QColor colourOf(IndicatorState state)
{
    switch (state) {
    case IndicatorState::Green:
        return {0x2e, 0xa0, 0x43};
    case IndicatorState::Yellow:
        return {0xd2, 0x99, 0x22};
    case IndicatorState::Red:
        return {0xda, 0x36, 0x33};
    case IndicatorState::Gray:
        return {0x8b, 0x94, 0x9e};
    }
    Q_UNREACHABLE();
}

QPixmap dotPixmap(IndicatorState state, int scale)
{
    constexpr int side = 16;
    constexpr qreal diameter = 10;
    QPixmap pixmap(side * scale, side * scale);
    pixmap.setDevicePixelRatio(scale);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colourOf(state));
    painter.drawEllipse(QRectF((side - diameter) / 2, (side - diameter) / 2, diameter, diameter));
    painter.end();
    // An icon chooses among its pictures by their sizes in pixels.
    pixmap.setDevicePixelRatio(1);
    return pixmap;
}
} // namespace

QIcon statusDot(IndicatorState state)
{
    QIcon icon;
    for (const int scale : {1, 2, 3}) {
        icon.addPixmap(dotPixmap(state, scale));
    }
    return icon;
}

} // namespace bram
