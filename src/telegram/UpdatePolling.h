// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "telegram/TelegramBotApi.h"
#include "telegram/TelegramBotConfig.h"

#include <QCoro/QCoroTask>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QObject>
#include <QPointer>
#include <QTimer>

namespace bram
{

class BackgroundTasks;
class Clock;
class SystemLog;

/// Fetches what happens in the chats, with one call that waits for it at the server's end, and hands the
/// updates on one by one, in their order. Goes on after every failure until it is stopped. Main thread only.
class UpdatePolling final : public QObject
{
    Q_OBJECT

public:
    struct Collaborators {
        TelegramBotApi &api;
        const Clock &clock;
        SystemLog &log;
        BackgroundTasks &tasks;
    };

    UpdatePolling(const TelegramBotConfig &config, const Collaborators &collaborators);

    void start();
    void stop();

Q_SIGNALS:
    /// One object of the Bot API's answer, unseen; it will not come again.
    void updateReceived(const QJsonObject &update);

private:
    void fetch();
    static QCoro::Task<> getUpdates(QPointer<UpdatePolling> self);
    void onAnswer(const TelegramBotApi::Result &answer);
    void deliver();
    void forgetOffsetAfterQuiet();
    void goOn();

    TelegramBotConfig m_config;
    Collaborators m_collaborators;
    bool m_isRunning = false;
    qint64 m_updateOffset = 0; ///< the next update to ask for
    qint64 m_lastUpdateMs = 0; ///< when an update last came; since the epoch
    QElapsedTimer m_sinceFetch;
    QJsonArray m_batch; ///< received with the last fetch
    qsizetype m_delivered = 0; ///< of it
    bool m_hasAdvanced = false; ///< with this batch
    QTimer m_pause;
};

} // namespace bram
