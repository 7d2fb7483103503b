// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>
#include <QStringList>

namespace bram::bench
{

/// Stands where a panel would: programs register their tray icons here. It shows none of them, so that what
/// is measured is the program alone.
class TrayRegistry final : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(QStringList RegisteredStatusNotifierItems READ items)
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ hasHost)
    Q_PROPERTY(int ProtocolVersion READ protocolVersion)

public:
    /// Ends the process when somebody else is there already.
    TrayRegistry();

    QStringList items() const { return {}; }
    bool hasHost() const { return true; }
    int protocolVersion() const { return 0; }

public Q_SLOTS:
    void RegisterStatusNotifierItem(const QString &service) { Q_EMIT registered(service); }

Q_SIGNALS:
    void registered(const QString &service);
};

} // namespace bram::bench
