// SPDX-License-Identifier: Apache-2.0
#include "system/linux/DisplayServer.h"

#include <QDir>
#include <QFile>
#include <QLibraryInfo>
#include <QString>

#include <cstring>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <xcb/xcb.h>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
bool takesConnection(const QString &socketPath)
{
    const QByteArray path = QFile::encodeName(socketPath);
    sockaddr_un address {};
    address.sun_family = AF_UNIX;
    if (path.isEmpty() || path.size() >= static_cast<qsizetype>(sizeof(address.sun_path))) {
        return false;
    }
    std::memcpy(address.sun_path, path.constData(), static_cast<std::size_t>(path.size()));
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (descriptor < 0) {
        return false;
    }
    const int result
        = connect(descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof(address));
    close(descriptor);
    return result == 0;
}

/// The toolkit needs a plug-in for it, which is a package of its own.
bool hasWaylandPlugin()
{
    const QDir platforms(QLibraryInfo::path(QLibraryInfo::PluginsPath) + u"/platforms"_s);
    return !platforms.entryList({u"libqwayland*"_s}, QDir::Files).isEmpty();
}

bool isWaylandUsable()
{
    const QString name = qEnvironmentVariable("WAYLAND_DISPLAY");
    if (name.isEmpty()) {
        return false;
    }
    const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    const QString path = name.startsWith(u'/') ? name : folder + u'/' + name;
    return takesConnection(path) && hasWaylandPlugin();
}

bool isX11Usable()
{
    if (qEnvironmentVariableIsEmpty("DISPLAY")) {
        return false;
    }
    xcb_connection_t *connection = xcb_connect(nullptr, nullptr);
    const bool isUsable = xcb_connection_has_error(connection) == 0;
    xcb_disconnect(connection);
    return isUsable;
}
} // namespace

bool isDisplayUsable()
{
    return !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") || isWaylandUsable() || isX11Usable();
}

} // namespace bram
