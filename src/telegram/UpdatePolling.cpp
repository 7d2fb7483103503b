// SPDX-License-Identifier: Apache-2.0
#include "telegram/UpdatePolling.h"

#include "config/ValueParsers.h"
#include "system/BackgroundTasks.h"
#include "system/Clock.h"
#include "system/NextTurn.h"
#include "system/SystemLog.h"

#include <algorithm>
#include <limits>

namespace bram
{

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{
constexpr auto serverWait = 25s;
constexpr auto timeLimit = serverWait + 30s;
constexpr std::chrono::seconds failurePause = 2s;
constexpr auto dryRunPause = 700ms;
/// Nobody waits at the other end if it answers sooner with nothing.
constexpr std::chrono::milliseconds shortestWait = 1s;
constexpr qsizetype updatesInATurn = 100;
/// After a week without updates Telegram may count on from any number, perhaps a lower one.
constexpr std::chrono::milliseconds quietBeforeOtherIds = std::chrono::days(6);

QJsonArray allowedUpdates(TelegramMode mode)
{
    switch (mode) {
    case TelegramMode::Polling:
        return {u"callback_query"_s, u"message"_s};
    case TelegramMode::PublishOnlyCommandPolling:
        return {u"message"_s};
    case TelegramMode::PublishOnlySafe:
        return {};
    }
    Q_UNREACHABLE();
}
} // namespace

UpdatePolling::UpdatePolling(const TelegramBotConfig &config, const Collaborators &collaborators)
    : m_config(config)
    , m_collaborators(collaborators)
{
    m_pause.setSingleShot(true);
    m_pause.setTimerType(
        Qt::PreciseTimer); // a coarse one may end early, and Telegram asked to wait
    connect(&m_pause, &QTimer::timeout, this, &UpdatePolling::fetch);
}

void UpdatePolling::start()
{
    if (!m_isRunning) {
        m_isRunning = true;
        fetch();
    }
}

void UpdatePolling::stop()
{
    m_isRunning = false;
    m_pause.stop();
    m_batch = {};
}

void UpdatePolling::fetch()
{
    m_sinceFetch.start();
    m_collaborators.tasks.spawn(getUpdates(this), u"chat updates"_s);
}

QCoro::Task<> UpdatePolling::getUpdates(QPointer<UpdatePolling> self)
{
    const QJsonObject payload {{u"offset"_s, self->m_updateOffset},
                               {u"timeout"_s, static_cast<qint64>(serverWait.count())},
                               {u"allowed_updates"_s, allowedUpdates(self->m_config.mode())}};
    const auto answer
        = co_await self->m_collaborators.api.call(u"getUpdates"_s, payload, timeLimit);
    if (self && self->m_isRunning) {
        self->onAnswer(answer);
    }
}

void UpdatePolling::onAnswer(const TelegramBotApi::Result &answer)
{
    if (!answer) {
        m_collaborators.log.write(
            QString(u"[Brackwen][Telegram] poll failed: "_s + answer.error().description()));
        m_pause.start(std::max(failurePause, answer.error().retryAfter.value_or(failurePause)));
        return;
    }
    m_batch = answer->value("result"_L1).toArray();
    if (!std::ranges::all_of(m_batch, [](const QJsonValue &u) { return u.isObject(); })) {
        m_batch = {};
    }
    m_delivered = 0;
    m_hasAdvanced = false;
    forgetOffsetAfterQuiet();
    deliver();
}

/// An answer without updates says that none waits from the offset on, and with it the server has dropped all
/// before: nothing old can come again when the next call asks from the beginning, as a new bridge does.
void UpdatePolling::forgetOffsetAfterQuiet()
{
    const qint64 nowMs = m_collaborators.clock.nowMs();
    if (!m_batch.isEmpty()) {
        m_lastUpdateMs = nowMs;
    } else if (nowMs - m_lastUpdateMs > quietBeforeOtherIds.count()) {
        m_updateOffset = 0;
    }
}

/// A broken server may send any number of updates at once.
void UpdatePolling::deliver()
{
    const qsizetype end = std::min(m_batch.size(), m_delivered + updatesInATurn);
    while (m_isRunning && m_delivered < end) {
        const QJsonObject update = m_batch.at(m_delivered++).toObject();
        const auto id = parseInt64(update.value("update_id"_L1));
        if (id && update.value("update_id"_L1).isDouble()
            && *id < std::numeric_limits<qint64>::max() && *id >= m_updateOffset) {
            m_updateOffset = *id + 1;
            m_hasAdvanced = true;
        }
        const QPointer<UpdatePolling> self(this);
        Q_EMIT updateReceived(update);
        if (!self) {
            return;
        }
    }
    if (!m_isRunning) {
        return;
    }
    if (m_delivered < m_batch.size()) {
        inNextTurn(this, [this] { deliver(); });
    } else {
        goOn();
    }
}

void UpdatePolling::goOn()
{
    m_batch = {};
    if (m_config.dryRun) {
        m_pause.start(dryRunPause);
    } else if (!m_hasAdvanced && m_sinceFetch.elapsed() < shortestWait.count()) {
        // Asking again at once would go round as fast as both ends can.
        m_pause.start(failurePause);
    } else {
        fetch();
    }
}

} // namespace bram
