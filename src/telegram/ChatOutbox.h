// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "telegram/PendingMessage.h"
#include "telegram/TelegramApprovalEntry.h"

#include <QHash>
#include <QJsonObject>
#include <QList>
#include <QQueue>
#include <QString>

#include <functional>
#include <optional>

namespace bram
{

/// What a chat is told beside its status message: answers, and commands in messages of their own. Decides what
/// is sent and in which order, and sends nothing itself.
class ChatOutbox
{
public:
    /// One call of the Bot API.
    struct Call {
        QString method;
        QJsonObject payload;
        std::optional<TelegramApprovalEntry> shows {}; ///< the message is a part of its command
        bool isLastPart = false;
        bool isWhole = false; ///< with this part, all of the command has been shown
    };

    ChatOutbox(qint64 chatId, const ChatTerms &terms);

    /// A message of its own, once; dropped when too much waits already.
    void say(const QString &text);
    /// The entry's command in messages of its own, with its keys below the last. False when it is on its way
    /// already, or too much waits.
    bool show(const TelegramApprovalEntry &entry);

    bool isEmpty() const { return m_calls.isEmpty(); }
    Call takeNext() { return m_calls.dequeue(); }
    /// The call has succeeded, perhaps with a new message.
    void onSent(const Call &call, std::optional<qint64> messageId);
    /// It has to wait, and be taken again if that is worth it.
    void putBack(const Call &call);
    /// It has failed: the rest of its command does not follow.
    void onFailed(const Call &call);

    /// Drops what is left of commands for which `isOutdated` holds, and takes the buttons away below them.
    void end(const std::function<bool(const TelegramApprovalEntry &)> &isOutdated);

    /// Whether buttons below this message are for a command that it showed.
    bool hasShownWith(qint64 messageId) const { return m_shown.contains(messageId); }

private:
    /// The last message of a command.
    struct Shown {
        TelegramApprovalEntry entry;
        QString text;
    };

    qint64 m_chatId;
    ChatTerms m_terms;
    QQueue<Call> m_calls;
    QHash<qint64, Shown> m_shown; ///< by message id: those with buttons
};

/// What the Bot API needs for a message with this text, in plain and without previews of addresses in it.
QJsonObject chatMessage(qint64 chatId, const QString &text);

} // namespace bram
