// SPDX-License-Identifier: Apache-2.0
#include "telegram/PendingMessage.h"

#include "model/ApprovalDecision.h"
#include "model/HonestDisplay.h"
#include "model/TextRules.h"
#include "telegram/ChatText.h"
#include "telegram/DecisionTexts.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QJsonArray>
#include <QStringList>

#include <algorithm>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
class ChatTr
{
    Q_DECLARE_TR_FUNCTIONS(TelegramChat)
};

using Decisions = QList<ApprovalDecision>;

constexpr qsizetype maxButtons = 8;
constexpr qsizetype maxTextUnits = 4095;
constexpr qsizetype maxCallbackDataBytes = 64;
constexpr qsizetype shortIdCharacters = 8;
constexpr qsizetype longestShortIdCharacters = 24;
constexpr qsizetype agentCharacters = 60;
// Marks make a text longer; of these lengths eight entries and all around them fit into a message.
constexpr qsizetype maxAgentUnits = 100;
constexpr qsizetype maxIdUnits = 60;
constexpr qsizetype maxTypedIdUnits = 200;

/// What the chat is offered to decide about the entry, in the order of the buttons.
Decisions offered(const TelegramApprovalEntry &entry, const ChatTerms &terms)
{
    const bool mayAllow = terms.offersPartlyShown || isShownWholeInList(entry.command, terms.mask);
    Decisions decisions {ApprovalDecision::AllowOnce, ApprovalDecision::Deny,
                         ApprovalDecision::AllowAlways};
    decisions.removeIf([&](ApprovalDecision decision) {
        return !covers(terms.right, decision) || (decision != ApprovalDecision::Deny && !mayAllow);
    });
    return decisions;
}

/// Whether the list offers to send the entry's command in messages of its own.
bool offersToShow(const TelegramApprovalEntry &entry, const ChatTerms &terms)
{
    return terms.mode != TelegramMode::PublishOnlySafe && !terms.offersPartlyShown
        && !isShownWholeInList(entry.command, terms.mask);
}

/// "allow-once|allow-always|deny", or what is left of it.
QString commandWords(const Decisions &decisions)
{
    QStringList words;
    for (const auto decision :
         {ApprovalDecision::AllowOnce, ApprovalDecision::AllowAlways, ApprovalDecision::Deny}) {
        if (decisions.contains(decision)) {
            words.append(rawText(decision));
        }
    }
    return words.join(u'|');
}

/// Enough of the entry's id to tell it from the others that are listed: its first 8 characters, or some
/// more; where that is not enough, its number in the list.
QString shortId(const QList<TelegramApprovalEntry> &listed, qsizetype index)
{
    const QString &id = listed.at(index).approvalId;
    const auto isUnique = [&](qsizetype characters) {
        const QString start = firstCharacters(id, characters);
        return std::ranges::none_of(listed, [&](const TelegramApprovalEntry &other) {
            return &other != &listed.at(index)
                && firstCharacters(other.approvalId, characters) == start;
        });
    };
    for (qsizetype n = shortIdCharacters; n <= longestShortIdCharacters; ++n) {
        if (isUnique(n)) {
            // Without an ellipsis: what is cut here is always cut.
            return honestCut(firstCharacters(id, n), n, maxIdUnits);
        }
    }
    return honestCut(firstCharacters(id, shortIdCharacters), shortIdCharacters, maxIdUnits) + u'#'
        + QString::number(index + 1);
}

/// Until when the entry can be decided. With the time zone: the reader's may be another.
QString untilText(const TelegramApprovalEntry &entry)
{
    const auto until = QDateTime::fromMSecsSinceEpoch(entry.expiresAtMs);
    return u"until "_s
        + until.toString(until.date() == QDate::currentDate() ? u"HH:mm:ss t"_s
                                                              : u"MM-dd HH:mm t"_s);
}

/// "[HIGH] [main] [until 14:05:00 UTC] ", as far as there is something to say.
QString tagsOf(const TelegramApprovalEntry &entry)
{
    QStringList tags;
    if (entry.isHighRisk) {
        tags.append(u"HIGH"_s);
    }
    if (entry.agentId) {
        tags.append(honestCut(*entry.agentId, agentCharacters, maxAgentUnits));
    }
    if (entry.expiresAtMs >= 1) {
        tags.append(untilText(entry));
    }
    return tags.isEmpty() ? QString() : QString(u'[' + tags.join(u"] ["_s) + u"] "_s);
}

bool hasButtons(const TelegramApprovalEntry &entry)
{
    return entry.approvalId.size() <= maxCallbackDataBytes
        && callbackData(ApprovalDecision::AllowAlways, entry.approvalId).toUtf8().size()
        <= maxCallbackDataBytes;
}

