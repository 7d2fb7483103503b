// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "system/Reply.h"
#include "system/SecretStore.h"

#include <QObject>
#include <QTimer>

#include <chrono>
#include <deque>
#include <memory>

namespace QKeychain
{
class Job;
}

namespace bram
{

class SecretServiceLock;
class SystemLog;

/// The secrets in the desktop's keyring (Secret Service or wallet). Nothing is ever stored outside
/// of it: without a keyring every operation fails at once. A secret that a locked keyring holds back is an
/// error, not an absent one, and is not overwritten.
///
/// One operation is with the keyring at a time, in the order they were asked for. One that has not
/// come back after `TimeLimits::operation` fails, and so do all that wait behind it and all that
/// are asked for until the late one does come back: a keyring that hangs costs one wait.
///
/// The operator is asked for a password once. While the keyring then stays locked, operations fail at once,
/// until `askAgain`.
class KeyringSecretStore final : public QObject, public SecretStore
{
    Q_OBJECT
public:
    struct TimeLimits {
        std::chrono::milliseconds notice = std::chrono::seconds(3); ///< until the log tells
        std::chrono::milliseconds operation = std::chrono::seconds(60);
    };

    explicit KeyringSecretStore(SystemLog &log);
    KeyringSecretStore(SystemLog &log, TimeLimits limits);
    ~KeyringSecretStore() override;
    Q_DISABLE_COPY_MOVE(KeyringSecretStore)

    QCoro::Task<std::expected<std::optional<QString>, KeychainError>> get(QString service,
                                                                          QString account) override;
    QCoro::Task<std::expected<void, KeychainError>> set(QString service, QString account,
                                                        QString value,
                                                        SecretAccessibility accessibility) override;
    QCoro::Task<std::expected<void, KeychainError>> remove(QString service,
                                                           QString account) override;

    void askAgain() override { m_unlockRefused = false; }

    /// Ends every open operation, and every later one, with an error.
    void stop();

private:
    struct Outcome {
        qint32 status = 0; ///< a QKeychain::Error
        QString message;
        QByteArray data; ///< what a read has found
        bool isLocked = false; ///< as in `KeychainError`
    };
    enum class Kind {
        Read,
        Write, ///< not over a secret that a locked keyring holds back
        Remove,
    };
    struct Operation {
        std::unique_ptr<QKeychain::Job> job;
        ReplySource<Outcome> source;
        Kind kind;
    };

    Reply<bool> askWhetherHeldBack(const QString &service, const QString &account);
    Reply<bool> askWhetherLocked();
    static std::expected<void, KeychainError> toResult(const Outcome &outcome);

    Reply<Outcome> enqueue(std::unique_ptr<QKeychain::Job> job, Kind kind);
    void startNext();
    void startUnlessLocked(Kind kind);
    void startIf(bool isAllowed);
    void onFinished(QKeychain::Job *job);
    void finish(Outcome outcome);
    void onNotice();
    void onTimeLimit();
    void failAll(const Outcome &failure);

    enum class State {
        Working,
        Hung, ///< the front operation has failed, its job is still out
        Stopped,
    };

    SystemLog &m_log;
    TimeLimits m_limits;
    State m_state = State::Working;
    std::unique_ptr<QKeychain::Job> m_running; ///< never destroyed before it has come back
    bool m_isWithKeyring = false; ///< `m_running` has been handed over
    bool m_unlockRefused = false; ///< the operator was asked, and it is still locked
    std::optional<ReplySource<Outcome>> m_runningSource;
    std::deque<Operation> m_waiting;
    std::unique_ptr<SecretServiceLock> m_lock; ///< null once stopped
    QTimer m_noticeTimer;
    QTimer m_limitTimer;
};

} // namespace bram
