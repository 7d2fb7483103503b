// SPDX-License-Identifier: Apache-2.0
#include "telegram/TelegramBotConfig.h"

namespace bram
{

using namespace Qt::StringLiterals;

TelegramMode TelegramBotConfig::mode() const
{
    if (enablePolling) {
        return TelegramMode::Polling;
    }
    return enableCommandPollingInPublishOnly ? TelegramMode::PublishOnlyCommandPolling
                                             : TelegramMode::PublishOnlySafe;
}

bool TelegramBotConfig::isOpenToAll(qint64 chatId) const
{
    // Groups and channels have negative ids.
    return chatId < 0 && mode() != TelegramMode::PublishOnlySafe && !agentsOf(chatId).isEmpty()
        && !rulesOf(chatId).senders;
}

QStringList bridgeModeLogLines(const std::optional<TelegramBotConfig> &config)
{
    if (!config) {
        return {u"[Brackwen][Telegram] bridge disabled (missing token/chat_ids)"_s};
    }
    QStringList chats;
    for (const qint64 chat : config->chatIds) {
        chats.append(QString::number(chat));
    }
    const QString suffix
        = u" chats="_s + chats.join(u',') + (config->dryRun ? u" dryRun=1"_s : QString());
    const QString prefix = u"[Brackwen][Telegram] "_s;
    switch (config->mode()) {
    case TelegramMode::Polling:
        return {prefix + u"bridge enabled (polling)"_s + suffix};
    case TelegramMode::PublishOnlyCommandPolling:
        return {
            prefix + u"bridge enabled (publish-only command polling)"_s + suffix,
            prefix
                + u"caution: command polling in shared-token mode can compete with other consumers"_s};
    case TelegramMode::PublishOnlySafe:
        return {prefix + u"bridge enabled (publish-only safe mode)"_s + suffix,
                prefix
                    + u"hint: enable shared polling via Settings toggle, or enable command polling "
                      u"with "
                      "BRACKWEN_TELEGRAM_ENABLE_PUBLISH_ONLY_COMMAND_POLLING=1"_s};
    }
    Q_UNREACHABLE();
}

} // namespace bram
