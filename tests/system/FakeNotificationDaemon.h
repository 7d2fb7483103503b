// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QHash>
#include <QObject>
#include <QVariantMap>

#include <algorithm>
#include <utility>

namespace bram::test
{

inline const QString notificationsName = QStringLiteral("org.freedesktop.Notifications");
inline const QString notificationsPath = QStringLiteral("/org/freedesktop/Notifications");

/// A notification service on a bus connection of its own, which shows nothing and misbehaves on demand.
class FakeNotificationDaemon : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")
    Q_PROPERTY(bool Inhibited MEMBER inhibited)

public:
    struct Shown {
        QString application;
        QString icon;
        QString title;
        QString body;
        QStringList actions;
        QVariantMap hints;
        int expireTimeout = 0;
    };
    enum class Answers {
        AtOnce,
        OnDemand, ///< by `answerHeld`
        WithAnError,
    };

    ~FakeNotificationDaemon() override
    {
        if (bus().isConnected()) {
            bus().unregisterService(notificationsName); // and wait: the next test has the same bus
        }
        vanish();
    }

    void appear()
    {
        static int serial = 0;
        m_connection = QStringLiteral("fake-daemon-%1").arg(++serial);
        auto connection = QDBusConnection::connectToBus(QDBusConnection::SessionBus, m_connection);
        connection.registerObject(notificationsPath, this,
                                  QDBusConnection::ExportAllSlots
                                      | QDBusConnection::ExportAllProperties);
        connection.registerService(notificationsName);
    }
    /// As when the process has died.
    void vanish()
    {
        QDBusConnection::disconnectFromBus(m_connection);
        shown.clear();
        held.clear();
    }
    void answerHeld()
    {
        for (const auto &call : std::exchange(held, {})) {
            bus().send(call.createReply(notify(call.arguments())));
        }
    }
    void press(quint32 id, const QString &action) { send("ActionInvoked", {id, action}); }
    void dismiss(quint32 id)
    {
        shown.remove(id);
        send("NotificationClosed", {id, 2U});
    }
    void setInhibited(bool value)
    {
        inhibited = value;
        auto message = QDBusMessage::createSignal(notificationsPath,
                                                  QStringLiteral("org.freedesktop.DBus.Properties"),
                                                  QStringLiteral("PropertiesChanged"));
        message << notificationsName << QVariantMap {{QStringLiteral("Inhibited"), value}}
                << QStringList();
        bus().send(message);
    }

    QStringList capabilities {QStringLiteral("body"), QStringLiteral("actions")};
    Answers answers = Answers::AtOnce;
    bool inhibited = false;
    QHash<quint32, Shown> shown;
    QList<quint32> closed; ///< ids, as asked for
    QList<QDBusMessage> held;
    qsizetype mostHeld = 0;
    quint32 lastId = 40;

public Q_SLOTS:
    QStringList GetCapabilities() { return capabilities; }
    QString GetServerInformation(QString &vendor, QString &version, QString &protocolVersion)
    {
        vendor = QStringLiteral("nobody");
        version = QStringLiteral("1");
        protocolVersion = QStringLiteral("1.2");
        return QStringLiteral("fake");
    }
    quint32 Notify(const QString &, quint32, const QString &, const QString &, const QString &,
                   const QStringList &, const QVariantMap &, int)
    {
        if (answers == Answers::AtOnce) {
            return notify(message().arguments());
        }
        setDelayedReply(true);
        if (answers == Answers::WithAnError) {
            bus().send(message().createErrorReply(QStringLiteral("org.example.Full"),
                                                  QStringLiteral("no room, token=abc123")));
        } else {
            held.append(message());
            mostHeld = std::max(mostHeld, held.size());
        }
        return 0;
    }
    void CloseNotification(quint32 id)
    {
        closed.append(id);
        shown.remove(id);
        send("NotificationClosed", {id, 3U});
    }

private:
    QDBusConnection bus() const { return QDBusConnection(m_connection); }
    void send(const char *signal, const QVariantList &arguments)
    {
        auto message = QDBusMessage::createSignal(notificationsPath, notificationsName,
                                                  QLatin1StringView(signal));
        message.setArguments(arguments);
        bus().send(message);
    }
    quint32 notify(const QVariantList &arguments)
    {
        quint32 id = arguments.at(1).toUInt();
        if (!shown.contains(id)) {
            id = ++lastId;
        }
        shown.insert(id,
                     {.application = arguments.at(0).toString(),
                      .icon = arguments.at(2).toString(),
                      .title = arguments.at(3).toString(),
                      .body = arguments.at(4).toString(),
                      .actions = arguments.at(5).toStringList(),
                      .hints = qdbus_cast<QVariantMap>(arguments.at(6)),
                      .expireTimeout = arguments.at(7).toInt()});
        return id;
    }

    QString m_connection;
};

} // namespace bram::test
