// SPDX-License-Identifier: Apache-2.0
#include "telegram/TelegramUpdates.h"

#include "config/ValueParsers.h"
#include "model/HonestDisplay.h"
#include "model/TextRules.h"

#include <QStringList>

#include <algorithm>
#include <array>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr qsizetype maxNameCharacters = 64;

QString honestName(const QString &name)
{
    return honestLine(firstCharacters(name.trimmed(), maxNameCharacters)).text;
}
} // namespace

std::optional<qint64> parseChatId(const QJsonValue &value)
{
    return parseInt64(value);
}

std::optional<qint64> parseChatIdFromMessage(const QJsonObject &message)
{
    return parseChatId(message.value("chat"_L1).toObject().value("id"_L1));
}

std::optional<qint64> parseChatIdFromCallbackQuery(const QJsonObject &callbackQuery)
{
    return parseChatIdFromMessage(callbackQuery.value("message"_L1).toObject());
}

std::optional<QString> parseApprovalText(const QJsonObject &message)
{
    const QJsonValue text = message.value("text"_L1);
    return text.isString() ? std::optional(text.toString()) : std::nullopt;
}

bool isForwardedOrEdited(const QJsonObject &message)
{
    constexpr std::array signs {
        "forward_origin"_L1,      "forward_from"_L1,    "forward_from_chat"_L1,
        "forward_sender_name"_L1, "forward_date"_L1,    "is_automatic_forward"_L1,
        "edit_date"_L1,           "is_from_offline"_L1,
    };
    return std::ranges::any_of(signs, [&](auto key) { return message.contains(key); });
}

bool isFromAPerson(const QJsonObject &messageOrQuery)
{
    const QJsonObject sender = messageOrQuery.value("from"_L1).toObject();
    return senderIdOf(messageOrQuery) && !sender.value("is_bot"_L1).toBool()
        && !messageOrQuery.contains("via_bot"_L1) && !messageOrQuery.contains("sender_chat"_L1)
        && !messageOrQuery.contains("sender_business_bot"_L1) && !isInAChannel(messageOrQuery);
}

bool isInAChannel(const QJsonObject &message)
{
    return message.value("chat"_L1).toObject().value("type"_L1).toString() == "channel"_L1;
}

std::optional<qint64> senderIdOf(const QJsonObject &messageOrQuery)
{
    return parseInt64(messageOrQuery.value("from"_L1).toObject().value("id"_L1));
}

std::optional<qint64> dateOf(const QJsonObject &message)
{
    const qint64 seconds = std::max(parseInt64(message.value("date"_L1)).value_or(0),
                                    parseInt64(message.value("edit_date"_L1)).value_or(0));
    return seconds > 0 ? std::optional(seconds) : std::nullopt;
}

QString senderOf(const QJsonObject &messageOrQuery)
{
    const QJsonObject chat = messageOrQuery.value("sender_chat"_L1).toObject();
    const QJsonObject sender = chat.isEmpty() ? messageOrQuery.value("from"_L1).toObject() : chat;
    const QString name = honestName(chat.isEmpty() ? sender.value("first_name"_L1).toString() + u' '
                                            + sender.value("last_name"_L1).toString()
                                                   : chat.value("title"_L1).toString());
    // The name comes last: whatever its owner makes of it, it cannot pass for somebody else's id.
    QStringList parts;
    if (const auto id = parseInt64(sender.value("id"_L1))) {
        parts.append(u"id "_s + QString::number(*id));
    }
    if (const auto userName = trimmedOrAbsent(sender.value("username"_L1).toString())) {
        parts.append(u'@' + honestName(*userName));
    }
    if (!name.isEmpty()) {
        parts.append(name);
    }
    return parts.join(u", "_s);
}

} // namespace bram
