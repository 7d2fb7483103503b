// SPDX-License-Identifier: Apache-2.0
#include "ui/language/TelegramWords.h"

#include "model/HonestDisplay.h"

#include <QCoreApplication>

#include <algorithm>
#include <iterator>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
class TelegramTr
{
    Q_DECLARE_TR_FUNCTIONS(Telegram)
};

QString modeWords(TelegramMode mode)
{
    switch (mode) {
    case TelegramMode::Polling:
        return TelegramTr::tr("takes buttons and commands");
    case TelegramMode::PublishOnlyCommandPolling:
        return TelegramTr::tr("takes commands, shows no buttons");
    case TelegramMode::PublishOnlySafe:
        return TelegramTr::tr("only shows requests (safe mode)");
    }
    Q_UNREACHABLE();
}
} // namespace

QString telegramModeWords(const TelegramStatus &status)
{
    if (!status.mode) {
        return status.isWaitingForKeyring ? TelegramTr::tr("waiting for the keyring")
            : status.tokenSource == TelegramTokenSource::Missing
            ? TelegramTr::tr("off, there is no bot token")
            : status.problem.isEmpty() ? TelegramTr::tr("off, no chat is configured")
                                       : TelegramTr::tr("off");
    }
    const QString words
        = TelegramTr::tr("%1; chats: %2").arg(modeWords(*status.mode)).arg(status.chatIds.size());
    return status.dryRun ? words + u"; "_s + TelegramTr::tr("dry run, nothing is sent") : words;
}

QString telegramTokenSourceWords(const TelegramStatus &status)
{
    switch (status.tokenSource) {
    case TelegramTokenSource::Missing:
        return TelegramTr::tr("none");
    case TelegramTokenSource::Environment:
        return TelegramTr::tr("from the environment");
    case TelegramTokenSource::Keychain:
        return TelegramTr::tr("from the keyring");
    case TelegramTokenSource::BrackwenConfig:
        return TelegramTr::tr("from the platform's configuration file");
    }
    Q_UNREACHABLE();
}

QStringList telegramHints(const TelegramStatus &status)
{
    QStringList hints;
    if (!status.problem.isEmpty()) {
        hints.append(TelegramTr::tr("Telegram could not be set up as configured: %1")
                         .arg(honestLine(status.problem).text));
    }
    if (status.isWaitingForKeyring) {
        hints.append(TelegramTr::tr("The keyring is locked, and may hold the bot token. Unlock it; "
                                    "if nothing happens then, set Telegram up again."));
    }
    for (const QString &name : status.unreadableRules) {
        hints.append(TelegramTr::tr("%1 cannot be read in part: where it is unclear, nobody may "
                                    "decide, or only deny.")
                         .arg(name));
    }
    if (status.isEnvironmentSetAside) {
        hints.append(
            TelegramTr::tr("The environment has a bot token, too. It is set aside for this "
                           "run and counts again at the next start."));
    }
    if (status.mode == TelegramMode::PublishOnlySafe) {
        hints.append(TelegramTr::tr("The platform fetches the messages of the same bot, so nothing "
                                    "is taken from chats here unless shared polling is allowed."));
    } else if (status.mode && status.boundChatCount == 0) {
        hints.append(TelegramTr::tr("No chat is bound to an agent in the platform's configuration, "
                                    "so none may decide."));
    }
    return hints;
}

QStringList telegramRuleWords(const TelegramStatus &status)
{
    QStringList words;
    for (const qint64 chatId : status.chatIds) {
        const ChatRules rules = status.chatRules.value(chatId);
        const QString chat = QString::number(chatId);
        if (rules.senders && rules.senders->isEmpty()) {
            words.append(TelegramTr::tr("Chat %1: nobody may decide.").arg(chat));
            continue;
        }
        if (rules.senders) {
            QList<qint64> ids = rules.senders->values();
            std::ranges::sort(ids);
            QStringList texts;
            std::ranges::transform(ids, std::back_inserter(texts),
                                   [](qint64 id) { return QString::number(id); });
            words.append(TelegramTr::tr("Chat %1: only these senders may decide: %2.")
                             .arg(chat, texts.join(u", "_s)));
        } else if (status.openGroups.contains(chatId)) {
            words.append(TelegramTr::tr("Chat %1: everybody in this group may decide.").arg(chat));
        }
        if (rules.right == ChatRight::Deny) {
            words.append(TelegramTr::tr("Chat %1: requests can only be denied.").arg(chat));
        } else if (rules.right == ChatRight::AllowOnce) {
            words.append(
                TelegramTr::tr("Chat %1: requests can be allowed once or denied.").arg(chat));
        }
    }
    return words;
}

} // namespace bram
