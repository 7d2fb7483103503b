// SPDX-License-Identifier: Apache-2.0
#include "practice/PracticeChats.h"

#include <QJsonArray>

#include <algorithm>
#include <expected>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr qsizetype maxTextCharacters = 4096; // UTF-16 code units
constexpr qsizetype maxDataBytes = 64;
constexpr qsizetype maxInlineButtons = 100;

struct Keyboard {
    QList<QList<PracticeButton>> rows {};
    bool areKeys = false;
};

std::optional<qint64> wholeNumber(const QJsonValue &value)
{
    bool isNumber = false;
    const qint64 number = value.isString() ? value.toString().toLongLong(&isNumber)
                                           : value.toVariant().toLongLong(&isNumber);
    return isNumber && !value.isBool() ? std::optional(number) : std::nullopt;
}

std::expected<QList<QList<PracticeButton>>, QString> readRows(const QJsonValue &rows, bool areKeys)
{
    if (!rows.isArray()) {
        return std::unexpected(u"can't parse reply keyboard markup JSON object"_s);
    }
    QList<QList<PracticeButton>> result;
    qsizetype count = 0;
    for (const auto &row : rows.toArray()) {
        QList<PracticeButton> buttons;
        for (const auto &button : row.toArray()) {
            // A key below the chat may be given as its bare text.
            const QString text
                = areKeys && button.isString() ? button.toString() : button["text"_L1].toString();
            const QString data = areKeys ? QString() : button["callback_data"_L1].toString();
            if (text.trimmed().isEmpty()) {
                return std::unexpected(u"text buttons are unallowed in the inline keyboard"_s);
            }
            if (!areKeys && (data.isEmpty() || data.toUtf8().size() > maxDataBytes)) {
                return std::unexpected(u"BUTTON_DATA_INVALID"_s);
            }
            buttons.append({text, data});
            ++count;
        }
        if (!buttons.isEmpty()) {
            result.append(buttons);
        }
    }
    if (!areKeys && count > maxInlineButtons) {
        return std::unexpected(u"reply markup is too long"_s);
    }
    return result;
}

std::expected<Keyboard, QString> readKeyboard(const QJsonValue &markup)
{
    if (markup.isUndefined()) {
        return Keyboard {};
    }
    if (!markup.isObject()) {
        return std::unexpected(u"object expected as reply markup"_s);
    }
    const QJsonObject object = markup.toObject();
    const bool areKeys = object.contains("keyboard"_L1);
    if (!areKeys && !object.contains("inline_keyboard"_L1)) {
        return Keyboard {{}, true}; // remove_keyboard and the like
    }
    const auto rows
        = readRows(object.value(areKeys ? "keyboard"_L1 : "inline_keyboard"_L1), areKeys);
    if (!rows) {
        return std::unexpected(rows.error());
    }
    return Keyboard {*rows, areKeys};
}

/// Why the text cannot be shown; empty when it can.
QString textProblem(const QString &text)
{
    if (text.trimmed().isEmpty()) {
        return u"message text is empty"_s;
    }
    return text.size() > maxTextCharacters ? u"message is too long"_s : QString();
}

BotAnswer badRequest(const QString &what)
{
    return BotAnswer::refused(400, QString(u"Bad Request: "_s + what));
}

auto hasId(qint64 messageId)
{
    return [messageId](const PracticeMessage &message) { return message.messageId == messageId; };
}
} // namespace

BotAnswer BotAnswer::ok(const QJsonValue &result)
{
    return {.status = 200, .body = {{u"ok"_s, true}, {u"result"_s, result}}};
}

BotAnswer BotAnswer::refused(int status, const QString &description)
{
    return {.status = status,
            .body = {{u"ok"_s, false}, {u"error_code"_s, status}, {u"description"_s, description}}};
}

QJsonObject practiceMessageObject(qint64 chatId, const PracticeMessage &message)
{
    QJsonObject object {{u"message_id"_s, message.messageId},
                        {u"date"_s, message.sentAtSeconds},
                        {u"chat"_s, practiceChatObject(chatId)},
                        {u"text"_s, message.text}};
    if (message.editedAtSeconds > 0) {
        object.insert(u"edit_date"_s, message.editedAtSeconds);
    }
    return object;
}

QJsonObject practiceChatObject(qint64 chatId)
{
    return {{u"id"_s, chatId}, {u"type"_s, chatId < 0 ? u"group"_s : u"private"_s}};
}

void PracticeChats::open(qint64 chatId)
{
    m_chats.try_emplace(chatId);
}

PracticeChats::Chat *PracticeChats::chatOf(const QJsonObject &payload)
{
    const auto chatId = wholeNumber(payload.value("chat_id"_L1));
    const auto found = chatId ? m_chats.find(*chatId) : m_chats.end();
    return found == m_chats.end() ? nullptr : &found->second;
}

