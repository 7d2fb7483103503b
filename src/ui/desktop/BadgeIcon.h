// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ui/desktop/PointImage.h"

#include <QColor>

#include <optional>

/// Puts a badge with a number, and a dot that says that a service runs, on a picture.
namespace bram::BadgeIcon
{

/// White text is legible on it.
inline constexpr QRgb systemRed = 0xffe01b24;
inline constexpr QRgb systemGreen = 0xff2ea043;

/// All lengths are in points.
struct Look {
    qsizetype count = 0; ///< the badge's number; below 1 there is no badge
    std::optional<qreal> badgeDiameter {}; ///< nothing: 0.45 of the picture's shorter side
    QColor badgeColor = QColor::fromRgb(systemRed);
    bool serviceRunning = false;
    std::optional<qreal> serviceIndicatorDiameter {}; ///< nothing: 0.34 of the shorter side
    QColor serviceIndicatorColor = QColor::fromRgb(systemGreen);
};

/// The badge at the top right of `baseImage`, the dot at its top left. The result is a template image when
/// there is neither.
PointImage make(const PointImage &baseImage, const Look &look);

/// The same on an icon of the desktop's theme, or on a plain disc where the theme has no such icon.
PointImage make(const QString &baseSymbolName, qreal pointSize, const Look &look);

/// A filled disc.
PointImage fallbackCircleImage(qreal diameter);

/// What a badge says: the number up to 99, "99+" above.
QString badgeText(qsizetype count);

} // namespace bram::BadgeIcon
