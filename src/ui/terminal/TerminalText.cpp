// SPDX-License-Identifier: Apache-2.0
#include "ui/terminal/TerminalText.h"

#include "config/ConfiguredAgents.h"
#include "model/CommandRules.h"
#include "model/HonestDisplay.h"
#include "model/TextRules.h"
#include "ui/language/Words.h"
#include "ui/terminal/TerminalRows.h"
#include "ui/terminal/TerminalTr.h"

#include <algorithm>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr qsizetype longCommandCharacters = 2000;
constexpr qsizetype longCommandLines = 20;
/// A larger one is announced and listed with its beginning and its end: drawn with marks, it could be ten
/// times as large, and it would push everything else off the screen.
constexpr qsizetype giantCommandUnits = 32 * 1024;
constexpr qsizetype giantCommandLines = 1000;
/// A still larger one goes to a file only.
constexpr qsizetype mostShownUnits = 256 * 1024;
constexpr qsizetype giantEndUnits = 500;
constexpr qsizetype giantEndLines = 5;
constexpr qsizetype listedIdCharacters = 12;
constexpr qsizetype historyCommandCharacters = 80;
constexpr qsizetype listedDigestCharacters = 12;

/// As commands name the lists.
QString listWord(AlwaysAllowSource source)
{
    switch (source) {
    case AlwaysAllowSource::LocalOnly:
        return u"app"_s;
    case AlwaysAllowSource::BrackwenOnly:
        return u"brackwen"_s;
    case AlwaysAllowSource::Both:
        return u"both"_s;
    }
    Q_UNREACHABLE();
}

QString beginningOf(const QString &text, qsizetype characters)
{
    // One character may be a letter with thousands of accents.
    const QString beginning = firstCharacters(text, characters).left(4 * characters);
    return honestLine(beginning).text + (beginning.size() < text.size() ? u"…"_s : QString());
}

/// For a text in which they were marked.
QString lineBreaksAsSigns(QString text)
{
    return text.replace(u"⟨U+000A⟩"_s, u"⏎"_s);
}

QString agentText(const ApprovalItem &item)
{
    const QString agent = item.agentId.value_or(QString());
    return agent.isEmpty() ? TerminalTr::tr("agent: not given")
                           : TerminalTr::tr("agent: ") + honestLine(agent).text;
}

QString headline(const ApprovalItem &item, int number, RequestOccasion occasion, qint64 nowMs)
{
    const QString title = occasion == RequestOccasion::Changed
        ? TerminalTr::tr("Request #%1 has CHANGED").arg(number)
        : occasion == RequestOccasion::Listed ? u"#%1"_s.arg(number)
                                              : TerminalTr::tr("Request #%1").arg(number);
    QStringList parts {title};
    if (commandRiskLevel(item.command) == CommandRisk::High) {
        parts.append(TerminalTr::tr("HIGH RISK"));
    }
    parts.append(timeLeftWords(item, nowMs));
    parts.removeAll(QString());
    return parts.join("  "_L1);
}

qsizetype lineCount(QStringView command)
{
    return command.count(u'\n') + 1;
}

/// Its first lines; no character is torn.
QStringView beginningOfGiant(QStringView command)
{
    qsizetype end = 0;
    for (qsizetype i = 0; i < longCommandLines && end >= 0; ++i) {
        end = command.indexOf(u'\n', i == 0 ? 0 : end + 1);
    }
    qsizetype size = std::min(longCommandCharacters, end < 0 ? command.size() : end);
    if (command.at(size).isLowSurrogate()) {
        ++size;
    }
    return command.first(size);
}

QStringView endOfGiant(QStringView command)
{
    qsizetype start = command.size();
    for (qsizetype i = 0; i < giantEndLines && start > 0; ++i) {
        start = command.lastIndexOf(u'\n', start - 1);
    }
    qsizetype size = std::min(giantEndUnits, command.size() - (start + 1));
    if (command.last(size).front().isLowSurrogate()) {
        ++size;
    }
    return command.last(size);
}