BotAnswer PracticeChats::sendMessage(const QJsonObject &payload, qint64 nowSeconds)
{
    Chat *chat = chatOf(payload);
    if (chat == nullptr) {
        return badRequest(u"chat not found"_s);
    }
    const QString text = payload.value("text"_L1).toString();
    if (const QString problem = textProblem(text); !problem.isEmpty()) {
        return badRequest(problem);
    }
    const auto keyboard = readKeyboard(payload.value("reply_markup"_L1));
    if (!keyboard) {
        return badRequest(keyboard.error());
    }
    const PracticeMessage message {.messageId = ++chat->lastMessageId,
                                   .isFromBot = true,
                                   .text = text,
                                   .buttons = keyboard->rows,
                                   .areKeys = keyboard->areKeys,
                                   .sentAtSeconds = nowSeconds};
    chat->messages.append(message);
    return BotAnswer::ok(practiceMessageObject(*wholeNumber(payload.value("chat_id"_L1)), message));
}

BotAnswer PracticeChats::editMessageText(const QJsonObject &payload, qint64 nowSeconds)
{
    Chat *chat = chatOf(payload);
    if (chat == nullptr) {
        return badRequest(u"chat not found"_s);
    }
    const auto messageId = wholeNumber(payload.value("message_id"_L1));
    const auto message = std::ranges::find_if(chat->messages, hasId(messageId.value_or(0)));
    if (message == chat->messages.end()) {
        return badRequest(u"message to edit not found"_s);
    }
    const QString text = payload.value("text"_L1).toString();
    if (const QString problem = textProblem(text); !problem.isEmpty()) {
        return badRequest(problem);
    }
    const auto keyboard = readKeyboard(payload.value("reply_markup"_L1));
    if (!keyboard) {
        return badRequest(keyboard.error());
    }
    if (keyboard->areKeys) {
        return badRequest(u"inline keyboard expected"_s);
    }
    if (!message->isFromBot || message->areKeys) {
        return badRequest(u"message can't be edited"_s);
    }
    if (message->text == text && message->buttons == keyboard->rows) {
        return badRequest(u"message is not modified: specified new message content and reply "
                          "markup are exactly the same as a current content and reply markup of "
                          "the message"_s);
    }
    message->text = text;
    message->buttons = keyboard->rows;
    message->editedAtSeconds = nowSeconds;
    return BotAnswer::ok(
        practiceMessageObject(*wholeNumber(payload.value("chat_id"_L1)), *message));
}

BotAnswer PracticeChats::deleteMessage(const QJsonObject &payload)
{
    Chat *chat = chatOf(payload);
    if (chat == nullptr) {
        return badRequest(u"chat not found"_s);
    }
    const auto messageId = wholeNumber(payload.value("message_id"_L1));
    if (chat->messages.removeIf(hasId(messageId.value_or(0))) == 0) {
        return badRequest(u"message to delete not found"_s);
    }
    return BotAnswer::ok(true);
}

qint64 PracticeChats::say(qint64 chatId, const QString &text)
{
    Chat &chat = m_chats[chatId];
    chat.messages.append({.messageId = ++chat.lastMessageId, .text = text});
    return chat.lastMessageId;
}

bool PracticeChats::remove(qint64 chatId, qint64 messageId)
{
    const auto chat = m_chats.find(chatId);
    return chat != m_chats.end() && chat->second.messages.removeIf(hasId(messageId)) > 0;
}

QList<qint64> PracticeChats::ids() const
{
    QList<qint64> result;
    for (const auto &[chatId, chat] : m_chats) {
        result.append(chatId);
    }
    return result;
}

QList<PracticeMessage> PracticeChats::messages(qint64 chatId) const
{
    const auto chat = m_chats.find(chatId);
    return chat == m_chats.end() ? QList<PracticeMessage>() : chat->second.messages;
}

const PracticeMessage *PracticeChats::find(qint64 chatId, qint64 messageId) const
{
    const auto chat = m_chats.find(chatId);
    if (chat == m_chats.end()) {
        return nullptr;
    }
    const auto message = std::ranges::find_if(chat->second.messages, hasId(messageId));
    return message == chat->second.messages.end() ? nullptr : &*message;
}

QList<PracticeChats::Pressable> PracticeChats::pressable(qint64 chatId) const
{
    QList<Pressable> result;
    QList<Pressable> keys;
    for (const PracticeMessage &message : messages(chatId)) {
        if (message.areKeys) {
            keys.clear();
        }
        for (const auto &row : message.buttons) {
            for (const PracticeButton &button : row) {
                (message.areKeys ? keys : result).append({message.messageId, button});
            }
        }
    }
    return result + keys;
}

} // namespace bram
