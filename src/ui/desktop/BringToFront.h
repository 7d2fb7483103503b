// SPDX-License-Identifier: Apache-2.0
#pragma once

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

} // namespace bram