/// Rows of `line`, which is a line of a text shown honestly.
void appendCommandLine(TerminalLines &lines, const QString &line, int columns)
{
    const QString firstPrefix = u"  | "_s;
    const QString nextPrefix = u"  : "_s;
    qsizetype row = lines.size();
    appendRows(lines, firstPrefix, nextPrefix, line, LineStyle::Plain, columns);
    qsizetype indentation = indentationLength(line);
    if (!QStringView(line).first(indentation).contains(tabSign)) {
        return; // blanks are faint enough
    }
    for (; indentation > 0 && row < lines.size(); ++row) {
        lines[row].faintBegin = firstPrefix.size();
        lines[row].faintEnd = std::min(firstPrefix.size() + indentation, lines[row].text.size());
        indentation -= lines[row].faintEnd - lines[row].faintBegin;
    }
}

/// Whether something in it is suspicious.
bool appendCommandRows(TerminalLines &lines, QStringView command, int columns)
{
    const HonestText shown = honestDisplay(command);
    for (const QString &line : shown.text.split(u'\n')) {
        appendCommandLine(lines, line, columns);
    }
    return shown.suspicious;
}

void appendCommand(TerminalLines &lines, const ApprovalItem &item, int number, ShownExtent extent,
                   int columns)
{
    const QString &command = item.command;
    const qsizetype lineNumber = lineCount(command);
    const auto warn = [&](const QString &warning) {
        appendRows(lines, u"  "_s, u"  "_s, warning, LineStyle::Warning, columns,
                   RowBreaks::AtBlanks);
    };
    bool isSuspicious = false;
    if (extent == ShownExtent::Part) {
        const QStringView beginning = beginningOfGiant(command);
        const QStringView end = endOfGiant(command);
        isSuspicious = appendCommandRows(lines, beginning, columns);
        warn(TerminalTr::tr("… %1 characters are left out here …")
                 .arg(command.size() - beginning.size() - end.size()));
        isSuspicious |= appendCommandRows(lines, end, columns);
    } else {
        isSuspicious = appendCommandRows(lines, command, columns);
    }
    if (isSuspicious) {
        warn(TerminalTr::tr("Contains characters that could mislead; they are shown as ⟨…⟩."));
    }
    if (extent == ShownExtent::Part) {
        const QString how = command.size() > mostShownUnits
            ? TerminalTr::tr("`save %1 FILE` writes all of it into a file.").arg(number)
            : TerminalTr::tr("`show %1` shows all of it, `save %1 FILE` writes it into a file.")
                  .arg(number);
        warn(TerminalTr::tr("NOT SHOWN WHOLE: request #%1 has %2 characters in %3 line(s).")
                 .arg(number)
                 .arg(command.size())
                 .arg(lineNumber)
             + u' ' + how);
    } else if (command.size() > longCommandCharacters || lineNumber > longCommandLines) {
        warn(TerminalTr::tr("Long: request #%1 has %2 characters in %3 line(s).")
                 .arg(number)
                 .arg(characterCount(command))
                 .arg(lineNumber));
    }
}

} // namespace

ShownExtent shownExtent(const ApprovalItem &item, RequestOccasion occasion)
{
    const qsizetype size = item.command.size();
    const bool isShown = occasion == RequestOccasion::Shown
        ? size <= mostShownUnits
        : size <= giantCommandUnits && lineCount(item.command) <= giantCommandLines;
    return isShown ? ShownExtent::Whole : ShownExtent::Part;
}

