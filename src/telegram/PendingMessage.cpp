// SPDX-License-Identifier: Apache-2.0
#include "telegram/PendingMessage.h"

#include "model/ApprovalDecision.h"
#include "model/HonestDisplay.h"
#include "model/TextRules.h"
#include "telegram/DecisionTexts.h"

#include <QJsonArray>
#include <QStringList>

#include <algorithm>
#include <array>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr qsizetype maxButtons = 8;
constexpr qsizetype maxTextUnits = 4095;
constexpr qsizetype maxCallbackDataBytes = 64;
constexpr qsizetype shortIdCharacters = 8;
constexpr qsizetype longestShortIdCharacters = 24;
constexpr qsizetype previewCharacters = 60;
constexpr qsizetype agentCharacters = 60;
// Marks make a text longer; of these lengths eight entries and all around them fit into a message.
constexpr qsizetype maxPreviewUnits = 260;
constexpr qsizetype maxAgentUnits = 100;
constexpr qsizetype maxIdUnits = 60;
constexpr qsizetype maxTypedIdUnits = 200;

/// `source` on one line with its misleading characters marked; cut after so many characters, or before a
/// mark or a character that would make it longer than `maxUnits`.
QString honestCut(const QString &source, qsizetype maxCharacters, qsizetype maxUnits)
{
    const QString start = firstCharacters(source, maxCharacters);
    const bool isCut = start.size() < source.size();
    // With the ellipsis already there, a blank before it does not count as one at the end.
    const QString shown = honestLine(isCut ? start + u'…' : start).text;
    if (shown.size() <= maxUnits) {
        return shown;
    }
    qsizetype end = maxUnits - 1;
    while (end > 0 && shown.at(end).isLowSurrogate()) {
        --end;
    }
    // A ⟨ in an honest text always opens a mark.
    const qsizetype lastMark = shown.lastIndexOf(u'⟨', end - 1);
    if (lastMark >= 0 && shown.indexOf(u'⟩', lastMark) >= end) {
        end = lastMark;
    }
    return shown.first(end) + u'…';
}

QString preview(const QString &command)
{
    QString line = command;
    line.replace("\r\n"_L1, " "_L1);
    line.replace(u'\n', u' ');
    line.replace(u'\r', u' ');
    return honestCut(line, previewCharacters, maxPreviewUnits);
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
QString insteadOfButtons(const TelegramApprovalEntry &entry)
{
    return canBeTyped(entry.approvalId)
        ? u" (no buttons, use /approve "_s + entry.approvalId + u" allow-once|allow-always|deny)"_s
        : u" (no buttons, decide it in the application)"_s;
}

QString lineOf(const QList<TelegramApprovalEntry> &listed, qsizetype index, TelegramMode mode)
{
    const TelegramApprovalEntry &entry = listed.at(index);
    QString line = QString::number(index + 1) + u". "_s;
    if (entry.isHighRisk) {
        line += u"[HIGH] "_s;
    }
    if (entry.agentId) {
        line += u'[' + honestCut(*entry.agentId, agentCharacters, maxAgentUnits) + u"] "_s;
    }
    line += shortId(listed, index) + u' ' + preview(entry.command);
    if (mode == TelegramMode::Polling && !hasButtons(entry)) {
        line += insteadOfButtons(entry);
    }
    return line;
}

QString footerOf(TelegramMode mode)
{
    switch (mode) {
    case TelegramMode::Polling:
        return {};
    case TelegramMode::PublishOnlyCommandPolling:
        return u"\n\nUse /approve <id> allow-once|allow-always|deny"_s;
    case TelegramMode::PublishOnlySafe:
        return u"\n\nPublish-only safe mode: approvals from command messages are handled by "
               "Brackwen bot."_s;
    }
    Q_UNREACHABLE();
}

/// The lines of the entries that are listed one by one.
QStringList entryLines(const QList<TelegramApprovalEntry> &entries, TelegramMode mode)
{
    constexpr qsizetype roomForHeaderAndRest = 100;
    const auto candidates = entries.first(std::min(entries.size(), maxButtons));
    QStringList lines;
    qsizetype units = roomForHeaderAndRest + footerOf(mode).size();
    for (qsizetype i = 0; i < candidates.size(); ++i) {
        const QString line = lineOf(candidates, i, mode);
        units += line.size() + 1;
        if (units > maxTextUnits) {
            break;
        }
        lines.append(line);
    }
    return lines;
}
} // namespace

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

qsizetype listedCount(const QList<TelegramApprovalEntry> &entries, TelegramMode mode)
{
    return entryLines(entries, mode).size();
}

QString renderPendingText(const QList<TelegramApprovalEntry> &entries, TelegramMode mode)
{
    if (entries.isEmpty()) {
        return nothingPendingText;
    }
    QStringList lines {u"BRAM pending approvals (%1)"_s.arg(entries.size())};
    lines += entryLines(entries, mode);
    const qsizetype left = entries.size() - (lines.size() - 1);
    if (left > 0) {
        lines.append(u"... and %1 more"_s.arg(left));
    }
    return lines.join(u'\n') + footerOf(mode);
}

std::optional<QJsonObject> renderCallbackKeyboard(const QList<TelegramApprovalEntry> &entries,
                                                  TelegramMode mode)
{
    if (mode != TelegramMode::Polling) {
        return std::nullopt;
    }
    struct Button {
        QString text;
        ApprovalDecision decision;
    };
    const std::array<Button, 3> buttons {{{u"승인 "_s, ApprovalDecision::AllowOnce},
                                          {u"거부 "_s, ApprovalDecision::Deny},
                                          {u"영구 "_s, ApprovalDecision::AllowAlways}}};
    const auto candidates = entries.first(std::min(entries.size(), maxButtons));
    const qsizetype count = listedCount(entries, mode);
    QJsonArray rows;
    for (qsizetype i = 0; i < count; ++i) {
        const TelegramApprovalEntry &entry = entries.at(i);
        if (!hasButtons(entry)) {
            continue;
        }
        QJsonArray row;
        for (const Button &button : buttons) {
            row.append(QJsonObject {
                {u"text"_s, QString(button.text + shortId(candidates, i))},
                {u"callback_data"_s, callbackData(button.decision, entry.approvalId)}});
        }
        rows.append(row);
    }
    return rows.isEmpty() ? std::nullopt
                          : std::optional(QJsonObject {{u"inline_keyboard"_s, rows}});
}

std::optional<QJsonObject> renderCommandKeyboard(const QList<TelegramApprovalEntry> &entries,
                                                 TelegramMode mode)
{
    if (mode == TelegramMode::Polling) {
        return std::nullopt;
    }
    QJsonArray rows;
    for (const TelegramApprovalEntry &entry : entries) {
        if (!canBeTyped(entry.approvalId)) {
            continue;
        }
        const auto key = [&entry](ApprovalDecision decision) {
            return QJsonObject {{u"text"_s, approvalCommand(entry.approvalId, decision)}};
        };
        rows.append(QJsonArray {key(ApprovalDecision::AllowOnce), key(ApprovalDecision::Deny)});
        rows.append(QJsonArray {key(ApprovalDecision::AllowAlways)});
    }
    if (rows.isEmpty()) {
        return std::nullopt;
    }
    return QJsonObject {{u"keyboard"_s, rows},
                        {u"resize_keyboard"_s, true},
                        {u"one_time_keyboard"_s, true},
                        {u"selective"_s, true},
                        {u"input_field_placeholder"_s, u"Tap command to send approval"_s}};
}

} // namespace bram
