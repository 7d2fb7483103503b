// SPDX-License-Identifier: Apache-2.0
#include "system/linux/NotificationServer.h"

#include "model/HonestDisplay.h"
#include "notificationsinterface.h"

#include <QDBusArgument>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

#include <array>
#include <limits>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr QLatin1StringView objectPath("/org/freedesktop/Notifications");
constexpr QLatin1StringView propertiesInterface("org.freedesktop.DBus.Properties");

constexpr QLatin1StringView applicationName("BRAM");
constexpr QLatin1StringView iconName("bram");
/// Name of our desktop file: services group, name and keep notifications by it.
constexpr QLatin1StringView desktopEntry("bram");
constexpr QLatin1StringView defaultSound("message-new-instant");

constexpr uchar normalUrgency = 1;
constexpr uchar criticalUrgency = 2;
/// Never by itself: a question that vanished before it was answered would be a question missed. It is
/// withdrawn when there is nothing to answer any more.
constexpr int neverExpires = 0;
constexpr quint32 newOne = 0; ///< takes no other one's place

/// Where services tell that they hold notifications back. Both announce a change.
struct DoNotDisturbProperty {
    QLatin1StringView interface;
    QLatin1StringView name;
};
constexpr std::array doNotDisturbProperties {
    DoNotDisturbProperty {"org.dunstproject.cmd0"_L1, "paused"_L1},
    DoNotDisturbProperty {"org.freedesktop.Notifications"_L1, "Inhibited"_L1},
};

QString escaped(QString text)
{
    return text.replace(u'&', "&amp;"_L1).replace(u'<', "&lt;"_L1).replace(u'>', "&gt;"_L1);
}

QStringList actionList(const Notification &notification)
{
    QStringList list;
    for (const auto &action : notification.actions) {
        list << action.id << action.label;
    }
    if (!notification.clickLabel.isEmpty()) {
        list << QString(actionClick) << notification.clickLabel;
    }
    return list;
}

QVariantMap hints(const Notification &notification, const QStringList &capabilities)
{
    QVariantMap hints {
        {u"desktop-entry"_s, QString(desktopEntry)},
        {u"urgency"_s,
         QVariant::fromValue(notification.isUrgent ? criticalUrgency : normalUrgency)},
    };
    if (!notification.category.isEmpty()) {
        hints.insert(u"category"_s, notification.category);
    }
    if (capabilities.contains("sound"_L1)) {
        hints.insert(u"sound-name"_s, QString(defaultSound));
    }
    return hints;
}

QString reasonOf(const QDBusPendingCall &call)
{
    const auto error = call.error();
    return error.message().isEmpty() ? error.name() : error.message();
}
} // namespace

NotificationServer::NotificationServer(const QDBusConnection &bus, const QString &owner,
                                       std::chrono::milliseconds patience)
    : m_bus(bus)
    , m_owner(owner)
    , m_proxy(std::make_unique<OrgFreedesktopNotificationsInterface>(owner, objectPath, bus))
    , m_doNotDisturb(doNotDisturbProperties.size())
{
    m_proxy->setTimeout(std::numeric_limits<int>::max());
    m_patience.setSingleShot(true);
    m_patience.setInterval(patience);
    connect(&m_patience, &QTimer::timeout, this, [this] {
        m_isSilent = true;
        publish();
    });
    // From any sender, who is looked at when a signal comes: with a sender named here, Qt waits for the
    // bus.
    const QString interface = QLatin1StringView(
        OrgFreedesktopNotificationsInterface::staticInterfaceName());
    m_bus.connect({}, objectPath, interface, u"NotificationClosed"_s, this,
                  SLOT(onNotificationClosed(QDBusMessage)));
    m_bus.connect({}, objectPath, interface, u"ActionInvoked"_s, this,
                  SLOT(onActionInvoked(QDBusMessage)));
    for (const auto &property : doNotDisturbProperties) {
        m_bus.connect({}, objectPath, propertiesInterface, u"PropertiesChanged"_s,
                      QStringList {property.interface}, {}, this,
                      SLOT(onPropertiesChanged(QDBusMessage)));
    }

    ++m_questions;
    await(m_proxy->GetServerInformation(), [this](const QDBusPendingCall &call) {
        --m_questions;
        const QDBusPendingReply<QString, QString, QString, QString> reply(call);
        m_name = reply.isValid() ? reply.value() : QString();
    });
    readState();
}

NotificationServer::~NotificationServer() = default;

void NotificationServer::readState()
{
    if (m_questions > (m_isReady ? 0 : 1)) {
        return; // the answers are on their way
    }
    const bool isFirst = !m_isReady;
    if (isFirst) {
        readCapabilities();
    }
    for (qsizetype source = 0; source < m_doNotDisturb.size(); ++source) {
        if (isFirst || m_doNotDisturb.at(source)) {
            readDoNotDisturb(source);
        }
    }
}