TerminalLines requestLines(const ApprovalItem &item, int number, RequestOccasion occasion,
                           qint64 nowMs, int columns, AskReason reason)
{
    const LineStyle style = commandRiskLevel(item.command) == CommandRisk::High ? LineStyle::Danger
                                                                                : LineStyle::Strong;
    const QString next = u"      "_s;
    TerminalLines lines;
    const QString head = headline(item, number, occasion, nowMs);
    if (occasion == RequestOccasion::Listed) {
        const QString id
            = TerminalTr::tr("id: ") + beginningOf(item.approvalId, listedIdCharacters);
        appendRows(lines, {}, next, head + u"  "_s + id + u"  "_s + agentText(item), style, columns,
                   RowBreaks::AtBlanks);
    } else {
        appendRows(lines, {}, next, head, style, columns, RowBreaks::AtBlanks);
        appendRows(lines, u"  "_s, next, agentText(item), LineStyle::Plain, columns);
        appendRows(lines, u"  "_s, next, TerminalTr::tr("id: ") + honestLine(item.approvalId).text,
                   LineStyle::Plain, columns);
    }
    appendCommand(lines, item, number, shownExtent(item, occasion), columns);
    if (reason != AskReason::Usual) {
        appendRows(lines, u"  "_s, u"  "_s, askReasonWords(reason), LineStyle::Warning, columns,
                   RowBreaks::AtBlanks);
    }
    return lines;
}

TerminalLines messageLines(const QString &message, int columns, LineStyle style)
{
    TerminalLines lines;
    appendRows(lines, {}, u"  "_s, honestLine(message).text, style, columns, RowBreaks::AtBlanks);
    return lines;
}

TerminalLines historyLines(const QList<ApprovalHistoryEntry> &entries, int columns)
{
    TerminalLines lines;
    for (const ApprovalHistoryEntry &entry : entries) {
        if (entry.state == ApprovalHistoryState::Pending) {
            continue; // nothing has become of it yet
        }
        const QString command = entry.command.isEmpty()
            ? TerminalTr::tr("(command not seen)")
            : lineBreaksAsSigns(beginningOf(entry.command, historyCommandCharacters));
        appendRows(lines, {}, u"  : "_s,
                   entry.timestampText() + u"  "_s + historyStateWord(entry.state, entry.maker)
                       + u"  "_s + command,
                   LineStyle::Plain, columns);
    }
    return lines.isEmpty()
        ? TerminalLines {{TerminalTr::tr("Nothing has happened yet."), LineStyle::Quiet}}
        : lines;
}

TerminalLines activityLines(const QList<ActivityEntry> &entries, int columns)
{
    TerminalLines lines;
    for (const ActivityEntry &entry : entries) {
        QStringList parts {entry.createdAt.toLocalTime().toString(u"MM-dd HH:mm:ss"),
                           activityActionWord(entry.action),
                           beginningOf(entry.detail, historyCommandCharacters)};
        parts.removeAll(QString());
        appendRows(lines, {}, u"  : "_s, parts.join("  "_L1), LineStyle::Plain, columns);
    }
    return lines.isEmpty()
        ? TerminalLines {{TerminalTr::tr("Nothing has happened yet."), LineStyle::Quiet}}
        : lines;
}

TerminalLines statusLines(const GatewayStatus::Lines &status, qsizetype pendingCount,
                          qsizetype notShownCount, int columns)
{
    TerminalLines lines = messageLines(
        TerminalTr::tr("Gateway: ") + status.connectionLine(), columns,
        status.connectionIndicator == IndicatorState::Red ? LineStyle::Danger : LineStyle::Plain);
    lines.append(messageLines(
        TerminalTr::tr("Gateway token: ") + tokenStateWords(status.tokenState), columns));
    if (status.remoteApprovalLocked) {
        lines.append(messageLines(TerminalTr::tr("Decisions from chats are locked: ")
                                      + status.remoteApprovalLockReason.value_or(QString()),
                                  columns, LineStyle::Warning));
    }
    lines.append(messageLines(TerminalTr::tr("Pending requests: %1").arg(pendingCount), columns));
    if (notShownCount > 0) {
        lines.append(
            messageLines(TerminalTr::tr("Not shown yet: %1 (`list` shows them)").arg(notShownCount),
                         columns, LineStyle::Warning));
    }
    return lines;
}

