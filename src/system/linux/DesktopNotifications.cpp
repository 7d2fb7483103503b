// SPDX-License-Identifier: Apache-2.0
#include "system/linux/DesktopNotifications.h"

#include "system/NextTurn.h"
#include "system/linux/NotificationServer.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>

#include <algorithm>
#include <functional>
#include <limits>
#include <tuple>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr QLatin1StringView serviceName("org.freedesktop.Notifications");
constexpr QLatin1StringView busName("org.freedesktop.DBus");
constexpr int maxSent = 4;

QDBusConnection connectionNamed(const QString &name)
{
    return name.isEmpty() ? QDBusConnection::sessionBus() : QDBusConnection(name);
}

/// Asks the bus itself. `answer` is not called any more once `context` is gone.
void askBus(const QDBusConnection &bus, QObject *context, const QString &method,
            const QVariantList &arguments, std::function<void(const QDBusPendingCall &)> answer)
{
    auto message
        = QDBusMessage::createMethodCall(busName, u"/org/freedesktop/DBus"_s, busName, method);
    message.setArguments(arguments);
    const auto *watcher = new QDBusPendingCallWatcher(
        bus.asyncCall(message, std::numeric_limits<int>::max()), context);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, context,
                     [answer = std::move(answer)](QDBusPendingCallWatcher *finished) {
                         finished->deleteLater();
                         answer(*finished);
                     });
}
} // namespace

DesktopNotifications::DesktopNotifications()
    : DesktopNotifications(Settings {})
{
}

DesktopNotifications::DesktopNotifications(const Settings &settings)
    : m_settings(settings)
{
    m_patience.setSingleShot(true);
    m_patience.setInterval(settings.patience);
    connect(&m_patience, &QTimer::timeout, this, [this] {
        setAbsent(m_isOwnerKnown ? u"the notification service does not start"_s
                                 : u"the session bus does not answer"_s);
        failAllWaiting(m_state.reason);
    });
}

DesktopNotifications::~DesktopNotifications() = default;

void DesktopNotifications::start()
{
    auto bus = connectionNamed(m_settings.connectionName);
    if (!bus.isConnected()) {
        m_isOwnerKnown = true;
        setAbsent(u"there is no session bus"_s);
        proceed();
        return;
    }
    bus.connect({}, u"/org/freedesktop/DBus/Local"_s, u"org.freedesktop.DBus.Local"_s,
                u"Disconnected"_s, this, SLOT(onBusLost()));
    m_watcher = std::make_unique<QDBusServiceWatcher>(serviceName, bus,
                                                      QDBusServiceWatcher::WatchForOwnerChange);
    connect(m_watcher.get(), &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString &, const QString &, const QString &owner) { setOwner(owner); });
    findOwner();
}

void DesktopNotifications::findOwner()
{
    m_patience.start();
    askBus(m_watcher->connection(), m_watcher.get(), u"GetNameOwner"_s, {QString(serviceName)},
           [this](const QDBusPendingCall &call) {
               if (!m_isOwnerKnown) { // a change has not told it before
                   const QDBusPendingReply<QString> reply(call);
                   setOwner(reply.isValid() ? reply.value() : QString());
               }
           });
}

void DesktopNotifications::onBusLost()
{
    m_watcher.reset();
    m_isOwnerKnown = true;
    forgetServer();
    setAbsent(u"the session bus has ended"_s);
    failAllWaiting(m_state.reason);
}

void DesktopNotifications::setOwner(const QString &owner)
{
    m_patience.stop();
    m_isOwnerKnown = true;
    if (m_server && m_server->owner() == owner) {
        return;
    }
    const bool wasRunning = m_server != nullptr;
    forgetServer();
    if (owner.isEmpty()) {
        setAbsent(wasRunning ? u"the notification service has ended"_s
                             : u"no notification service is running"_s);
        findOutWhetherStartable();
        if (wasRunning) {
            // Not started again: it may have been ended on purpose, or end again at once.
            failAllWaiting(m_state.reason);
        } else {
            proceed();
        }
        return;
    }
    m_isStarting = false;
    m_server
        = std::make_unique<NotificationServer>(m_watcher->connection(), owner, m_settings.patience);
    connect(m_server.get(), &NotificationServer::stateChanged, this,
            &DesktopNotifications::onServerState);
    connect(m_server.get(), &NotificationServer::notified, this, &DesktopNotifications::onNotified);
    connect(m_server.get(), &NotificationServer::refused, this, &DesktopNotifications::onRefused);
    connect(m_server.get(), &NotificationServer::closed, this, &DesktopNotifications::onClosed);
    connect(m_server.get(), &NotificationServer::actionInvoked, this,
            &DesktopNotifications::onActionInvoked);
}

