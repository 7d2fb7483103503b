// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>
#include <QStringList>

namespace bram
{

/// What only the front-end knows of the machine, for somebody who is to find out why it does not work there. Empty
/// where it does not apply.
struct SurfaceFacts {
    QString surface {}; ///< "desktop", "terminal"
    QString displayServer {}; ///< "xcb", "wayland"
    QString desktopEnvironment {}; ///< as it calls itself
    QString trayHost {}; ///< how the tray icon is shown: "StatusNotifierItem", "XEmbed", "none"
    QString notificationService {}; ///< name and version, or "none"
    QStringList screens {}; ///< "1920x1080 at 1.25", one each
};

} // namespace bram