/// Whether the id, typed in a command, arrives as it is and as one word.
bool canBeTyped(const QString &id)
{
    return !id.isEmpty() && id.size() <= maxTypedIdUnits && !id.contains(u' ')
        && !honestLine(id).marked;
}

/// What the line of an entry without buttons says in their place.
QString insteadOfButtons(const TelegramApprovalEntry &entry, const ChatTerms &terms)
{
    if (!canBeTyped(entry.approvalId)) {
        return u" (no buttons, decide it in the application)"_s;
    }
    const QString show = offersToShow(entry, terms)
        ? showCommand(firstCharacters(entry.approvalId, longestShortIdCharacters)) + u" or "_s
        : QString();
    return QString(
        u" (no buttons, use "_s + show
        + u"/approve %1 %2)"_s.arg(entry.approvalId, commandWords(offered(entry, terms))));
}

QString lineOf(const QList<TelegramApprovalEntry> &listed, qsizetype index, const ChatTerms &terms)
{
    const TelegramApprovalEntry &entry = listed.at(index);
    QString line = QString::number(index + 1) + u". "_s + tagsOf(entry) + shortId(listed, index)
        + u' ' + commandLineForChat(entry.command, terms.mask);
    if (terms.mode == TelegramMode::Polling && !hasButtons(entry)) {
        line += insteadOfButtons(entry, terms);
    }
    return line;
}

QString commandFooter(const QList<TelegramApprovalEntry> &listed, const ChatTerms &terms)
{
    Decisions decisions;
    bool offersShow = false;
    for (const TelegramApprovalEntry &entry : listed) {
        decisions += offered(entry, terms);
        offersShow = offersShow || offersToShow(entry, terms);
    }
    QString footer = u"\n\nUse /approve <id> "_s + commandWords(decisions);
    if (offersShow) {
        footer += u"\nUse /show <id> where a command is not shown whole"_s;
    }
    return footer;
}

QString footerOf(const QList<TelegramApprovalEntry> &listed, const ChatTerms &terms)
{
    if (terms.mode == TelegramMode::PublishOnlySafe) {
        return u"\n\nPublish-only safe mode: approvals from command messages are handled by "
               "Brackwen bot."_s;
    }
    const QString footer
        = terms.mode == TelegramMode::Polling ? QString() : commandFooter(listed, terms);
    const QString toAll
        = u"\n\n"_s + ChatTr::tr("Everybody in this group may decide about these requests.");
    return terms.isOpenToAll ? footer + toAll : footer;
}

/// The lines of the entries that are listed one by one.
QStringList entryLines(const QList<TelegramApprovalEntry> &entries, const ChatTerms &terms)
{
    constexpr qsizetype roomForAllElse = 450;
    const auto candidates = entries.first(std::min(entries.size(), maxButtons));
    QStringList lines;
    qsizetype units = roomForAllElse;
    for (qsizetype i = 0; i < candidates.size(); ++i) {
        const QString line = lineOf(candidates, i, terms);
        units += line.size() + 1;
        if (units > maxTextUnits) {
            break;
        }
        lines.append(line);
    }
    return lines;
}

QString buttonWord(ApprovalDecision decision)
{
    switch (decision) {
    case ApprovalDecision::AllowOnce:
        return u"승인 "_s;
    case ApprovalDecision::Deny:
        return u"거부 "_s;
    case ApprovalDecision::AllowAlways:
        return u"영구 "_s;
    }
    Q_UNREACHABLE();
}

QJsonArray buttonRow(const TelegramApprovalEntry &entry, const QString &shortened,
                     const Decisions &decisions)
{
    QJsonArray row;
    for (const ApprovalDecision decision : decisions) {
        row.append(QJsonObject {{u"text"_s, QString(buttonWord(decision) + shortened)},
                                {u"callback_data"_s, callbackData(decision, entry.approvalId)}});
    }
    return row;
}

std::optional<QJsonObject> inlineKeyboard(const QJsonArray &rows)
{
    return rows.isEmpty() ? std::nullopt
                          : std::optional(QJsonObject {{u"inline_keyboard"_s, rows}});
}

/// The rows of keys for one entry: what is decided often first, the lasting decision alone.
void addKeys(QJsonArray &rows, const TelegramApprovalEntry &entry, const Decisions &decisions,
             bool offersShow)
{
    if (!canBeTyped(entry.approvalId)) {
        return;
    }
    QJsonArray first;
    if (offersShow) {
        first.append(QJsonObject {{u"text"_s, showCommand(entry.approvalId)}});
    }
    QJsonArray last;
    for (const ApprovalDecision decision : decisions) {
        (decision == ApprovalDecision::AllowAlways ? last : first)
            .append(QJsonObject {{u"text"_s, approvalCommand(entry.approvalId, decision)}});
    }
    rows.append(first);
    if (!last.isEmpty()) {
        rows.append(last);
    }
}

