// SPDX-License-Identifier: Apache-2.0
#include "telegram/TelegramConfigChoice.h"

#include "config/ValueParsers.h"
#include "model/TextRules.h"

#include <algorithm>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
bool isOn(const Environment &environment, const QString &name)
{
    const auto text = environment.trimmed(name);
    return text && parseBool(*text) == true;
}

std::optional<QString> firstOf(const Environment &environment, const QString &name,
                               const QString &otherName)
{
    const auto value = environment.trimmed(name);
    return value ? value : environment.trimmed(otherName);
}

TelegramTokenSource sourceOf(const std::optional<QString> &environmentToken,
                             const std::optional<QString> &storedToken,
                             const std::optional<QString> &fileToken)
{
    if (environmentToken) {
        return TelegramTokenSource::Environment;
    }
    if (storedToken) {
        return TelegramTokenSource::Keychain;
    }
    return fileToken ? TelegramTokenSource::BrackwenConfig : TelegramTokenSource::Missing;
}

QList<qint64> chatsOf(const TelegramConfigSources &sources)
{
    QList<qint64> chats = parseInt64List(
        firstOf(sources.environment, u"BRACKWEN_TELEGRAM_CHAT_ID"_s, u"TELEGRAM_CHAT_ID"_s));
    if (chats.isEmpty() && sources.fallback) {
        chats = sources.fallback->chatIds.values();
        std::ranges::sort(chats);
    }
    return chats;
}

bool isSharedPollingAllowed(const TelegramConfigSources &sources)
{
    return isOn(sources.environment, u"BRACKWEN_TELEGRAM_ALLOW_SHARED_BOT_POLLING"_s)
        || isOn(sources.environment, u"BRACKWEN_TELEGRAM_ALLOW_SHARED_BOT"_s)
        || (sources.fallback && sources.fallback->allowSharedBotPolling)
        || sources.allowSharedBotPollingOverride;
}

bool mayPoll(const QString &token, const TelegramConfigSources &sources)
{
    const bool isShared = sources.fallback && sources.fallback->channelEnabled
        && sources.fallback->channelToken == token;
    return !isShared || isSharedPollingAllowed(sources);
}

/// The rules of the environment, else those of the file.
std::optional<WrittenChatRules>
rulesOf(const TelegramConfigSources &sources, const QString &name,
        std::optional<WrittenChatRules> TelegramConfigFallback::*inFile)
{
    if (const auto text = sources.environment.trimmed(name)) {
        return chatRulesOfText(name, *text);
    }
    return sources.fallback ? (*sources.fallback).*inFile : std::nullopt;
}

void applyRules(const TelegramConfigSources &sources, TelegramConfigChoice &choice)
{
    using File = TelegramConfigFallback;
    TelegramBotConfig &config = *choice.config;
    const auto senders = rulesOf(sources, u"BRACKWEN_TELEGRAM_SENDERS"_s, &File::senders);
    if (senders && !applySenders(*senders, config.chatIds, config.chatRules)) {
        choice.unreadableRules.append(senders->name);
    }
    const auto rights = rulesOf(sources, u"BRACKWEN_TELEGRAM_RIGHTS"_s, &File::rights);
    if (rights && !applyRights(*rights, config.chatIds, config.chatRules)) {
        choice.unreadableRules.append(rights->name);
    }
}
} // namespace

TelegramConfigChoice telegramConfig(const TelegramConfigSources &sources)
{
    const Environment &environment = sources.environment;
    const auto environmentToken
        = firstOf(environment, u"BRACKWEN_TELEGRAM_BOT_TOKEN"_s, u"TELEGRAM_BOT_TOKEN"_s);
    const auto storedToken = trimmedOrAbsent(sources.storedToken);
    const auto fileToken = sources.fallback ? sources.fallback->token : std::nullopt;

    TelegramConfigChoice choice;
    choice.tokenSource = sourceOf(environmentToken, storedToken, fileToken);
    const auto token = environmentToken ? environmentToken : storedToken ? storedToken : fileToken;
    const QList<qint64> chats = chatsOf(sources);
    if (!token || chats.isEmpty()) {
        return choice;
    }
    TelegramBotConfig config;
    config.token = *token;
    config.chatIds = chats;
    for (const qint64 chat : chats) {
        if (sources.fallback && sources.fallback->chatAgentMap.contains(chat)) {
            config.chatAgentMap.insert(chat, sources.fallback->chatAgentMap.value(chat));
        }
    }
    config.enablePolling = mayPoll(*token, sources);
    config.enableCommandPollingInPublishOnly = !config.enablePolling
        && (isOn(environment, u"BRACKWEN_TELEGRAM_ENABLE_PUBLISH_ONLY_COMMAND_POLLING"_s)
            || isOn(environment, u"BRACKWEN_TELEGRAM_COMMAND_POLLING"_s));
    config.dryRun = isOn(environment, u"BRACKWEN_TELEGRAM_DRY_RUN"_s);
    config.offersPartlyShown = sources.offersPartlyShown;
    choice.config = config;
    applyRules(sources, choice);
    return choice;
}

} // namespace bram
