// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalDecision.h"

#include <QJsonValue>
#include <QList>
#include <QMap>
#include <QSet>
#include <QString>
#include <QStringList>

#include <optional>

namespace bram
{

/// What may be decided in a chat; each includes those before it.
enum class ChatRight {
    Deny,
    AllowOnce,
    AllowAlways,
};

bool covers(ChatRight right, ApprovalDecision decision);

/// Who may decide in one chat, and what.
struct ChatRules {
    /// User ids. Absent: everybody in the chat; empty: nobody.
    std::optional<QSet<qint64>> senders {};
    ChatRight right = ChatRight::AllowAlways;

    bool operator==(const ChatRules &) const = default;
};

/// Rules for chats as somebody wrote them.
struct WrittenChatRules {
    struct Rule {
        QString chat;
        QStringList values;

        bool operator==(const Rule &) const = default;
    };

    QString name; ///< where they stand, for the one who has to mend them
    QList<Rule> rules {};
    bool isReadable = true; ///< false: it is not even a set of rules

    bool operator==(const WrittenChatRules &) const = default;
};

/// Out of "501:77,78;-10042:77".
WrittenChatRules chatRulesOfText(const QString &name, const QString &text);
/// Out of {"501": [77, "78"], "-10042": 77}.
WrittenChatRules chatRulesOfJson(const QString &name, const QJsonValue &value);

// What cannot be read takes rights away, it never gives any: from the chat it is written for, or, when that is
// what cannot be read, from every chat without a rule of its own. Two rules for one chat cannot be read either.
// False when something could not be read.

/// Who may decide: user ids for each chat.
bool applySenders(const WrittenChatRules &written, const QList<qint64> &chats,
                  QMap<qint64, ChatRules> &rules);
/// What may be decided: "deny", "once" or "always" for each chat.
bool applyRights(const WrittenChatRules &written, const QList<qint64> &chats,
                 QMap<qint64, ChatRules> &rules);

} // namespace bram
