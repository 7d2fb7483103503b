// SPDX-License-Identifier: Apache-2.0
#include "tray/TrayRegistry.h"

#include <QDBusConnection>

#include <cstdio>
#include <cstdlib>

namespace bram::bench
{

TrayRegistry::TrayRegistry()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    const bool isThere
        = bus.registerObject(QStringLiteral("/StatusNotifierWatcher"), this,
                             QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllProperties)
        && bus.registerService(QStringLiteral("org.kde.StatusNotifierWatcher"));
    if (!isThere) {
        std::fputs("cannot stand in for a panel: is there a session bus without one?\n", stderr);
        std::exit(2);
    }
}

} // namespace bram::bench
