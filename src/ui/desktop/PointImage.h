// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QIcon>
#include <QImage>
#include <QSizeF>

#include <array>
#include <functional>

namespace bram
{

/// A picture of a size in points that was drawn for each number of pixels a point can have, so that it is
/// sharp on every screen. Its origin is at the top left.
class PointImage
{
public:
    static constexpr int maxScale = 3;
    /// Draws in points; `scale` is the number of pixels a point has in this drawing, 1 to maxScale.
    using Draw = std::function<void(QPainter &painter, int scale)>;

    PointImage() = default;
    PointImage(QSizeF size, const Draw &draw);

    bool isNull() const { return m_images[0].isNull(); }
    /// In points.
    QSizeF size() const { return m_size; }
    const QImage &image(int scale) const { return m_images[static_cast<std::size_t>(scale - 1)]; }

    /// Whether only its shape counts, and whoever shows it chooses the colour.
    bool isTemplate() const { return m_isTemplate; }
    void setTemplate(bool isTemplate) { m_isTemplate = isTemplate; }

    QIcon icon() const;

private:
    QSizeF m_size;
    std::array<QImage, maxScale> m_images;
    bool m_isTemplate = false;
};

} // namespace bram
