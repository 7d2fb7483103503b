// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/TrayHostWatch.h"

#include "ui/desktop/XEmbedTrayWatch.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

#include <utility>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
const QString watcherName = u"org.kde.StatusNotifierWatcher"_s; // the name of its interface as well
const QString watcherPath = u"/StatusNotifierWatcher"_s;
} // namespace

TrayHostWatch::TrayHostWatch(QObject *parent)
    : QObject(parent)
{
}

TrayHostWatch::~TrayHostWatch() = default;

void TrayHostWatch::start()
{
    if (QDBusConnection::sessionBus().isConnected()) {
        listenToBus();
        askWatcher();
    } else {
        setStatusNotifierHost(false);
    }
}

void TrayHostWatch::listenToBus()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    m_busWatch = std::make_unique<QDBusServiceWatcher>(watcherName, bus);
    connect(m_busWatch.get(), &QDBusServiceWatcher::serviceRegistered, this,
            &TrayHostWatch::askWatcher);
    connect(m_busWatch.get(), &QDBusServiceWatcher::serviceUnregistered, this, [this] {
        ++m_question;
        setStatusNotifierHost(false);
    });
    // Without a service name: with one, the library would wait for the answer who has it.
    for (const QString &signal :
         {u"StatusNotifierHostRegistered"_s, u"StatusNotifierHostUnregistered"_s}) {
        bus.connect({}, watcherPath, watcherName, signal, this, SLOT(hostsOfWatcherChanged()));
    }
}

void TrayHostWatch::askWatcher()
{
    QDBusMessage question = QDBusMessage::createMethodCall(
        watcherName, watcherPath, u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    question.setArguments({watcherName, u"IsStatusNotifierHostRegistered"_s});
    question.setAutoStartService(false);
    auto *call
        = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(question), this);
    const int number = ++m_question;
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, call, number] {
        call->deleteLater();
        if (number == m_question) {
            watcherAnswered(call);
        }
    });
}

void TrayHostWatch::watcherAnswered(QDBusPendingCallWatcher *call)
{
    const QDBusPendingReply<QDBusVariant> reply = *call;
    setStatusNotifierHost(reply.isValid() && reply.value().variant().toBool());
}

void TrayHostWatch::setStatusNotifierHost(bool isThere)
{
    const bool hadXEmbed = has(TrayHost::XEmbed);
    if (!isThere && !m_xembed) {
        m_xembed = std::make_unique<XEmbedTrayWatch>();
        connect(m_xembed.get(), &XEmbedTrayWatch::managerChanged, this, &TrayHostWatch::changed);
    }
    if (isThere != std::exchange(m_hasStatusNotifierHost, isThere)
        || hadXEmbed != has(TrayHost::XEmbed)) {
        Q_EMIT changed();
    }
}

bool TrayHostWatch::has(TrayHost kind) const
{
    switch (kind) {
    case TrayHost::StatusNotifier:
        return m_hasStatusNotifierHost;
    case TrayHost::XEmbed:
        return m_xembed && m_xembed->hasManager();
    case TrayHost::None:
        return false;
    }
    Q_UNREACHABLE();
}

TrayHost TrayHostWatch::best() const
{
    return has(TrayHost::StatusNotifier) ? TrayHost::StatusNotifier
        : has(TrayHost::XEmbed)          ? TrayHost::XEmbed
                                         : TrayHost::None;
}

} // namespace bram
