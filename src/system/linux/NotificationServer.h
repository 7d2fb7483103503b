// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "system/NotificationService.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QObject>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

class OrgFreedesktopNotificationsInterface;

namespace bram
{

/// One running notification service, from its appearance on the bus to its end: what it can do, and the
/// calls to it. It is addressed by its unique name, and nobody else's signals are believed.
///
/// A call has no time limit of its own: its answer holds the id without which a notification could never
/// be taken back. A service that has left one unanswered for `patience` counts as absent until it answers.
class NotificationServer final : public QObject
{
    Q_OBJECT

public:
    NotificationServer(const QDBusConnection &bus, const QString &owner,
                       std::chrono::milliseconds patience);
    ~NotificationServer() override;
    Q_DISABLE_COPY_MOVE(NotificationServer)

    const QString &owner() const { return m_owner; }
    const NotificationServiceState &state() const { return m_state; }
    /// Whether it has said what it can do, which decides how texts are written for it.
    bool isReady() const { return m_isReady; }

    /// Asks for what may have changed without a signal, and again for what it has refused to tell.
    void readState();

    void notify(const Notification &notification);
    void close(quint32 id);

Q_SIGNALS:
    void stateChanged();
    void notified(const QString &tag, quint32 id);
    void refused(const QString &tag, const QString &reason);
    void closed(quint32 id);
    void actionInvoked(quint32 id, const QString &actionId);

private Q_SLOTS:
    void onNotificationClosed(const QDBusMessage &message);
    void onActionInvoked(const QDBusMessage &message);
    void onPropertiesChanged(const QDBusMessage &message);

private:
    using Answer = std::function<void(const QDBusPendingCall &)>;
    void await(const QDBusPendingCall &call, Answer answer);
    void readCapabilities();
    void readDoNotDisturb(qsizetype source);
    void setDoNotDisturb(qsizetype source, const QVariant &value);
    void publish();

    QDBusConnection m_bus;
    const QString m_owner;
    const std::unique_ptr<OrgFreedesktopNotificationsInterface> m_proxy;
    bool m_isReady = false;
    QString m_name;
    QStringList m_capabilities;
    QString m_refusal; ///< why it does not say what it can do
    /// One for each place where a service may tell; nothing where this one does not.
    QList<std::optional<bool>> m_doNotDisturb;
    qsizetype m_unanswered = 0;
    qsizetype m_questions = 0; ///< of those, what has to be answered before the state is whole
    bool m_isSilent = false;
    QTimer m_patience;
    NotificationServiceState m_state;
};

} // namespace bram
