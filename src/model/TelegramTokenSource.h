// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

#include <optional>

namespace bram
{

/// Where the Telegram bot token in use comes from.
enum class TelegramTokenSource {
    Missing,
    Environment,
    Keychain,
    BrackwenConfig,
};

QString rawText(TelegramTokenSource source);
std::optional<TelegramTokenSource> telegramTokenSourceFromRawText(QStringView text);

} // namespace bram
