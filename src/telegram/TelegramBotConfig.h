// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "telegram/ChatRules.h"

#include <QList>
#include <QMap>
#include <QSet>
#include <QString>
#include <QStringList>

#include <optional>

namespace bram
{

/// What the bridge does in its chats.
enum class TelegramMode {
    Polling, ///< publishes, and takes button presses and commands
    PublishOnlyCommandPolling, ///< publishes, and takes commands
    PublishOnlySafe, ///< publishes, and fetches nothing: another consumer polls the same bot
};

/// The bridge's whole configuration; a bridge never changes it while it runs.
struct TelegramBotConfig {
    QString token; ///< trimmed, never empty; a secret
    QList<qint64> chatIds; ///< ascending, without duplicates, never empty
    QMap<qint64, QSet<QString>> chatAgentMap; ///< only of chats in `chatIds`
    bool enablePolling = false;
    bool enableCommandPollingInPublishOnly = false; ///< never together with `enablePolling`
    QMap<qint64, ChatRules> chatRules {}; ///< only of chats in `chatIds`; the others have none
    bool offersPartlyShown = false; ///< to allow commands that are not shown whole
    bool dryRun = false; ///< nothing reaches Telegram; each call is logged instead

    TelegramMode mode() const;
    /// The agents that may be decided about in this chat; empty when it is bound to none.
    QSet<QString> agentsOf(qint64 chatId) const { return chatAgentMap.value(chatId); }
    ChatRules rulesOf(qint64 chatId) const { return chatRules.value(chatId); }
    /// Whether this is a group in which everybody may decide.
    bool isOpenToAll(qint64 chatId) const;

    bool operator==(const TelegramBotConfig &) const = default;
};

/// What the log says when a bridge with this configuration has been started, or when there is none.
QStringList bridgeModeLogLines(const std::optional<TelegramBotConfig> &config);

} // namespace bram
