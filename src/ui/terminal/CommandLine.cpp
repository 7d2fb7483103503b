// SPDX-License-Identifier: Apache-2.0
#include "ui/terminal/CommandLine.h"

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

using Parsed = std::expected<TerminalCommand, Error>;

Parsed fault(const QString &message)
{
    return std::unexpected(Error {message});
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
} // namespace

QString beginningOfTyped(const QString &text)
{
    // One character may be a letter with thousands of accents.
    const QString beginning = firstCharacters(text, quotedLength).left(4 * quotedLength);
    return beginning.size() < text.size() ? beginning + u'…' : beginning;
}

std::expected<TerminalCommand, Error> parseCommandLine(QStringView line)
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
    if (word == "agent"_L1) {
        return rest.isEmpty() ? fault(TerminalTr::tr("Say which agent: agent NAME"))
                              : Parsed(AgentCommand {rest});
    }
    if (word == "language"_L1) {
        const auto language = menuLanguageFromRawText(rest);
        return language ? Parsed(LanguageCommand {*language})
                        : fault(TerminalTr::tr("Say which language: language eng|kor"));
    }
    const auto file = std::ranges::find(fileCommands, QStringView(word), &FileRow::word);
    if (file != fileCommands.end()) {
        return rest.isEmpty()
            ? fault(TerminalTr::tr("Say where to: %1 %2").arg(word, file->after.toString()))
            : Parsed(FileCommand {file->purpose, rest});
    }
    return fault(TerminalTr::tr("Unknown command: %1 (try `help`)").arg(beginningOfTyped(word)));
}

} // namespace bram
