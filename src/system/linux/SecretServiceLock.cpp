// SPDX-License-Identifier: Apache-2.0
#include "system/linux/SecretServiceLock.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QMap>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr int timeLimitMs = 5000;

using Attributes = QMap<QString, QString>;
using ItemPaths = QList<QDBusObjectPath>;
} // namespace

void SecretServiceLock::ask(const QString &service, const QString &account,
                            std::function<void(bool)> answer)
{
    qDBusRegisterMetaType<Attributes>();
    // The attributes under which the keyring library stores.
    const Attributes attributes {{u"server"_s, service}, {u"user"_s, account}};
    call(u"/org/freedesktop/secrets"_s, u"org.freedesktop.Secret.Service"_s, u"SearchItems"_s,
         {QVariant::fromValue(attributes)},
         [answer = std::move(answer)](const QDBusMessage &message) {
             const QDBusPendingReply<ItemPaths, ItemPaths> items(message);
             answer(!items.isError() && !items.argumentAt<1>().isEmpty());
         });
}

void SecretServiceLock::askWhetherLocked(std::function<void(bool)> answer)
{
    call(u"/org/freedesktop/secrets"_s, u"org.freedesktop.Secret.Service"_s, u"ReadAlias"_s,
         {u"default"_s}, [this, answer = std::move(answer)](const QDBusMessage &message) {
             const QDBusPendingReply<QDBusObjectPath> keyring(message);
             if (keyring.isError()) {
                 answer(false);
                 return;
             }
             call(keyring.value().path(), u"org.freedesktop.DBus.Properties"_s, u"Get"_s,
                  {u"org.freedesktop.Secret.Collection"_s, u"Locked"_s},
                  [answer](const QDBusMessage &property) {
                      const QDBusPendingReply<QDBusVariant> isLocked(property);
                      answer(!isLocked.isError() && isLocked.value().variant().toBool());
                  });
         });
}

void SecretServiceLock::call(const QString &path, const QString &interface, const QString &method,
                             const QVariantList &arguments,
                             std::function<void(const QDBusMessage &)> answer)
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) { // a call would never come back
        QMetaObject::invokeMethod(
            this,
            [answer = std::move(answer)] {
                answer(QDBusMessage::createError(QDBusError::Disconnected, {}));
            },
            Qt::QueuedConnection);
        return;
    }
    QDBusMessage question
        = QDBusMessage::createMethodCall(u"org.freedesktop.secrets"_s, path, interface, method);
    question.setAutoStartService(false);
    question.setArguments(arguments);
    auto *watcher = new QDBusPendingCallWatcher(bus.asyncCall(question, timeLimitMs), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
            [watcher, answer = std::move(answer)] {
                watcher->deleteLater();
                answer(watcher->reply());
            });
}

} // namespace bram
