// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace bram
{

/// Whether a window could be shown: the display that the environment names (WAYLAND_DISPLAY, DISPLAY)
/// takes a connection. Asked before the toolkit is started, which ends the process when it finds none.
/// A platform chosen by hand (QT_QPA_PLATFORM) is taken as it is.
bool isDisplayUsable();

} // namespace bram
