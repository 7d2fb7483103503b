// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/PointImage.h"

#include <QPainter>
#include <QPixmap>

namespace bram
{

PointImage::PointImage(QSizeF size, const Draw &draw)
    : m_size(size)
{
    for (int scale = 1; scale <= maxScale; ++scale) {
        QImage image((size * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
        if (image.isNull()) {
            return;
        }
        image.setDevicePixelRatio(scale);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
        draw(painter, scale);
        painter.end();
        m_images[static_cast<std::size_t>(scale - 1)] = image;
    }
}

QIcon PointImage::icon() const
{
    QIcon icon;
    for (QImage image : m_images) {
        if (!image.isNull()) {
            // An icon looks for the picture that has the pixels it needs, and is led astray by their ratio.
            image.setDevicePixelRatio(1);
            icon.addPixmap(QPixmap::fromImage(image));
        }
    }
    icon.setIsMask(m_isTemplate);
    return icon;
}

} // namespace bram
