// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/TrashIcon.h"

#include <QPainter>
#include <QPixmap>

namespace bram
{

namespace
{
QPixmap trashPixmap(const QColor &colour, int scale)
{
    constexpr int side = 16;
    QPixmap pixmap(side * scale, side * scale);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.scale(scale, scale);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colour, 1.2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawLine(QPointF(2.5, 4.5), QPointF(13.5, 4.5)); // lid
    painter.drawPolyline(QPolygonF {{6, 4.5}, {6, 2.5}, {10, 2.5}, {10, 4.5}}); // its handle
    painter.drawPolyline(QPolygonF {{3.8, 4.5}, {4.5, 13.5}, {11.5, 13.5}, {12.2, 4.5}});
    painter.drawLine(QPointF(6.6, 7), QPointF(6.8, 11));
    painter.drawLine(QPointF(9.4, 7), QPointF(9.2, 11));
    return pixmap;
}
} // namespace

QIcon trashIcon(const QPalette &palette)
{
    QIcon icon;
    for (const int scale : {1, 2, 3}) {
        icon.addPixmap(trashPixmap(palette.color(QPalette::ButtonText), scale));
        icon.addPixmap(trashPixmap(palette.color(QPalette::Disabled, QPalette::ButtonText), scale),
                       QIcon::Disabled);
    }
    return icon;
}

} // namespace bram
