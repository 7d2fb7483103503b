// SPDX-License-Identifier: Apache-2.0
#include "telegram/DecisionTexts.h"

#include "model/TextRules.h"

#include <QRegularExpression>
#include <QStringList>

#include <array>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
struct DataPrefix {
    ApprovalDecision decision;
    QLatin1StringView text;
};

constexpr std::array dataPrefixes {
    DataPrefix {ApprovalDecision::AllowOnce, "allow:"_L1},
    DataPrefix {ApprovalDecision::Deny, "deny:"_L1},
    DataPrefix {ApprovalDecision::AllowAlways, "allow-always:"_L1},
};

constexpr auto commandName = "/approve"_L1;
constexpr auto showCommandName = "/show"_L1;
constexpr auto showPrefix = "show:"_L1;
/// No message of Telegram's is longer.
constexpr qsizetype maxCommandUnits = 4096;

/// The words of a command of this name, beginning with the name; none for any other text.
QStringList wordsOfCommand(const QString &text, QLatin1StringView name)
{
    if (text.size() > maxCommandUnits) {
        return {};
    }
    static const QRegularExpression gaps(u"[ \\t\\r\\n]+"_s);
    const QStringList words = text.split(gaps, Qt::SkipEmptyParts);
    return words.value(0).toLower().section(u'@', 0, 0) == name ? words : QStringList();
}
} // namespace

QString callbackData(ApprovalDecision decision, const QString &approvalId)
{
    for (const DataPrefix &prefix : dataPrefixes) {
        if (prefix.decision == decision) {
            return prefix.text + approvalId;
        }
    }
    Q_UNREACHABLE();
}

std::optional<WrittenDecision> parseCallbackData(const QString &data)
{
    for (const DataPrefix &prefix : dataPrefixes) {
        if (data.startsWith(prefix.text)) {
            return WrittenDecision {data.sliced(prefix.text.size()), prefix.decision};
        }
    }
    return std::nullopt;
}

QString approvalCommand(const QString &approvalId, ApprovalDecision decision)
{
    return commandName + u' ' + approvalId + u' ' + rawText(decision);
}

std::optional<WrittenDecision> parseApprovalCommand(const QString &text)
{
    const QStringList words = wordsOfCommand(text, commandName);
    if (words.size() < 3) {
        return std::nullopt;
    }
    const QString approvalId = words.at(1).trimmed();
    const auto decision = approvalDecisionFromRawText(words.at(2).toLower());
    if (approvalId.isEmpty() || !decision) {
        return std::nullopt;
    }
    return WrittenDecision {approvalId, *decision};
}

QString showData(const QString &approvalId)
{
    return showPrefix + approvalId;
}

std::optional<QString> parseShowData(const QString &data)
{
    return data.startsWith(showPrefix) ? std::optional(data.sliced(showPrefix.size()))
                                       : std::nullopt;
}

QString showCommand(const QString &approvalId)
{
    return showCommandName + u' ' + approvalId;
}

std::optional<QString> parseShowCommand(const QString &text)
{
    return trimmedOrAbsent(wordsOfCommand(text, showCommandName).value(1));
}

} // namespace bram