std::optional<QJsonObject> commandKeyboard(const QJsonArray &rows)
{
    if (rows.isEmpty()) {
        return std::nullopt;
    }
    return QJsonObject {{u"keyboard"_s, rows},
                        {u"resize_keyboard"_s, true},
                        {u"one_time_keyboard"_s, true},
                        {u"selective"_s, true},
                        {u"input_field_placeholder"_s, u"Tap command to send approval"_s}};
}
} // namespace

ChatTerms termsOf(const TelegramBotConfig &config, qint64 chatId, const TokenMask *mask)
{
    return {.mode = config.mode(),
            .right = config.rulesOf(chatId).right,
            .isOpenToAll = config.isOpenToAll(chatId),
            .offersPartlyShown = config.offersPartlyShown,
            .mask = mask};
}

QList<TelegramApprovalEntry> entriesForChat(const TelegramBotConfig &config, qint64 chatId,
                                            const QList<TelegramApprovalEntry> &entries)
{
    const QSet<QString> agents = config.agentsOf(chatId);
    if (agents.isEmpty()) {
        return entries;
    }
    QList<TelegramApprovalEntry> own;
    std::ranges::copy_if(entries, std::back_inserter(own), [&](const auto &entry) {
        return !entry.agentId || agents.contains(*entry.agentId);
    });
    return own;
}

qsizetype listedCount(const QList<TelegramApprovalEntry> &entries, const ChatTerms &terms)
{
    return entryLines(entries, terms).size();
}

QString renderPendingText(const QList<TelegramApprovalEntry> &entries, const ChatTerms &terms)
{
    if (entries.isEmpty()) {
        return nothingPendingText;
    }
    QStringList lines {u"BRAM pending approvals (%1)"_s.arg(entries.size())};
    lines += entryLines(entries, terms);
    const qsizetype listed = lines.size() - 1;
    if (listed < entries.size()) {
        lines.append(u"... and %1 more"_s.arg(entries.size() - listed));
    }
    return lines.join(u'\n') + footerOf(entries.first(listed), terms);
}

std::optional<QJsonObject> renderCallbackKeyboard(const QList<TelegramApprovalEntry> &entries,
                                                  const ChatTerms &terms)
{
    if (terms.mode != TelegramMode::Polling) {
        return std::nullopt;
    }
    const auto candidates = entries.first(std::min(entries.size(), maxButtons));
    const qsizetype count = listedCount(entries, terms);
    QJsonArray rows;
    for (qsizetype i = 0; i < count; ++i) {
        const TelegramApprovalEntry &entry = entries.at(i);
        if (!hasButtons(entry)) {
            continue;
        }
        const QString shortened = shortId(candidates, i);
        QJsonArray row = buttonRow(entry, shortened, offered(entry, terms));
        if (offersToShow(entry, terms)) {
            row.append(QJsonObject {{u"text"_s, ChatTr::tr("Show %1").arg(shortened)},
                                    {u"callback_data"_s, showData(entry.approvalId)}});
        }
        rows.append(row);
    }
    return inlineKeyboard(rows);
}

std::optional<QJsonObject> renderCommandKeyboard(const QList<TelegramApprovalEntry> &entries,
                                                 const ChatTerms &terms)
{
    if (terms.mode == TelegramMode::Polling) {
        return std::nullopt;
    }
    QJsonArray rows;
    for (const TelegramApprovalEntry &entry : entries) {
        addKeys(rows, entry, offered(entry, terms), offersToShow(entry, terms));
    }
    return commandKeyboard(rows);
}

std::optional<QJsonObject> renderDecisionKeys(const TelegramApprovalEntry &entry, bool isShownWhole,
                                              const ChatTerms &terms)
{
    ChatTerms here = terms;
    here.offersPartlyShown = terms.offersPartlyShown || isShownWhole;
    const Decisions decisions
        = here.offersPartlyShown ? offered(entry, here) : Decisions {ApprovalDecision::Deny};
    QJsonArray rows;
    if (terms.mode == TelegramMode::Polling) {
        if (hasButtons(entry)) {
            rows.append(buttonRow(entry, shortId({entry}, 0), decisions));
        }
        return inlineKeyboard(rows);
    }
    addKeys(rows, entry, decisions, false);
    return commandKeyboard(rows);
}

} // namespace bram
