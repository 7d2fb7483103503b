// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QPalette>

namespace bram
{

/// For words of warning on the window's background, light or dark. Colour is never the only sign.
inline QColor warningColour(const QPalette &palette)
{
    const bool isDark = palette.color(QPalette::Window).lightness() < 128;
    return isDark ? QColor(0xff, 0xc8, 0x57) : QColor(0x8a, 0x45, 0x00);
}

} // namespace bram
