// SPDX-License-Identifier: Apache-2.0
#include "telegram/TelegramConfigFallback.h"

#include "config/ValueParsers.h"
#include "model/TextRules.h"

#include <QJsonArray>

#include <algorithm>
#include <array>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
void addChat(const QJsonValue &value, TelegramConfigFallback &fallback)
{
    if (const auto chat = parseInt64(value)) {
        fallback.chatIds.insert(*chat);
    }
}

std::optional<WrittenChatRules> rulesIn(const QJsonObject &channel, const QString &key)
{
    return channel.contains(key)
        ? std::optional(chatRulesOfJson(u"channels.telegram."_s + key, channel.value(key)))
        : std::nullopt;
}

void readBindings(const QJsonArray &bindings, TelegramConfigFallback &fallback)
{
    for (const QJsonValue &value : bindings) {
        const QJsonObject binding = value.toObject();
        const QJsonObject match = binding.value("match"_L1).toObject();
        const auto agent = trimmedOrAbsent(binding.value("agentId"_L1).toString());
        const auto chat = parseInt64(match.value("peer"_L1).toObject().value("id"_L1));
        if (agent && chat && match.value("channel"_L1).toString().trimmed() == "telegram"_L1) {
            fallback.chatAgentMap[*chat].insert(*agent);
            fallback.chatIds.insert(*chat);
        }
    }
}

void readChannel(const QJsonObject &channel, TelegramConfigFallback &fallback)
{
    fallback.channelToken = trimmedOrAbsent(channel.value("botToken"_L1).toString());
    fallback.token = fallback.channelToken;
    fallback.channelEnabled = parseBool(channel.value("enabled"_L1)).value_or(false);
    constexpr std::array sharing {"allowSharedBotPolling"_L1, "allowSharedBot"_L1,
                                  "allowSharedPolling"_L1};
    fallback.allowSharedBotPolling = std::ranges::any_of(
        sharing, [&](auto key) { return parseBool(channel.value(key)) == true; });
    fallback.senders = rulesIn(channel, u"approvalsSenders"_s);
    fallback.rights = rulesIn(channel, u"approvalsRights"_s);
    addChat(channel.value("approvalsChatId"_L1), fallback);
    for (const QJsonValue &value : channel.value("allowFrom"_L1).toArray()) {
        addChat(value, fallback);
    }
    for (const QString &key : channel.value("groups"_L1).toObject().keys()) {
        addChat(key, fallback);
    }
}
} // namespace

TelegramConfigFallback telegramConfigFallback(const QJsonObject &file)
{
    TelegramConfigFallback fallback;
    readBindings(file.value("bindings"_L1).toArray(), fallback);
    readChannel(file.value("channels"_L1).toObject().value("telegram"_L1).toObject(), fallback);
    return fallback;
}

std::optional<TelegramConfigFallback> loadTelegramConfigFromBrackwen(const BrackwenConfig &files)
{
    const auto objects = files.loadObjects();
    return objects.isEmpty() ? std::nullopt
                             : std::optional(telegramConfigFallback(objects.first()));
}

} // namespace bram
