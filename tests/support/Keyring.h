// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/Waiting.h"

#include <QByteArray>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QElapsedTimer>

#include <gtest/gtest.h>

#include <csignal>

namespace bram::test
{

/// The keyring that tests/desktop/with-keyring has started for this process.
namespace keyring
{

inline QByteArray state()
{
    return qgetenv("BRAM_TEST_KEYRING");
}

inline QDBusMessage call(const QString &path, const QString &interface, const QString &method,
                         const QVariantList &arguments)
{
    QDBusMessage message = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.secrets"),
                                                          path, interface, method);
    message.setArguments(arguments);
    return QDBusConnection::sessionBus().call(message);
}

inline const QString service = QStringLiteral("org.freedesktop.Secret.Service");
inline const QString servicePath = QStringLiteral("/org/freedesktop/secrets");
inline const QString collectionPath = QStringLiteral("/org/freedesktop/secrets/collection/login");

inline QVariant collectionProperty(const QString &name)
{
    const auto reply
        = call(collectionPath, QStringLiteral("org.freedesktop.DBus.Properties"),
               QStringLiteral("Get"), {QStringLiteral("org.freedesktop.Secret.Collection"), name});
    return reply.arguments().value(0).value<QDBusVariant>().variant();
}

inline qsizetype itemCount()
{
    return qdbus_cast<QList<QDBusObjectPath>>(collectionProperty(QStringLiteral("Items"))).size();
}

inline bool isLocked()
{
    return collectionProperty(QStringLiteral("Locked")).toBool();
}

inline void lock()
{
    call(servicePath, service, QStringLiteral("Lock"),
         {QVariant::fromValue(QList<QDBusObjectPath> {QDBusObjectPath(collectionPath)})});
}

/// A secret as it travels over the bus.
struct BusSecret {
    QDBusObjectPath session;
    QByteArray parameters;
    QByteArray value;
    QString contentType = QStringLiteral("text/plain");
};
inline QDBusArgument &operator<<(QDBusArgument &argument, const BusSecret &secret)
{
    argument.beginStructure();
    argument << secret.session << secret.parameters << secret.value << secret.contentType;
    argument.endStructure();
    return argument;
}
inline const QDBusArgument &operator>>(const QDBusArgument &argument, BusSecret &secret)
{
    argument.beginStructure();
    argument >> secret.session >> secret.parameters >> secret.value >> secret.contentType;
    argument.endStructure();
    return argument;
}

/// With the password, as an operator who is asked for it does.
inline void unlock()
{
    qDBusRegisterMetaType<BusSecret>();
    const auto session
        = call(servicePath, service, QStringLiteral("OpenSession"),
               {QStringLiteral("plain"), QVariant::fromValue(QDBusVariant(QString()))});
    BusSecret password;
    password.session = session.arguments().value(1).value<QDBusObjectPath>();
    password.value = "keyring password";
    call(servicePath, QStringLiteral("org.gnome.keyring.InternalUnsupportedGuiltRiddenInterface"),
         QStringLiteral("UnlockWithMasterPassword"),
         {QVariant::fromValue(QDBusObjectPath(collectionPath)), QVariant::fromValue(password)});
}

/// Stands in for the window that asks for the password, counts the questions and refuses each.
class Prompter : public QDBusVirtualObject
{
public:
    Prompter()
    {
        auto bus = QDBusConnection::sessionBus();
        EXPECT_TRUE(bus.registerVirtualObject(path(), this));
        EXPECT_TRUE(bus.registerService(name()));
    }
    ~Prompter() override
    {
        auto bus = QDBusConnection::sessionBus();
        bus.unregisterService(name());
        bus.unregisterObject(path());
    }
    Q_DISABLE_COPY_MOVE(Prompter)

    int asked() const { return m_asked; }
    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &bus) override
    {
        m_asked += message.member() == QLatin1StringView("BeginPrompting") ? 1 : 0;
        return bus.send(message.createErrorReply(QDBusError::Failed, QStringLiteral("refused")));
    }

private:
    static QString name() { return QStringLiteral("org.gnome.keyring.SystemPrompter"); }
    static QString path() { return QStringLiteral("/org/gnome/keyring/Prompter"); }

    int m_asked = 0;
};

/// Stops the daemon in its tracks for as long as this lives: it is there and answers nothing.
class Frozen
{
public:
    Frozen() { ::kill(pid(), SIGSTOP); }
    ~Frozen() { ::kill(pid(), SIGCONT); }
    Q_DISABLE_COPY_MOVE(Frozen)

private:
    static pid_t pid() { return qgetenv("BRAM_TEST_KEYRING_PID").toInt(); }
};

} // namespace keyring

/// How long the event loop was not turned at most, in milliseconds.
class LoopStall : public QObject
{
public:
    LoopStall()
    {
        m_sinceTick.start();
        startTimer(1);
    }
    qint64 worstMs() const { return std::max(m_worst, m_sinceTick.elapsed()); }

protected:
    void timerEvent(QTimerEvent *) override { m_worst = std::max(m_worst, m_sinceTick.restart()); }

private:
    QElapsedTimer m_sinceTick;
    qint64 m_worst = 0;
};

} // namespace bram::test

Q_DECLARE_METATYPE(bram::test::keyring::BusSecret)
