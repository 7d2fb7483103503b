// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/DesktopSurface.h"

#include "system/NotificationService.h"

#include <QGuiApplication>
#include <QScreen>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
QString trayHostName(TrayHost host)
{
    switch (host) {
    case TrayHost::None:
        return u"none"_s;
    case TrayHost::StatusNotifier:
        return u"StatusNotifierItem"_s;
    case TrayHost::XEmbed:
        return u"XEmbed"_s;
    }
    Q_UNREACHABLE();
}

QString notificationServiceName(const NotificationServiceState &state)
{
    using Kind = NotificationServiceState::Kind;
    const QString name = state.name.isEmpty() ? u"unnamed"_s : state.name;
    switch (state.kind) {
    case Kind::Unknown:
        return u"not asked yet"_s;
    case Kind::Present:
        return name;
    case Kind::DoNotDisturb:
        return name + u", do not disturb"_s;
    case Kind::Absent:
        return state.startsOnDemand ? u"none running, starts on demand"_s : u"none"_s;
    }
    Q_UNREACHABLE();
}
} // namespace

SurfaceFacts desktopSurface(TrayHost trayHost, const NotificationServiceState &notifications)
{
    QStringList screens;
    for (const QScreen *screen : QGuiApplication::screens()) {
        screens.append(u"%1x%2 at %3"_s.arg(screen->size().width())
                           .arg(screen->size().height())
                           .arg(screen->devicePixelRatio()));
    }
    return {
        .surface = u"desktop"_s,
        .displayServer = QGuiApplication::platformName(),
        .desktopEnvironment = qEnvironmentVariable("XDG_CURRENT_DESKTOP"),
        .trayHost = trayHostName(trayHost),
        .notificationService = notificationServiceName(notifications),
        .screens = screens,
    };
}

} // namespace bram
