// SPDX-License-Identifier: Apache-2.0
#include "system/KeyringSecretStore.h"

#include "system/SystemLog.h"
#include "system/linux/SecretServiceLock.h"

#include <QCoreApplication>
#include <QPointer>
#include <QUtf8StringView>

#include <qt6keychain/keychain.h>

namespace bram
{

using namespace Qt::StringLiterals;
using namespace std::chrono;

namespace
{
template<typename Job>
std::unique_ptr<Job> makeJob(const QString &service, const QString &account)
{
    auto job = std::make_unique<Job>(service);
    job->setAutoDelete(false);
    job->setInsecureFallback(false);
    job->setKey(account);
    return job;
}

KeychainError lockedError()
{
    return {QKeychain::AccessDenied, u"the keyring is locked"_s, true};
}
} // namespace

KeyringSecretStore::KeyringSecretStore(SystemLog &log)
    : KeyringSecretStore(log, TimeLimits {})
{
}

KeyringSecretStore::KeyringSecretStore(SystemLog &log, TimeLimits limits)
    : m_log(log)
    , m_limits(limits)
    , m_lock(std::make_unique<SecretServiceLock>())
{
    m_noticeTimer.setSingleShot(true);
    m_limitTimer.setSingleShot(true);
    connect(&m_noticeTimer, &QTimer::timeout, this, &KeyringSecretStore::onNotice);
    connect(&m_limitTimer, &QTimer::timeout, this, &KeyringSecretStore::onTimeLimit);
}

KeyringSecretStore::~KeyringSecretStore()
{
    stop();
}

QCoro::Task<std::expected<std::optional<QString>, KeychainError>>
KeyringSecretStore::get(QString service, QString account)
{
    const QPointer self(this);
    const Outcome outcome = co_await enqueue(makeJob<QKeychain::ReadPasswordJob>(service, account));
    if (outcome.status == QKeychain::EntryNotFound) {
        bool isHeldBack = true;
        if (self) {
            isHeldBack = co_await self->askWhetherHeldBack(service, account);
        }
        if (isHeldBack) {
            co_return std::unexpected(lockedError());
        }
        co_return std::nullopt;
    }
    if (const auto result = toResult(outcome); !result) {
        co_return std::unexpected(result.error());
    }
    if (!QUtf8StringView(outcome.data).isValidUtf8()) {
        co_return std::nullopt;
    }
    co_return QString::fromUtf8(outcome.data);
}

QCoro::Task<std::expected<void, KeychainError>>
KeyringSecretStore::set(QString service, QString account, QString value,
                        [[maybe_unused]] SecretAccessibility accessibility)
{
    auto job = makeJob<QKeychain::WritePasswordJob>(service, account);
    job->setTextData(value);
    co_return toResult(co_await enqueue(std::move(job), Overwrite::UnlessLocked));
}

QCoro::Task<std::expected<void, KeychainError>> KeyringSecretStore::remove(QString service,
                                                                           QString account)
{
    const Outcome outcome
        = co_await enqueue(makeJob<QKeychain::DeletePasswordJob>(service, account));
    if (outcome.status == QKeychain::EntryNotFound) {
        co_return {};
    }
    co_return toResult(outcome);
}

Reply<bool> KeyringSecretStore::askWhetherHeldBack(const QString &service, const QString &account)
{
    // What could not be found out must not look absent: so says a source that goes unanswered.
    const ReplySource<bool> source(true);
    if (m_lock != nullptr) {
        m_lock->ask(service, account, [source](bool isHeldBack) { source.answer(isHeldBack); });
    }
    return source.reply();
}

void KeyringSecretStore::stop()
{
    m_state = State::Stopped;
    m_lock.reset();
    m_noticeTimer.stop();
    m_limitTimer.stop();
    if (m_running && m_isWithKeyring) {
        // The keyring still holds the job's address: it may only go away once it has come back.
        disconnect(m_running.get(), nullptr, this, nullptr);
        m_running->setAutoDelete(true);
        [[maybe_unused]] const auto *abandoned = m_running.release();
    }
    failAll({QKeychain::OtherError, u"the keyring is no longer in use"_s, {}});
}

std::expected<void, KeychainError> KeyringSecretStore::toResult(const Outcome &outcome)
{
    if (outcome.status == QKeychain::NoError) {
        return {};
    }
    const bool isRefused = outcome.status == QKeychain::AccessDenied
        || outcome.status == QKeychain::AccessDeniedByUser;
    return std::unexpected(
        KeychainError {outcome.status, outcome.message, outcome.isLocked || isRefused});
}

/// Not a coroutine, so that no waiting frame holds the source that answers it.
Reply<KeyringSecretStore::Outcome> KeyringSecretStore::enqueue(std::unique_ptr<QKeychain::Job> job,
                                                               Overwrite overwrite)
{
    const ReplySource<Outcome> source(
        Outcome {QKeychain::OtherError, u"the keyring is no longer in use"_s, {}});
    switch (m_state) {
    case State::Working:
        m_waiting.push_back({std::move(job), source, overwrite});
        startNext();
        break;
    case State::Hung:
        source.answer({QKeychain::OtherError,
                       u"the keyring has not yet answered an earlier request"_s,
                       {},
                       true});
        break;
    case State::Stopped:
        break; // leaving the source unanswered says it
    }
    return source.reply();
}

void KeyringSecretStore::startNext()
{
    if (m_running || m_waiting.empty()) {
        return;
    }
    m_running = std::move(m_waiting.front().job);
    m_runningSource = std::move(m_waiting.front().source);
    const Overwrite overwrite = m_waiting.front().overwrite;
    m_waiting.pop_front();
    m_noticeTimer.start(m_limits.notice);
    m_limitTimer.start(m_limits.operation);
    connect(m_running.get(), &QKeychain::Job::finished, this, &KeyringSecretStore::onFinished);
    if (overwrite == Overwrite::Always) {
        startRunning();
        return;
    }
    // The library would ask for the password, and then overwrite what could not be read before.
    m_lock->ask(m_running->service(), m_running->key(), [this](bool isHeldBack) {
        if (isHeldBack || m_state != State::Working) {
            finish({QKeychain::AccessDenied, lockedError().platformMessage, {}});
        } else {
            startRunning();
        }
    });
}

void KeyringSecretStore::startRunning()
{
    m_isWithKeyring = true;
    m_running->start();
}

void KeyringSecretStore::onFinished(QKeychain::Job *job)
{
    Outcome outcome {job->error(), job->errorString(), {}};
    if (const auto *read = qobject_cast<QKeychain::ReadPasswordJob *>(job)) {
        outcome.data = read->binaryData();
    }
    finish(std::move(outcome));
}

void KeyringSecretStore::finish(Outcome outcome)
{
    m_noticeTimer.stop();
    m_limitTimer.stop();
    m_state = State::Working;
    m_isWithKeyring = false;
    // The job is still emitting. It is destroyed in the next turn, also when there is none any
    // more.
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [returned = std::shared_ptr<QKeychain::Job>(std::move(m_running))] { },
        Qt::QueuedConnection);
    if (const auto source = std::exchange(m_runningSource, std::nullopt)) {
        source->answer(std::move(outcome));
    }
    startNext();
}

void KeyringSecretStore::onNotice()
{
    m_log.write(u"[Brackwen] Waiting for the keyring to be unlocked"_s);
}

void KeyringSecretStore::onTimeLimit()
{
    m_state = State::Hung;
    failAll({QKeychain::OtherError,
             u"the keyring did not answer within %1 seconds"_s.arg(
                 duration<double>(m_limits.operation).count()),
             {},
             true});
}

void KeyringSecretStore::failAll(const Outcome &failure)
{
    if (const auto source = std::exchange(m_runningSource, std::nullopt)) {
        source->answer(failure);
    }
    for (const Operation &operation : std::exchange(m_waiting, {})) {
        operation.source.answer(failure);
    }
}

} // namespace bram
