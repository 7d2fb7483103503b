// SPDX-License-Identifier: Apache-2.0
#include "ui/terminal/TelegramCommands.h"

#include "monitor/TelegramBridgeSupervisor.h"
#include "monitor/TelegramTokens.h"
#include "system/BackgroundTasks.h"
#include "ui/language/TelegramWords.h"
#include "ui/terminal/TerminalPrompts.h"
#include "ui/terminal/TerminalTr.h"
#include "ui/terminal/TerminalVoice.h"

namespace bram
{

using namespace Qt::StringLiterals;

TelegramCommands::TelegramCommands(const Collaborators &collaborators)
    : m_collaborators(collaborators)
{
}

void TelegramCommands::carryOut(TelegramCommand command)
{
    switch (command) {
    case TelegramCommand::Status:
        sayStatus();
        break;
    case TelegramCommand::Reload:
        m_collaborators.voice.say(TerminalTr::tr("Setting Telegram up anew."));
        m_collaborators.telegram.configureTelegramBridge();
        break;
    case TelegramCommand::SetToken:
        m_collaborators.tasks.spawn(setToken(this), u"telegram token"_s);
        break;
    case TelegramCommand::ClearToken:
        m_collaborators.tasks.spawn(clearToken(this), u"telegram token"_s);
        break;
    case TelegramCommand::TokenSource:
        saySource();
        break;
    case TelegramCommand::UseEnvironment:
        useEnvironment();
        break;
    case TelegramCommand::UseKeyring:
        m_collaborators.telegram.tokens().useKeyring();
        m_collaborators.voice.say(TerminalTr::tr("The keyring's bot token is used in this run."));
        break;
    }
}

void TelegramCommands::sayStatus()
{
    const TelegramStatus &status = m_collaborators.telegram.status();
    m_collaborators.voice.say(TerminalTr::tr("Telegram: ") + telegramModeWords(status));
    saySource();
    for (const QString &rule : telegramRuleWords(status)) {
        m_collaborators.voice.say(rule);
    }
    for (const QString &hint : telegramHints(status)) {
        m_collaborators.voice.say(hint, LineStyle::Warning);
    }
}

void TelegramCommands::saySource()
{
    m_collaborators.voice.say(TerminalTr::tr("Bot token: ")
                              + telegramTokenSourceWords(m_collaborators.telegram.status()));
}

QCoro::Task<> TelegramCommands::setToken(QPointer<TelegramCommands> self)
{
    const auto token = co_await self->m_collaborators.prompts.askForSecret(
        TerminalTr::tr("Type the bot token; it is not shown. An empty line stores nothing."));
    if (!self) {
        co_return;
    }
    if (!token) {
        self->m_collaborators.voice.say(TerminalTr::tr("Nothing was stored."));
        co_return;
    }
    const auto stored
        = co_await TelegramTokens::store(&self->m_collaborators.telegram.tokens(), *token);
    if (self) {
        self->m_collaborators.voice.say(
            stored ? TerminalTr::tr("The bot token is in the keyring and in use.")
                   : stored.error().message,
            stored ? LineStyle::Plain : LineStyle::Warning);
    }
}

QCoro::Task<> TelegramCommands::clearToken(QPointer<TelegramCommands> self)
{
    const auto cleared = co_await TelegramTokens::clear(&self->m_collaborators.telegram.tokens());
    if (self) {
        self->m_collaborators.voice.say(
            cleared ? TerminalTr::tr("The keyring holds no bot token any more.")
                    : cleared.error().message,
            cleared ? LineStyle::Plain : LineStyle::Warning);
    }
}

void TelegramCommands::useEnvironment()
{
    const auto used = m_collaborators.telegram.tokens().useEnvironment();
    m_collaborators.voice.say(used ? TerminalTr::tr("The environment's bot token is used.")
                                   : used.error().message,
                              used ? LineStyle::Plain : LineStyle::Warning);
}

} // namespace bram
