// SPDX-License-Identifier: Apache-2.0
#include "ui/terminal/CommandLine.h"

#include "audit/Redaction.h"
#include "model/TextRules.h"
#include "ui/terminal/TerminalTr.h"

#include <QStringList>

#include <algorithm>
#include <array>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr qsizetype quotedLength = 40;

struct PlainRow {
    QStringView word;
    PlainCommand command;
};

constexpr std::array plainCommands {
    PlainRow {u"list", PlainCommand::List},
    PlainRow {u"history", PlainCommand::History},
    PlainRow {u"activity", PlainCommand::Activity},
    PlainRow {u"status", PlainCommand::Status},
    PlainRow {u"metrics", PlainCommand::Metrics},
    PlainRow {u"agents", PlainCommand::Agents},
    PlainRow {u"simulate", PlainCommand::Simulate},
    PlainRow {u"reconnect", PlainCommand::Reconnect},
    PlainRow {u"reload-token", PlainCommand::ReloadToken},
    PlainRow {u"clear-pending", PlainCommand::ClearPending},
    PlainRow {u"clear-history", PlainCommand::ClearHistory},
    PlainRow {u"cancel-report", PlainCommand::CancelReport},
    PlainRow {u"undo", PlainCommand::Undo},
    PlainRow {u"settings", PlainCommand::Settings},
    PlainRow {u"help", PlainCommand::Help},
    PlainRow {u"quit", PlainCommand::Quit},
};

struct FileRow {
    QStringView word;
    FileCommand::Purpose purpose;
    QStringView after;
};

constexpr std::array fileCommands {
    FileRow {u"export", FileCommand::Purpose::Pending, u"FILE"},
    FileRow {u"report", FileCommand::Purpose::WeeklyReport, u"FILE"},
    FileRow {u"diagnostics", FileCommand::Purpose::Diagnostics, u"FOLDER"},
};

struct AlwaysAllowRow {
    QStringView word;
    AlwaysAllowCommand::Kind kind;
    QStringView after; ///< what has to follow
};

constexpr std::array alwaysAllowCommands {
    AlwaysAllowRow {u"list", AlwaysAllowCommand::Kind::List, u""},
    AlwaysAllowRow {u"reload", AlwaysAllowCommand::Kind::Reload, u""},
    AlwaysAllowRow {u"register", AlwaysAllowCommand::Kind::Register, u""},
    AlwaysAllowRow {u"add", AlwaysAllowCommand::Kind::Add, u"DIGEST"},
    AlwaysAllowRow {u"add-all", AlwaysAllowCommand::Kind::AddAll, u""},
    AlwaysAllowRow {u"remove", AlwaysAllowCommand::Kind::Remove, u"DIGEST app|brackwen|both"},
    AlwaysAllowRow {u"clear", AlwaysAllowCommand::Kind::Clear, u"app|brackwen|both"},
    AlwaysAllowRow {u"backup", AlwaysAllowCommand::Kind::Backup, u"FILE"},
    AlwaysAllowRow {u"restore", AlwaysAllowCommand::Kind::Restore, u"FILE"},
};

std::optional<AlwaysAllowOperations::Target> targetMeant(const QString &word)
{
    using Target = AlwaysAllowOperations::Target;
    return word == "app"_L1     ? std::optional(Target::App)
        : word == "brackwen"_L1 ? std::optional(Target::Brackwen)
        : word == "both"_L1     ? std::optional(Target::Both)
                                : std::nullopt;
}

struct TelegramRow {
    QStringView words;
    TelegramCommand command;
};

constexpr std::array telegramCommands {
    TelegramRow {u"status", TelegramCommand::Status},
    TelegramRow {u"reload", TelegramCommand::Reload},
    TelegramRow {u"token set", TelegramCommand::SetToken},
    TelegramRow {u"token clear", TelegramCommand::ClearToken},
    TelegramRow {u"token source", TelegramCommand::TokenSource},
    TelegramRow {u"token source environment", TelegramCommand::UseEnvironment},
    TelegramRow {u"token source keyring", TelegramCommand::UseKeyring},
};

using Parsed = std::expected<TerminalCommand, LineFault>;

Parsed fault(const QString &message)
{
    return std::unexpected(LineFault {{message}});
}

Parsed whichRequest(const QString &word, const QString &after)
{
    return fault(TerminalTr::tr("Say which request: %1 %2").arg(word, after));
}

Parsed parseDecision(ApprovalDecision decision, const QStringList &words)
{
    if (words.size() != 2) {
        return whichRequest(words.first(), u"ID|all"_s);
    }
    const QString &target = words.at(1);
    if (target == "all"_L1) {
        return DecideAllCommand {decision};
    }
    return DecideCommand {decision, target};
}
/// `rest` is what stands after `always-allow`.
Parsed parseAlwaysAllow(const QString &rest)
{
    using Kind = AlwaysAllowCommand::Kind;
    const QStringList words = rest.simplified().split(u' ', Qt::SkipEmptyParts);
    const auto row = std::ranges::find(alwaysAllowCommands, QStringView(words.value(0)),
                                       &AlwaysAllowRow::word);
    if (row == alwaysAllowCommands.end()) {
        return fault(TerminalTr::tr(
            "Say what: always-allow list|reload|remove|clear|register|add|add-all|backup|restore"));
    }
    const QString argument = rest.trimmed().sliced(row->word.size()).trimmed();
    AlwaysAllowCommand command {.kind = row->kind};
    bool isComplete = argument.isEmpty() == row->after.isEmpty();
    if (row->kind == Kind::Remove || row->kind == Kind::Clear) {
        const auto target = targetMeant(words.constLast());
        isComplete = target && words.size() == (row->kind == Kind::Remove ? 3 : 2);
        command.target = target.value_or(command.target);
        command.argument = row->kind == Kind::Remove ? words.value(1) : QString();
    } else {
        command.argument = argument;
    }
    if (isComplete) {
        return command;
    }
    const QString usage = u"always-allow %1 %2"_s.arg(row->word, row->after).trimmed();
    return fault(TerminalTr::tr("Write it so: %1").arg(usage));
}