void DesktopNotifications::forgetServer()
{
    m_server.reset();
    m_tags.clear();
    m_sentCount = 0;
    m_entries.removeIf([this](auto it) {
        Entry &entry = *it;
        const bool hasNewForm = entry.stage == Entry::Stage::Sent && entry.isChanged;
        if (entry.stage == Entry::Stage::Sent && !entry.isWithdrawn) {
            reportFailure(entry, u"the notification service has ended"_s);
        }
        if (entry.stage != Entry::Stage::Waiting && !hasNewForm) {
            return true;
        }
        entry.id = 0;
        if (hasNewForm) {
            entry.isChanged = false;
            entry.stage = Entry::Stage::Waiting;
            m_waiting.enqueue(it.key());
            m_reportable.append(it.key());
        }
        return false;
    });
}

void DesktopNotifications::setAbsent(const QString &reason)
{
    setState({.kind = NotificationServiceState::Kind::Absent,
              .name = {},
              .capabilities = {},
              .reason = reason});
}

void DesktopNotifications::findOutWhetherStartable()
{
    askBus(m_watcher->connection(), m_watcher.get(), u"ListActivatableNames"_s, {},
           [this](const QDBusPendingCall &call) {
               const QDBusPendingReply<QStringList> reply(call);
               if (!m_server && reply.isValid() && reply.value().contains(serviceName)) {
                   auto state = m_state;
                   state.startsOnDemand = true;
                   setState(state);
               }
           });
}

void DesktopNotifications::startService()
{
    if (m_isStarting) {
        if (!m_patience.isActive()) {
            failAllWaiting(m_state.reason);
        }
        return;
    }
    m_isStarting = true;
    m_patience.start();
    askBus(m_watcher->connection(), m_watcher.get(), u"StartServiceByName"_s,
           {QString(serviceName), 0U}, [this](const QDBusPendingCall &call) {
               m_isStarting = false;
               if (m_server) {
                   return;
               }
               m_patience.stop();
               if (call.isError()) {
                   const bool isUnknown = call.error().type() == QDBusError::ServiceUnknown;
                   setAbsent(isUnknown ? u"no notification service is running"_s
                                       : call.error().message());
                   failAllWaiting(m_state.reason);
               }
           });
}

void DesktopNotifications::show(const Notification &notification)
{
    const bool isNew = !m_entries.contains(notification.tag);
    Entry &entry = m_entries[notification.tag];
    entry.notification = notification;
    entry.isReported = false;
    if (entry.stage == Entry::Stage::Sent) {
        entry.isChanged = true;
        entry.isWithdrawn = false;
    } else if (entry.stage == Entry::Stage::Waiting && !isNew) {
        m_reportable.append(notification.tag);
    } else if (entry.stage == Entry::Stage::Shown) {
        replace(entry);
    } else {
        enqueue(notification.tag);
    }
    if (!m_isProceeding) {
        m_isProceeding = true;
        inNextTurn(this, [this] {
            m_isProceeding = false;
            proceed();
        });
    }
}

void DesktopNotifications::update(const Notification &notification)
{
    const auto entry = m_entries.constFind(notification.tag);
    if (entry != m_entries.cend() && !entry->isWithdrawn) {
        show(notification);
    }
}

void DesktopNotifications::enqueue(const QString &tag)
{
    m_entries[tag].stage = Entry::Stage::Waiting;
    m_waiting.enqueue(tag);
    m_reportable.append(tag);
}

void DesktopNotifications::replace(Entry &entry)
{
    if (entry.id != 0) {
        m_tags.remove(entry.id);
        m_server->close(std::exchange(entry.id, 0));
    }
    enqueue(entry.notification.tag);
}

void DesktopNotifications::withdraw(const QString &tag)
{
    const auto entry = m_entries.find(tag);
    if (entry == m_entries.end()) {
        return;
    }
    if (entry->stage == Entry::Stage::Sent) {
        entry->isWithdrawn = true;
        entry->isChanged = false;
    } else {
        m_waiting.removeOne(tag);
        close(tag);
        forgetReportable();
    }
}