TerminalLines metricsLines(const ApprovalMetrics &metrics, qsizetype pendingCount)
{
    const QString latency = metrics.latencySamples == 0
        ? TerminalTr::tr("Mean time to a decision: –")
        : TerminalTr::tr("Mean time to a decision: %1 ms").arg(metrics.averageLatencyMs());
    const std::pair<QString, qint64> rows[] = {
        {TerminalTr::tr("Requests seen: %1"), metrics.requestedCount},
        {TerminalTr::tr("Resolved: %1"), metrics.resolvedCount},
        {TerminalTr::tr("Resolved elsewhere: %1"), metrics.externalResolvedCount},
        {TerminalTr::tr("Rejected as unknown: %1"), metrics.unknownApprovalCount},
        {TerminalTr::tr("Allowed once: %1"), metrics.allowOnceCount},
        {TerminalTr::tr("Allowed always: %1"), metrics.allowAlwaysCount},
        {TerminalTr::tr("Denied: %1"), metrics.denyCount},
        {latency, 0},
        {TerminalTr::tr("Pending: %1"), pendingCount},
    };
    TerminalLines lines;
    for (const auto &[text, count] : rows) {
        lines.append({text.contains(u'%') ? text.arg(count) : text, LineStyle::Plain});
    }
    return lines;
}

TerminalLines agentLines(const QStringList &agentIds, const QString &selectedAgentId, int columns)
{
    TerminalLines lines;
    const auto append = [&](const QString &id, const QString &words) {
        const bool isSelected = id == selectedAgentId;
        appendRows(lines, isSelected ? u"* "_s : u"  "_s, u"  : "_s, honestLine(id).text + words,
                   isSelected ? LineStyle::Strong : LineStyle::Plain, columns);
    };
    for (const QString &id : agentIds) {
        append(id, {});
    }
    append(everyAgent, u"  "_s + TerminalTr::tr("All agents (unrestricted)"));
    return lines;
}

TerminalLines alwaysAllowLines(const QList<AlwaysAllowEntry> &entries, int columns)
{
    TerminalLines lines;
    for (const AlwaysAllowEntry &entry : entries) {
        const QString digest = honestLine(entry.digest.left(listedDigestCharacters)).text;
        const QString command = entry.command.isEmpty() ? TerminalTr::tr("(command not known)")
                                                        : honestLine(entry.command).text;
        QString mark;
        if (entry.isSecuritySensitive) {
            mark += TerminalTr::tr("SENSITIVE") + u"  "_s;
        }
        if (entry.isAskedOnceMore()) {
            mark += TerminalTr::tr("ASKED ONCE MORE") + u"  "_s;
        }
        appendRows(lines, {}, u"  : "_s,
                   digest + u"  "_s + listWord(entry.source).leftJustified(8) + u"  "_s + mark
                       + command,
                   entry.isSecuritySensitive ? LineStyle::Warning : LineStyle::Plain, columns);
    }
    return lines.isEmpty()
        ? TerminalLines {{TerminalTr::tr("Nothing is always allowed."), LineStyle::Quiet}}
        : lines;
}