/// `rest` is what stands after `telegram`. It is not repeated: somebody may have put the token there.
Parsed parseTelegram(const QString &rest)
{
    const QString words = rest.simplified();
    const auto row = std::ranges::find(telegramCommands, QStringView(words), &TelegramRow::words);
    return row != telegramCommands.end()
        ? Parsed(row->command)
        : fault(TerminalTr::tr("Write it so: telegram status|reload, telegram token "
                               "set|clear|source, telegram token "
                               "source environment|keyring. The token itself is asked for."));
}

/// `rest` is what stands after `chat`.
Parsed parseChat(const QString &rest)
{
    using Kind = ChatCommand::Kind;
    const QString word = rest.section(u' ', 0, 0);
    const QString argument = rest.sliced(word.size()).trimmed();
    bool isNumber = false;
    const int number = argument.toInt(&isNumber);
    if (rest.isEmpty()) {
        return ChatCommand {.kind = Kind::Show};
    }
    if (word == "press"_L1 && isNumber) {
        return ChatCommand {.kind = Kind::Press, .number = number};
    }
    if (word == "say"_L1 && !argument.isEmpty()) {
        return ChatCommand {.kind = Kind::Say, .text = argument};
    }
    return fault(TerminalTr::tr("Write it so: %1").arg(u"chat, chat press N, chat say TEXT"_s));
}
} // namespace

QString beginningOfTyped(const QString &text)
{
    // One character may be a letter with thousands of accents.
    const QString beginning = firstCharacters(text, quotedLength).left(4 * quotedLength);
    return beginning.size() < text.size() ? beginning + u'…' : beginning;
}

std::expected<TerminalCommand, LineFault> parseCommandLine(QStringView line)
{
    const QStringList words = line.toString().simplified().split(u' ', Qt::SkipEmptyParts);
    if (words.isEmpty()) {
        return PlainCommand::Nothing;
    }
    const QString &word = words.first();
    const auto plain = std::ranges::find(plainCommands, QStringView(word), &PlainRow::word);
    if (plain != plainCommands.end()) {
        if (words.size() > 1) {
            return fault(TerminalTr::tr("`%1` takes nothing after it.").arg(word));
        }
        return plain->command;
    }

    if (const auto decision = approvalDecisionFromRawText(word)) {
        return parseDecision(*decision, words);
    }
    const QString rest = line.trimmed().sliced(word.size()).trimmed().toString();
    if (word == "show"_L1) {
        return words.size() == 2 ? Parsed(ShowCommand {words.at(1)}) : whichRequest(word, u"ID"_s);
    }
    if (word == "save"_L1) {
        const QString target = words.value(1);
        const QString path = rest.sliced(target.size()).trimmed();
        return path.isEmpty() ? whichRequest(word, u"ID FILE"_s)
                              : Parsed(SaveCommand {target, path});
    }
    if (word == "agent"_L1) {
        return rest.isEmpty() ? fault(TerminalTr::tr("Say which agent: agent NAME"))
                              : Parsed(AgentCommand {rest});
    }
    if (word == "language"_L1) {
        const auto language = menuLanguageFromRawText(rest);
        return language ? Parsed(LanguageCommand {*language})
                        : fault(TerminalTr::tr("Say which language: language eng|kor"));
    }
    if (word == "shared-polling"_L1) {
        const bool isAllowed = rest == "on"_L1;
        return isAllowed || rest == "off"_L1
            ? Parsed(SharedPollingCommand {isAllowed})
            : fault(TerminalTr::tr("Say on or off: shared-polling on|off"));
    }
    if (word == "setting"_L1) {
        const bool isOn = words.value(2) == "on"_L1;
        return words.size() == 3 && (isOn || words.at(2) == "off"_L1)
            ? Parsed(SettingCommand {words.at(1), isOn})
            : fault(TerminalTr::tr("Write it so: %1").arg(u"setting NAME on|off"_s));
    }
    if (word == "always-allow"_L1) {
        return parseAlwaysAllow(rest);
    }
    if (word == "telegram"_L1) {
        return parseTelegram(rest);
    }
    if (word == "chat"_L1) {
        return parseChat(rest);
    }
    const auto file = std::ranges::find(fileCommands, QStringView(word), &FileRow::word);
    if (file != fileCommands.end()) {
        return rest.isEmpty()
            ? fault(TerminalTr::tr("Say where to: %1 %2").arg(word, file->after.toString()))
            : Parsed(FileCommand {file->purpose, rest});
    }
    // Somebody may have typed the token where a command belongs.
    return std::unexpected(LineFault {
        {TerminalTr::tr("Unknown command: %1 (try `help`)").arg(beginningOfTyped(redacted(word)))},
        true});
}

} // namespace bram
