// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "system/NotificationService.h"

#include <QHash>
#include <QQueue>
#include <QTimer>

#include <chrono>
#include <memory>

class QDBusPendingCall;
class QDBusServiceWatcher;

namespace bram
{

class NotificationServer;

/// The notifications of a Linux desktop: org.freedesktop.Notifications on the session bus.
///
/// The service may come, go, be replaced, or wait to be started by the bus, which the next `show` does. It
/// is never started just to ask for its state. At most a few notifications are with it at a time, so that
/// a flood of them goes at its speed and those withdrawn meanwhile are never sent.
class DesktopNotifications final : public NotificationService
{
    Q_OBJECT

public:
    struct Settings {
        QString connectionName {}; ///< of an open Qt D-Bus connection; empty for the session bus
        std::chrono::milliseconds patience = std::chrono::seconds(5); ///< with an open question
    };

    DesktopNotifications();
    explicit DesktopNotifications(const Settings &settings);
    ~DesktopNotifications() override;
    Q_DISABLE_COPY_MOVE(DesktopNotifications)

    void start() override;
    void show(const Notification &notification) override;
    void update(const Notification &notification) override;
    void withdraw(const QString &tag) override;
    const NotificationServiceState &state() const override { return m_state; }

private Q_SLOTS:
    void onBusLost();

private:
    struct Entry {
        enum class Stage {
            Waiting, ///< to be sent
            Sent, ///< the answer with its id is on its way
            Shown,
        };

        Notification notification; ///< the newest form
        Stage stage = Stage::Waiting;
        quint32 id = 0; ///< what the service calls it; 0 when it does not know it
        bool isChanged = false; ///< while `Sent`: `notification` is newer than what was sent
        bool isWithdrawn = false; ///< while `Sent`: to be closed as soon as its id is known
        bool isReported = false; ///< as failed, in this form
    };

    void findOwner();
    void setOwner(const QString &owner);
    void forgetServer();
    void setAbsent(const QString &reason);
    void findOutWhetherStartable();
    void startService();
    void enqueue(const QString &tag);
    /// Closes what is shown, whose buttons are about an older form, and shows the newest instead.
    void replace(Entry &entry);
    void proceed();
    void sendWaiting();
    void onServerState();
    void onNotified(const QString &tag, quint32 id);
    void onRefused(const QString &tag, const QString &reason);
    void onClosed(quint32 id);
    void onActionInvoked(quint32 id, const QString &actionId);
    void close(const QString &tag);
    void failAllWaiting(const QString &reason);
    void forgetReportable();
    void reportFailure(Entry &entry, const QString &reason);
    void setState(const NotificationServiceState &state);

    const Settings m_settings;
    std::unique_ptr<QDBusServiceWatcher> m_watcher;
    std::unique_ptr<NotificationServer> m_server; ///< null while none is running
    bool m_isOwnerKnown = false; ///< whether the bus has told who the service is, or that none is
    bool m_isStarting = false; ///< the bus has been asked to start it
    bool m_isProceeding = false; ///< `proceed` comes in the next turn
    QTimer m_patience; ///< with the bus
    NotificationServiceState m_state;
    QHash<QString, Entry> m_entries; ///< by tag
    QHash<quint32, QString> m_tags; ///< by the service's id
    QQueue<QString> m_waiting; ///< tags to be sent
    QStringList m_reportable; ///< tags waiting or sent, not reported as failed; may hold others
    int m_sentCount = 0; ///< entries in stage `Sent`
};

} // namespace bram
