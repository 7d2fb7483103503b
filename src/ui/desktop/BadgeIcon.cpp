// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/BadgeIcon.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace bram::BadgeIcon
{

using namespace Qt::StringLiterals;

namespace
{
QRectF inset(const QRectF &rect, qreal by)
{
    return rect.adjusted(by, by, -by, -by);
}

/// The outline of `text` in the bold system font, as large as fits `disc`, with its middle at the origin.
/// An outline, for hinting moves the strokes of so small a text by whole pixels.
QPainterPath badgeTextOutline(const QString &text, const QRectF &disc)
{
    // Measured in large, since the metrics of small fonts are rounded to pixels.
    constexpr qreal unit = 100;
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setBold(true);
    font.setPixelSize(static_cast<int>(unit));
    font.setHintingPreference(QFont::PreferNoHinting);
    // The longer the text, the narrower the face: else the three characters of "99+" would be too low to read.
    font.setStretch(text.size() > 2       ? QFont::ExtraCondensed
                        : text.size() > 1 ? QFont::SemiCondensed
                                          : QFont::Unstretched);
    QPainterPath path;
    path.addText(0, 0, font, text);
    const QRectF bounds = path.boundingRect();

    qreal size = 0.7 * disc.height();
    while (bounds.width() * size / unit > 0.7 * disc.width() && size > 1) {
        size -= 1;
    }
    QTransform fit;
    fit.scale(size / unit, size / unit);
    fit.translate(-bounds.center().x(), -bounds.center().y());
    return fit.map(path);
}

void drawDisc(QPainter &painter, const QRectF &square, qreal rim, const QColor &colour)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::white);
    painter.drawEllipse(square);
    painter.setBrush(colour);
    painter.drawEllipse(inset(square, rim));
}

void drawBadge(QPainter &painter, int scale, QSizeF size, const Look &look, qreal diameter)
{
    const qreal margin = 0.1 * diameter;
    const QRectF square(size.width() - diameter - margin, margin, diameter, diameter);
    const qreal rim = 0.05 * diameter;
    drawDisc(painter, square, rim, look.badgeColor);
    const QRectF disc = inset(square, rim);
    const QPainterPath text
        = badgeTextOutline(badgeText(look.count), disc).translated(disc.center());
    painter.fillPath(text, Qt::white);
    // Two figures have strokes thinner than a pixel, which are pale. Three have no room for more.
    if (scale == 1 && look.count > 9 && look.count <= 99) {
        constexpr qreal bolder = 0.35;
        painter.strokePath(text, QPen(Qt::white, bolder));
    }
}

void drawServiceDot(QPainter &painter, const Look &look, qreal diameter)
{
    const qreal margin = 0.12 * diameter;
    drawDisc(painter, QRectF(margin, margin, diameter, diameter), 0.07 * diameter,
             look.serviceIndicatorColor);
}
} // namespace

PointImage make(const PointImage &baseImage, const Look &look)
{
    const QSizeF size = baseImage.size();
    const qreal side = std::min(size.width(), size.height());
    PointImage result(size, [&](QPainter &painter, int scale) {
        painter.drawImage(QRectF({}, size), baseImage.image(scale));
        if (look.count >= 1) {
            drawBadge(painter, scale, size, look, look.badgeDiameter.value_or(0.45 * side));
        }
        if (look.serviceRunning) {
            drawServiceDot(painter, look, look.serviceIndicatorDiameter.value_or(0.34 * side));
        }
    });
    result.setTemplate(look.count < 1 && !look.serviceRunning);
    return result;
}

PointImage make(const QString &baseSymbolName, qreal pointSize, const Look &look)
{
    const QIcon symbol = QIcon::fromTheme(baseSymbolName);
    if (symbol.isNull()) {
        return make(fallbackCircleImage(pointSize), look);
    }
    const QSizeF size(pointSize, pointSize);
    return make(PointImage(size,
                           [&](QPainter &painter, int) {
                               symbol.paint(&painter, QRectF({}, size).toRect());
                           }),
                look);
}

PointImage fallbackCircleImage(qreal diameter)
{
    return PointImage({diameter, diameter}, [&](QPainter &painter, int) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(Qt::black);
        painter.drawEllipse(QRectF(0, 0, diameter, diameter));
    });
}

QString badgeText(qsizetype count)
{
    return count <= 99 ? QString::number(std::max<qsizetype>(count, 0)) : u"99+"_s;
}

} // namespace bram::BadgeIcon
