// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QJsonObject>
#include <QString>

#include <optional>

namespace bram
{

// What stands in the updates that Telegram delivers. They are outside data of any shape: what is absent or
// misshapen is nothing.

/// A whole number, or a text that holds one.
std::optional<qint64> parseChatId(const QJsonValue &value);

/// Of a message: at "chat" → "id".
std::optional<qint64> parseChatIdFromMessage(const QJsonObject &message);

/// Of a button press: at "message" → "chat" → "id".
std::optional<qint64> parseChatIdFromCallbackQuery(const QJsonObject &callbackQuery);

/// The text of a message that has one.
std::optional<QString> parseApprovalText(const QJsonObject &message);

/// Whether the message is somebody else's words passed on, reads differently than when it was sent, or was
/// written before and sent by a timetable.
bool isForwardedOrEdited(const QJsonObject &message);

/// Whether a person wrote the message, or pressed the button, under their own name: no bot, no channel, nobody
/// who writes as a group, and not by way of another bot.
bool isFromAPerson(const QJsonObject &messageOrQuery);

/// Whether the chat of the message is a channel: whoever reads there can press a button.
bool isInAChannel(const QJsonObject &message);

/// The user id of who sent a message or pressed a button.
std::optional<qint64> senderIdOf(const QJsonObject &messageOrQuery);

/// When the message was sent, or last edited, by Telegram's clock; seconds since the epoch. Nothing where
/// Telegram does not say, as of old messages.
std::optional<qint64> dateOf(const QJsonObject &message);

/// Who sent a message or pressed a button, by their own account: "id 77, @mina, Mina Kim"; for somebody who
/// writes as a group or channel, that one's title. Fit to be shown; empty when it is not said.
QString senderOf(const QJsonObject &messageOrQuery);

} // namespace bram
