// SPDX-License-Identifier: Apache-2.0
#include "telegram/ChatRules.h"

#include "config/ValueParsers.h"

#include <QJsonArray>
#include <QJsonObject>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
std::optional<QSet<qint64>> parseSenders(const QStringList &values)
{
    QSet<qint64> senders;
    for (const QString &value : values) {
        const auto sender = parseInt64(value);
        if (!sender) {
            return std::nullopt;
        }
        senders.insert(*sender);
    }
    return senders;
}

std::optional<ChatRight> parseRight(const QStringList &values)
{
    const QString text = values.size() == 1 ? values.constFirst().trimmed().toLower() : QString();
    if (text == "deny"_L1) {
        return ChatRight::Deny;
    }
    if (text == "once"_L1) {
        return ChatRight::AllowOnce;
    }
    return text == "always"_L1 ? std::optional(ChatRight::AllowAlways) : std::nullopt;
}

/// `parse` reads the values of a rule, `set` puts them into a chat's rules; `least` is what an unreadable one
/// leaves.
template<typename Value, typename Parse, typename Set>
bool apply(const WrittenChatRules &written, const QList<qint64> &chats, const Value &least,
           Parse parse, Set set)
{
    bool isClear = written.isReadable;
    bool isChatUnknown = !written.isReadable;
    QSet<qint64> ruled;
    for (const WrittenChatRules::Rule &rule : written.rules) {
        const auto chat = parseInt64(rule.chat);
        if (!chat) {
            isClear = false;
            isChatUnknown = true;
            continue;
        }
        const auto value = parse(rule.values);
        const bool isSecond = ruled.contains(*chat);
        isClear = isClear && value && !isSecond;
        ruled.insert(*chat);
        if (chats.contains(*chat)) {
            set(*chat, value && !isSecond ? *value : least);
        }
    }
    for (const qint64 chat : chats) {
        if (isChatUnknown && !ruled.contains(chat)) {
            set(chat, least);
        }
    }
    return isClear;
}
} // namespace

bool covers(ChatRight right, ApprovalDecision decision)
{
    switch (decision) {
    case ApprovalDecision::Deny:
        return true;
    case ApprovalDecision::AllowOnce:
        return right >= ChatRight::AllowOnce;
    case ApprovalDecision::AllowAlways:
        return right == ChatRight::AllowAlways;
    }
    Q_UNREACHABLE();
}

WrittenChatRules chatRulesOfText(const QString &name, const QString &text)
{
    WrittenChatRules written {name};
    for (const QString &rule : text.split(u';')) {
        if (!rule.trimmed().isEmpty()) {
            const QString values = rule.section(u':', 1);
            written.rules.append({rule.section(u':', 0, 0), values.split(u',')});
        }
    }
    written.isReadable = !written.rules.isEmpty(); // ";" was meant for something
    return written;
}

WrittenChatRules chatRulesOfJson(const QString &name, const QJsonValue &value)
{
    WrittenChatRules written {name};
    written.isReadable = value.isObject();
    const QJsonObject object = value.toObject();
    for (auto rule = object.begin(); rule != object.end(); ++rule) {
        QStringList values;
        const QJsonValue one = rule.value();
        for (const QJsonValue &each : one.isArray() ? one.toArray() : QJsonArray {one}) {
            const auto number = parseInt64(each);
            values.append(number ? QString::number(*number) : each.toString());
        }
        written.rules.append({rule.key(), values});
    }
    return written;
}

bool applySenders(const WrittenChatRules &written, const QList<qint64> &chats,
                  QMap<qint64, ChatRules> &rules)
{
    return apply(written, chats, QSet<qint64>(), parseSenders,
                 [&](qint64 chat, const QSet<qint64> &senders) { rules[chat].senders = senders; });
}

bool applyRights(const WrittenChatRules &written, const QList<qint64> &chats,
                 QMap<qint64, ChatRules> &rules)
{
    return apply(written, chats, ChatRight::Deny, parseRight,
                 [&](qint64 chat, ChatRight right) { rules[chat].right = right; });
}

} // namespace bram
