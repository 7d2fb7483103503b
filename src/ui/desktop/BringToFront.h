// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QScreen>
#include <QWidget>

namespace bram
{

/// Shows a window that somebody has asked for, wherever it was.
inline void bringToFront(QWidget &window)
{
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.show();
    window.raise();
    window.activateWindow();
}

/// The size a window has at first: the usual one, or less on a small screen.
inline void resizeWithinScreen(QWidget &window, QSize usual)
{
    constexpr QSize frame(16, 40);
    window.resize(usual.boundedTo(window.screen()->availableSize() - frame));
}

} // namespace bram
