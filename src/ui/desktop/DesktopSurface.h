// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "monitor/SurfaceFacts.h"
#include "ui/desktop/TrayHostWatch.h"

namespace bram
{

struct NotificationServiceState;

/// This desktop, as it is now.
SurfaceFacts desktopSurface(TrayHost trayHost, const NotificationServiceState &notifications);

} // namespace bram
