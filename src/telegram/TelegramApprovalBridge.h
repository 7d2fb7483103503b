// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "telegram/CallbackAnswers.h"
#include "telegram/ChatMemory.h"
#include "telegram/DecisionTexts.h"
#include "telegram/TelegramApprovalEntry.h"
#include "telegram/TelegramBotApi.h"
#include "telegram/TelegramBotConfig.h"
#include "telegram/TelegramChat.h"
#include "telegram/TelegramDecision.h"
#include "telegram/UpdatePolling.h"

#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QSet>
#include <QUrl>

#include <map>
#include <memory>
#include <optional>

class QNetworkAccessManager;

namespace bram
{

class BackgroundTasks;
class Clock;
class SystemLog;

/// The one client of Telegram: mirrors the pending requests to the configured chats, one status message a
/// chat, and hands decisions taken there to its owner. It never decides anything and never shows anything;
/// what goes wrong becomes a log line, from which the bot token is masked. Main thread only.
///
/// A bridge keeps its configuration for life: another configuration is another bridge, which knows nothing of
/// the messages of the one before it.
class TelegramApprovalBridge final : public QObject
{
    Q_OBJECT

public:
    struct Collaborators {
        QNetworkAccessManager &network; ///< outlives the bridge
        ChatMemories &memories; ///< of this bridge and those before and after it
        const Clock &clock;
        SystemLog &log;
        BackgroundTasks &tasks;
    };

    /// `apiUrl` as `telegramApiUrl` gives it. Sends nothing yet.
    TelegramApprovalBridge(const TelegramBotConfig &config, const QUrl &apiUrl,
                           TelegramDecisionCallback onDecision, const Collaborators &collaborators);
    ~TelegramApprovalBridge() override;

    /// Begins to fetch updates where the mode asks for it. A second start does nothing.
    void start();

    /// Ends every wait and every call under way, for good: no further call, no decision, no farewell message.
    void stop();

    /// What is pending now, in the order of the queue. Returns at once. Each chat is brought up to date with
    /// the newest list as soon as it may be; lists in between are left out, and one that it already shows
    /// costs nothing.
    void updatePending(const QList<TelegramApprovalEntry> &entries);

    const TelegramBotConfig &config() const { return m_config; }

private:
    void handleUpdate(const QJsonObject &update);
    void handleCallbackUpdate(const QJsonObject &callbackQuery);
    void handleMessageUpdate(const QJsonObject &message);
    /// Null for a chat that is not configured, or none.
    TelegramChat *chatWith(std::optional<qint64> chatId) const;
    /// Why nobody who sent this may do anything in the chat; nothing when they may.
    std::optional<QString> foreignSender(qint64 chatId, const QJsonObject &messageOrQuery) const;
    void show(TelegramChat &chat, const QString &approvalId, const QString &callbackId);
    void logRefusal(const QString &reason, std::optional<qint64> chatId,
                    const QJsonObject &messageOrQuery = {});
    void logStranger(std::optional<qint64> chatId);

    TelegramBotConfig m_config;
    TelegramDecisionCallback m_onDecision;
    SystemLog &m_log;
    TelegramBotApi m_api;
    UpdatePolling m_polling;
    CallbackAnswers m_answers;
    std::map<qint64, std::unique_ptr<TelegramChat>> m_chats;
    QSet<qint64> m_loggedStrangers;
    bool m_isStopped = false;
};

} // namespace bram
