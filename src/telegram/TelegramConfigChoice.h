// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "config/Environment.h"
#include "model/TelegramTokenSource.h"
#include "telegram/TelegramBotConfig.h"
#include "telegram/TelegramConfigFallback.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace bram
{

/// Where the bot token lies in the keyring.
inline constexpr QLatin1StringView telegramKeychainService("QX.BrackwenApprovalsMenu.telegram");
inline constexpr QLatin1StringView telegramKeychainAccountBotToken("bot-token");

/// Everything that a configuration of the bridge is made from.
struct TelegramConfigSources {
    Environment environment {}; ///< with the program's own overrides over it
    std::optional<QString> storedToken {}; ///< from the keyring; blank counts as none
    std::optional<TelegramConfigFallback> fallback {};
    bool allowSharedBotPollingOverride = false; ///< the switch in the settings
    bool offersPartlyShown = false; ///< another one
};

struct TelegramConfigChoice {
    TelegramTokenSource tokenSource
        = TelegramTokenSource::Missing; ///< also without a configuration
    std::optional<TelegramBotConfig> config; ///< nothing: no token, or no chat
    QStringList unreadableRules {}; ///< where rules for chats stand that took rights away

    bool operator==(const TelegramConfigChoice &) const = default;
};

/// Decides whether there is a bridge, for which chats, with whose token and in which mode. The token comes
/// from the environment, else from the keyring, else from the file; chats named in the environment replace
/// those of the file. A bot that the platform's own channel polls too is not polled here unless that is
/// allowed somewhere: two consumers would take each other's updates away.
TelegramConfigChoice telegramConfig(const TelegramConfigSources &sources);

} // namespace bram