TerminalLines helpLines(int columns)
{
    const QString rows[] = {
        TerminalTr::tr("list                    every pending request"),
        TerminalTr::tr("show ID                 one request in full"),
        TerminalTr::tr("save ID FILE            write the command of one request into a file"),
        TerminalTr::tr("allow-once ID|all       let the command run this time"),
        TerminalTr::tr("allow-always ID|all     let it run, now and in future"),
        TerminalTr::tr("deny ID|all             refuse it"),
        TerminalTr::tr("undo                    take back what `allow-always all` has added last"),
        TerminalTr::tr("history                 what became of earlier requests, newest first"),
        TerminalTr::tr("activity                what was done here, newest first"),
        TerminalTr::tr("status                  the gateway connection"),
        TerminalTr::tr("metrics                 counters of this run"),
        TerminalTr::tr("agents                  whose requests can be shown; * marks whose are"),
        TerminalTr::tr(
            "agent NAME              show only this agent's requests; __all__: everybody's"),
        TerminalTr::tr("reconnect               connect to the gateway anew"),
        TerminalTr::tr(
            "reload-token            take the gateway token from the configuration again"),
        TerminalTr::tr(
            "clear-pending           forget the pending requests here, not at the gateway"),
        TerminalTr::tr("clear-history           forget the history here, not in the audit log"),
        TerminalTr::tr("export FILE             write the pending requests into a file"),
        TerminalTr::tr("report FILE             write the report of the last 7 days into a file"),
        TerminalTr::tr("diagnostics FOLDER      collect there what somebody needs who is to help"),
        TerminalTr::tr("cancel-report           end a report or a collection that is under way"),
        TerminalTr::tr("always-allow list       the commands that need no question"),
        TerminalTr::tr("always-allow reload     read the lists again, after a backup"),
        TerminalTr::tr("always-allow remove DIGEST app|brackwen|both"),
        TerminalTr::tr(
            "                        take one out, named by the beginning of its digest"),
        TerminalTr::tr("always-allow clear app|brackwen|both"),
        TerminalTr::tr("                        take all of them out"),
        TerminalTr::tr("always-allow register   add the commands listed to the platform's list"),
        TerminalTr::tr("always-allow add DIGEST"),
        TerminalTr::tr(
            "                        add one of the platform's commands to the own list"),
        TerminalTr::tr("always-allow add-all    add the commands listed to the own list"),
        TerminalTr::tr("always-allow backup FILE, always-allow restore FILE"),
        TerminalTr::tr("                        write the list into a file, take it from one"),
        TerminalTr::tr("telegram status         whether and how chats take part"),
        TerminalTr::tr("telegram reload         read its configuration and the keyring again"),
        TerminalTr::tr("telegram token set      ask for the bot token and put it into the keyring"),
        TerminalTr::tr("telegram token clear    take the bot token out of the keyring"),
        TerminalTr::tr("telegram token source [environment|keyring]"),
        TerminalTr::tr("                        where the token comes from; choose for this run"),
        TerminalTr::tr("chat                    in practice: what a person sees on the phone"),
        TerminalTr::tr("chat press N, chat say TEXT"),
        TerminalTr::tr("                        in practice: press a button there, say something"),
        TerminalTr::tr(
            "simulate                show made-up requests and a refusal by the gateway"),
        TerminalTr::tr("language eng|kor        the language of these texts"),
        TerminalTr::tr(
            "shared-polling on|off   fetch messages of a Telegram bot the platform uses too"),
        TerminalTr::tr("settings                what is on and off, and what it means"),
        TerminalTr::tr("setting NAME on|off     turn one of them on or off"),
        TerminalTr::tr("help                    these lines"),
        TerminalTr::tr("quit                    end the program (so does the end of input)"),
        TerminalTr::tr("ID is a request's number (3 or #3), its id or the beginning of its id."),
        TerminalTr::tr(
            "A line never answers a request that was shown only after the line was begun."),
        TerminalTr::tr("While a question is open, any line that is no command answers it."),
    };
    TerminalLines lines;
    for (const QString &row : rows) {
        appendRows(lines, {}, u"    "_s, row, LineStyle::Plain, columns, RowBreaks::AtBlanks);
    }
    return lines;
}

QString outcomeText(int number, ApprovalDecision decision, const DecisionOutcome &outcome)
{
    switch (outcome.kind) {
    case DecisionOutcome::Kind::Confirmed:
        switch (decision) {
        case ApprovalDecision::AllowOnce:
            return TerminalTr::tr("#%1 allowed once.").arg(number);
        case ApprovalDecision::AllowAlways:
            return TerminalTr::tr("#%1 allowed always.").arg(number);
        case ApprovalDecision::Deny:
            return TerminalTr::tr("#%1 denied.").arg(number);
        }
        break;
    case DecisionOutcome::Kind::ResolvedElsewhere:
        return TerminalTr::tr("#%1 was already resolved elsewhere.").arg(number);
    case DecisionOutcome::Kind::Expired:
        return TerminalTr::tr("#%1 had expired; nothing was sent.").arg(number);
    case DecisionOutcome::Kind::Failed:
        return TerminalTr::tr("#%1 not confirmed, it is still listed: %2")
            .arg(QString::number(number), outcome.message);
    case DecisionOutcome::Kind::IgnoredDuplicate:
        return TerminalTr::tr("#%1: a decision is already on its way; this one was ignored.")
            .arg(number);
    }
    Q_UNREACHABLE();
}

} // namespace bram
