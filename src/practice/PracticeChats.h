// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QJsonObject>
#include <QList>
#include <QString>

#include <map>
#include <optional>

namespace bram
{

/// What a person can press in a chat.
struct PracticeButton {
    QString text {};
    QString data {}; ///< what the bot is told; empty for a key that says its text in the chat

    bool operator==(const PracticeButton &) const = default;
};

/// One message of a chat, as it stands there now.
struct PracticeMessage {
    qint64 messageId = 0;
    bool isFromBot = false;
    QString text {};
    QList<QList<PracticeButton>> buttons {}; ///< rows under the message, or of keys below the chat
    bool areKeys = false; ///< `buttons` are keys below the chat; later ones replace them
    qint64 sentAtSeconds = 0; ///< since the epoch
    qint64 editedAtSeconds = 0; ///< 0: never

    bool operator==(const PracticeMessage &) const = default;
};

/// What a method of the Bot API answers.
struct BotAnswer {
    int status = 200; ///< of HTTP
    QJsonObject body {};

    static BotAnswer ok(const QJsonValue &result);
    static BotAnswer refused(int status, const QString &description);
};

/// The chats that a practice bot talks in, with what stands in them; refuses what the real service
/// refuses, in its words. State only: no network, no time.
class PracticeChats
{
public:
    /// A chat that the bot may write to. Knowing it already changes nothing.
    void open(qint64 chatId);

    // Methods of the Bot API, with their payloads.
    BotAnswer sendMessage(const QJsonObject &payload, qint64 nowSeconds);
    BotAnswer editMessageText(const QJsonObject &payload, qint64 nowSeconds);
    BotAnswer deleteMessage(const QJsonObject &payload);

    /// A person's message, which opens the chat; its id.
    qint64 say(qint64 chatId, const QString &text);
    /// Somebody deletes a message in the chat. False when it is not there.
    bool remove(qint64 chatId, qint64 messageId);

    QList<qint64> ids() const;
    /// Oldest first.
    QList<PracticeMessage> messages(qint64 chatId) const;
    const PracticeMessage *find(qint64 chatId, qint64 messageId) const;

    /// A button that can be pressed now, and the message it belongs to.
    struct Pressable {
        qint64 messageId = 0;
        PracticeButton button {};
    };
    /// In the order in which a person sees them: those under messages, then the keys below the chat.
    QList<Pressable> pressable(qint64 chatId) const;

private:
    struct Chat {
        QList<PracticeMessage> messages {};
        qint64 lastMessageId = 100;
    };

    Chat *chatOf(const QJsonObject &payload);

    std::map<qint64, Chat> m_chats;
};

/// A message of the bot's as the Bot API describes it.
QJsonObject practiceMessageObject(qint64 chatId, const PracticeMessage &message);

/// How a chat is named in a message or an update: negative ids are groups.
QJsonObject practiceChatObject(qint64 chatId);

} // namespace bram
