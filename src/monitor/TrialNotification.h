// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>
#include <QString>

namespace bram
{

class NotificationService;

/// One notification that asks nothing, for an operator who wants to see whether they are shown. It goes with
/// this object, if not before. Main thread.
class TrialNotification final : public QObject
{
    Q_OBJECT

public:
    enum class Outcome {
        None, ///< not sent yet
        Sent, ///< no answer yet
        Shown, ///< the service has taken it
        Failed,
    };

    explicit TrialNotification(NotificationService &service);
    ~TrialNotification() override;

    /// Sends it, anew when it has been sent before.
    void send();
    /// Takes it off the screen.
    void withdraw();

    Outcome outcome() const { return m_outcome; }
    /// Of `Failed`, in one line.
    const QString &reason() const { return m_reason; }

Q_SIGNALS:
    void outcomeChanged();

private:
    void setOutcome(Outcome outcome, const QString &reason = {});

    NotificationService &m_service;
    Outcome m_outcome = Outcome::None;
    QString m_reason;
};

} // namespace bram
