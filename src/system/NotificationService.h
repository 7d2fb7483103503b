// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

namespace bram
{

/// A button of a notification.
struct NotificationAction {
    QString id;
    QString label;

    bool operator==(const NotificationAction &) const = default;
};

/// What is pressed when somebody clicks on a notification beside its buttons.
inline constexpr QLatin1StringView actionClick("default");

/// What is to be shown. Texts are plain: a service that reads markup is given them escaped, and what could
/// mislead in them is marked.
struct Notification {
    QString tag; ///< ours; a notification with the same tag replaces
    QString title;
    QString body;
    QString category;
    bool isUrgent = false;
    QList<NotificationAction> actions;
    /// What a click beside the buttons does, in words for a service that lists it; empty when it does nothing.
    QString clickLabel {};

    bool operator==(const Notification &) const = default;
};

/// What is known about the desktop's notification service.
struct NotificationServiceState {
    enum class Kind {
        Unknown, ///< has not answered yet
        Present,
        DoNotDisturb, ///< takes notifications and shows them later
        Absent,
    };

    Kind kind = Kind::Unknown;
    QString name; ///< as the service calls itself; may be empty
    QStringList capabilities; ///< in the words of the desktop notifications protocol
    QString reason; ///< of `Absent`: why, in the service's own words where it has some
    bool startsOnDemand = false; ///< of `Absent`: showing something starts it

    bool operator==(const NotificationServiceState &) const = default;
};

/// The desktop's notifications. Implemented by `DesktopNotifications`; main thread. Nothing here waits:
/// every answer is a signal, which never comes from inside a call.
///
/// A notification stays until a person or the service closes it, or `withdraw`. One that cannot be shown
/// is reported by `failed`, once, and shown nevertheless when the service becomes able to. One that a
/// service has taken is not repeated when that service dies.
class NotificationService : public QObject
{
    Q_OBJECT

public:
    virtual void start() = 0;
    virtual void show(const Notification &notification) = 0;
    /// Closes a notification that has not been closed yet and shows this one instead; else nothing.
    virtual void update(const Notification &notification) = 0;
    /// Takes the notification off the screen, also one that is still on its way there.
    virtual void withdraw(const QString &tag) = 0;
    virtual const NotificationServiceState &state() const = 0;

Q_SIGNALS:
    void stateChanged();
    /// The service has taken the notification in its newest form.
    void shown(const QString &tag);
    /// A person has pressed one of the buttons that the notification has now, or clicked on it where that does
    /// something (`actionClick`); it is gone with that.
    void actionInvoked(const QString &tag, const QString &actionId);
    /// The service has taken a notification off the screen, whosever it was: others may stand elsewhere now.
    void oneHasGone();
    void failed(const QString &tag, const QString &reason);
};

} // namespace bram