void NotificationServer::readCapabilities()
{
    ++m_questions;
    await(m_proxy->GetCapabilities(), [this](const QDBusPendingCall &call) {
        --m_questions;
        const QDBusPendingReply<QStringList> reply(call);
        m_isReady = reply.isValid();
        m_capabilities = m_isReady ? reply.value() : QStringList();
        m_refusal = m_isReady ? QString() : reasonOf(call);
    });
}

void NotificationServer::readDoNotDisturb(qsizetype source)
{
    const auto &property = doNotDisturbProperties.at(static_cast<std::size_t>(source));
    auto message
        = QDBusMessage::createMethodCall(m_owner, objectPath, propertiesInterface, u"Get"_s);
    message << QString(property.interface) << QString(property.name);
    ++m_questions;
    await(m_bus.asyncCall(message, m_proxy->timeout()),
          [this, source](const QDBusPendingCall &call) {
              --m_questions;
              const QDBusPendingReply<QDBusVariant> reply(call);
              setDoNotDisturb(source, reply.isValid() ? reply.value().variant() : QVariant());
          });
}

void NotificationServer::setDoNotDisturb(qsizetype source, const QVariant &value)
{
    m_doNotDisturb[source]
        = value.typeId() == QMetaType::Bool ? std::optional(value.toBool()) : std::nullopt;
}

void NotificationServer::notify(const Notification &notification)
{
    const QString title = honestLine(notification.title).text;
    const QString body = honestDisplay(notification.body).text;
    const bool readsMarkup = m_capabilities.contains("body-markup"_L1);
    await(m_proxy->Notify(applicationName, newOne, iconName, title,
                          readsMarkup ? escaped(body) : body, actionList(notification),
                          hints(notification, m_capabilities), neverExpires),
          [this, tag = notification.tag](const QDBusPendingCall &call) {
              const QDBusPendingReply<quint32> reply(call);
              if (reply.isValid()) {
                  Q_EMIT notified(tag, reply.value());
              } else {
                  Q_EMIT refused(tag, reasonOf(call));
              }
          });
}

void NotificationServer::close(quint32 id)
{
    m_proxy->CloseNotification(id);
}

void NotificationServer::await(const QDBusPendingCall &call, Answer answer)
{
    if (++m_unanswered == 1) {
        m_patience.start();
    }
    const auto *watcher = new QDBusPendingCallWatcher(call, this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this, answer = std::move(answer)](QDBusPendingCallWatcher *finished) {
                finished->deleteLater();
                m_isSilent = false;
                if (--m_unanswered == 0) {
                    m_patience.stop();
                } else {
                    m_patience.start();
                }
                answer(*finished);
                publish();
            });
}

void NotificationServer::onNotificationClosed(const QDBusMessage &message)
{
    if (message.service() == m_owner && message.signature() == "uu"_L1) {
        Q_EMIT closed(message.arguments().at(0).toUInt());
    }
}

void NotificationServer::onActionInvoked(const QDBusMessage &message)
{
    if (message.service() == m_owner && message.signature() == "us"_L1) {
        Q_EMIT actionInvoked(message.arguments().at(0).toUInt(),
                             message.arguments().at(1).toString());
    }
}

void NotificationServer::onPropertiesChanged(const QDBusMessage &message)
{
    if (message.service() != m_owner || message.signature() != "sa{sv}as"_L1) {
        return;
    }
    const QString interface = message.arguments().at(0).toString();
    const auto changed = qdbus_cast<QVariantMap>(message.arguments().at(1));
    const QStringList invalidated = message.arguments().at(2).toStringList();
    for (qsizetype source = 0; source < m_doNotDisturb.size(); ++source) {
        const auto &property = doNotDisturbProperties.at(static_cast<std::size_t>(source));
        if (interface != property.interface) {
            continue;
        }
        if (const auto value = changed.constFind(property.name); value != changed.cend()) {
            setDoNotDisturb(source, *value);
        } else if (invalidated.contains(property.name)) {
            readDoNotDisturb(source);
        }
    }
    publish();
}

void NotificationServer::publish()
{
    using Kind = NotificationServiceState::Kind;
    auto state = m_state;
    if (m_isSilent) {
        state = {.kind = Kind::Absent,
                 .name = m_name,
                 .capabilities = {},
                 .reason = m_name.isEmpty() ? u"the notification service does not answer"_s
                                            : m_name + u" does not answer"_s};
    } else if (m_questions > 0) {
        return; // whole states only, or what is shown would flicker
    } else if (!m_isReady) {
        state = {.kind = Kind::Absent, .name = m_name, .capabilities = {}, .reason = m_refusal};
    } else {
        state = {.kind = m_doNotDisturb.contains(true) ? Kind::DoNotDisturb : Kind::Present,
                 .name = m_name,
                 .capabilities = m_capabilities,
                 .reason = {}};
    }
    if (state != m_state) {
        m_state = state;
        Q_EMIT stateChanged();
    }
}

} // namespace bram
