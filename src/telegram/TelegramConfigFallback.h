// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "config/BrackwenConfig.h"
#include "telegram/ChatRules.h"

#include <QJsonObject>
#include <QMap>
#include <QSet>
#include <QString>

#include <optional>

namespace bram
{

/// What the platform's configuration file says about Telegram.
struct TelegramConfigFallback {
    std::optional<QString> token;
    QSet<qint64> chatIds;
    QMap<qint64, QSet<QString>> chatAgentMap; ///< from the bindings of agents to chats
    bool channelEnabled = false; ///< the platform's own Telegram channel
    std::optional<QString> channelToken; ///< the bot that this channel polls
    bool allowSharedBotPolling = false;
    std::optional<WrittenChatRules> senders; ///< who may decide, by chat
    std::optional<WrittenChatRules> rights; ///< what may be decided, by chat

    bool operator==(const TelegramConfigFallback &) const = default;
};

/// Out of one configuration file; what is absent or misshapen in it stays absent.
TelegramConfigFallback telegramConfigFallback(const QJsonObject &file);

/// Out of the first candidate that can be read; nothing when none can.
std::optional<TelegramConfigFallback> loadTelegramConfigFromBrackwen(const BrackwenConfig &files);

} // namespace bram
