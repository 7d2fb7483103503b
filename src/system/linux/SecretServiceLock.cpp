// SPDX-License-Identifier: Apache-2.0
#include "system/linux/SecretServiceLock.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
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
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) { // a call would never come back
        QMetaObject::invokeMethod(
            this, [answer = std::move(answer)] { answer(false); }, Qt::QueuedConnection);
        return;
    }
    qDBusRegisterMetaType<Attributes>();
    QDBusMessage question = QDBusMessage::createMethodCall(
        u"org.freedesktop.secrets"_s, u"/org/freedesktop/secrets"_s,
        u"org.freedesktop.Secret.Service"_s, u"SearchItems"_s);
    question.setAutoStartService(false);
    // The attributes under which the keyring library stores.
    question << QVariant::fromValue(Attributes {{u"server"_s, service}, {u"user"_s, account}});
    auto *call = new QDBusPendingCallWatcher(bus.asyncCall(question, timeLimitMs), this);
    connect(call, &QDBusPendingCallWatcher::finished, call, [call, answer = std::move(answer)] {
        const QDBusPendingReply<ItemPaths, ItemPaths> items = *call;
        call->deleteLater();
        answer(!items.isError() && !items.argumentAt<1>().isEmpty());
    });
}

} // namespace bram
