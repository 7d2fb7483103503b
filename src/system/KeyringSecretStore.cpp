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
    const Outcome outcome
        = co_await enqueue(makeJob<QKeychain::ReadPasswordJob>(service, account), Kind::Read);
    if (outcome.status == QKeychain::EntryNotFound) {
        bool isHeldBack = true;
        if (self) {
            isHeldBack = co_await self->askWhetherHeldBack(service, account);
        }
        if (isHeldBack) {
            if (self) {
                self->m_unlockRefused = true;
            }
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
    const QPointer self(this);
    const Outcome outcome = co_await enqueue(std::move(job), Kind::Write);
    if (outcome.status != QKeychain::NoError && !outcome.isLocked && self) {
        // The library gives no reason of its own when the operator has dismissed the question.
        const bool isLocked = co_await self->askWhetherLocked();
        if (isLocked) {
            if (self) {
                self->m_unlockRefused = true;
            }
            co_return std::unexpected(lockedError());
        }
    }
    co_return toResult(outcome);
}

QCoro::Task<std::expected<void, KeychainError>> KeyringSecretStore::remove(QString service,
                                                                           QString account)
{
    const Outcome outcome
        = co_await enqueue(makeJob<QKeychain::DeletePasswordJob>(service, account), Kind::Remove);
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

Reply<bool> KeyringSecretStore::askWhetherLocked()
{
    const ReplySource<bool> source(true);
    if (m_lock != nullptr) {
        m_lock->askWhetherLocked([source](bool isLocked) { source.answer(isLocked); });
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
                                                               Kind kind)
{
    const ReplySource<Outcome> source(
        Outcome {QKeychain::OtherError, u"the keyring is no longer in use"_s, {}, true});
    switch (m_state) {
    case State::Working:
        m_waiting.push_back({std::move(job), source, kind});
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
    const Kind kind = m_waiting.front().kind;
    m_waiting.pop_front();
    m_noticeTimer.start(m_limits.notice);
    m_limitTimer.start(m_limits.operation);
    connect(m_running.get(), &QKeychain::Job::finished, this, &KeyringSecretStore::onFinished);
    if (kind == Kind::Write || m_unlockRefused) {
        startUnlessLocked(kind);
    } else {
        startIf(true);
    }
}

/// The library would ask for the password; and in a write then overwrite what could not be read before.
void KeyringSecretStore::startUnlessLocked(Kind kind)
{
    m_lock->ask(m_running->service(), m_running->key(), [this, kind](bool isHeldBack) {
        if (!isHeldBack && kind == Kind::Write && m_unlockRefused) {
            m_lock->askWhetherLocked([this](bool isLocked) { startIf(!isLocked); });
        } else {
            startIf(!isHeldBack);
        }
    });
}

void KeyringSecretStore::startIf(bool isAllowed)
{
    if (isAllowed && m_state == State::Working) {
        m_isWithKeyring = true;
        m_running->start();
    } else {
        finish({QKeychain::AccessDenied, lockedError().platformMessage, {}, true});
    }
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
    if (m_isWithKeyring && outcome.status == QKeychain::NoError) {
        m_unlockRefused = false;
    }
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
    m_unlockRefused = true;
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