void DesktopNotifications::proceed()
{
    const bool isAbsent = m_state.kind == NotificationServiceState::Kind::Absent;
    if (m_server) {
        m_server->readState();
        sendWaiting();
    } else if (m_watcher && m_isOwnerKnown) {
        if (!m_waiting.isEmpty()) {
            startService();
        }
        return;
    }
    if (isAbsent) {
        failAllWaiting(m_state.reason);
    }
}

void DesktopNotifications::sendWaiting()
{
    while (m_server->isReady() && m_sentCount < maxSent && !m_waiting.isEmpty()) {
        const auto entry = m_entries.find(m_waiting.dequeue());
        if (entry != m_entries.end() && entry->stage == Entry::Stage::Waiting) {
            entry->stage = Entry::Stage::Sent;
            ++m_sentCount;
            m_server->notify(entry->notification);
        }
    }
    forgetReportable();
}

void DesktopNotifications::onServerState()
{
    setState(m_server->state());
    sendWaiting();
    if (m_state.kind == NotificationServiceState::Kind::Absent) {
        failAllWaiting(m_state.reason);
    }
}

void DesktopNotifications::onNotified(const QString &tag, quint32 id)
{
    --m_sentCount;
    Entry &entry = m_entries[tag];
    entry.id = id;
    m_tags.insert(id, tag);
    if (entry.isWithdrawn) {
        close(tag);
    } else if (std::exchange(entry.isChanged, false)) {
        replace(entry);
    } else {
        entry.stage = Entry::Stage::Shown;
        Q_EMIT shown(QString(tag));
    }
    sendWaiting();
}

void DesktopNotifications::onRefused(const QString &tag, const QString &reason)
{
    --m_sentCount;
    Entry &entry = m_entries[tag];
    if (!entry.isWithdrawn) {
        reportFailure(entry, reason);
    }
    if (std::exchange(entry.isChanged, false)) {
        entry.isReported = false;
        enqueue(tag);
    } else {
        close(tag);
    }
    sendWaiting();
}

void DesktopNotifications::onClosed(quint32 id)
{
    const auto entry = m_entries.find(m_tags.take(id));
    if (entry != m_entries.end()) {
        entry->id = 0;
        if (entry->stage == Entry::Stage::Shown) {
            m_entries.erase(entry);
        }
    }
    Q_EMIT oneHasGone();
}

void DesktopNotifications::onActionInvoked(quint32 id, const QString &actionId)
{
    const auto entry = m_entries.find(m_tags.value(id));
    // In any other stage the button was one of an older form.
    if (entry == m_entries.end() || entry->stage != Entry::Stage::Shown) {
        return;
    }
    const auto &[actions, clickLabel]
        = std::tie(entry->notification.actions, entry->notification.clickLabel);
    const bool isOffered = actionId == actionClick
        ? !clickLabel.isEmpty()
        : std::ranges::find(actions, actionId, &NotificationAction::id) != actions.end();
    if (!isOffered) {
        return;
    }
    // Some services leave it there, with buttons that would do nothing.
    const QString tag = entry.key();
    close(tag);
    Q_EMIT actionInvoked(tag, actionId);
}

void DesktopNotifications::close(const QString &tag)
{
    const Entry entry = m_entries.take(tag);
    if (entry.id != 0 && m_server) {
        m_tags.remove(entry.id);
        m_server->close(entry.id);
    }
}

void DesktopNotifications::failAllWaiting(const QString &reason)
{
    for (const auto &tag : std::exchange(m_reportable, {})) {
        const auto entry = m_entries.find(tag);
        if (entry != m_entries.end()
            && (entry->stage == Entry::Stage::Waiting
                || (entry->stage == Entry::Stage::Sent && !entry->isWithdrawn))) {
            reportFailure(*entry, reason);
        }
    }
}

void DesktopNotifications::forgetReportable()
{
    if (m_waiting.isEmpty() && m_sentCount == 0) {
        m_reportable.clear();
    }
}

void DesktopNotifications::reportFailure(Entry &entry, const QString &reason)
{
    if (!std::exchange(entry.isReported, true)) {
        inNextTurn(this,
                   [this, tag = entry.notification.tag, reason] { Q_EMIT failed(tag, reason); });
    }
}

void DesktopNotifications::setState(const NotificationServiceState &state)
{
    if (state != m_state) {
        m_state = state;
        Q_EMIT stateChanged();
    }
}

} // namespace bram
