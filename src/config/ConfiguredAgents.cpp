// SPDX-License-Identifier: Apache-2.0
#include "config/ConfiguredAgents.h"

#include "config/ValueParsers.h"
#include "model/TextRules.h"

#include <QJsonArray>
#include <QSet>

#include <algorithm>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
std::optional<QString> agentIdFrom(const QString &text)
{
    const auto id = trimmedOrAbsent(text);
    return id == everyAgent ? std::nullopt : id;
}

/// The chats in which approvals are handled.
QSet<qint64> approvalChats(const QJsonObject &config)
{
    QSet<qint64> chats;
    const auto add = [&chats](const QJsonValue &value) {
        if (const auto chat = parseInt64(value)) {
            chats.insert(*chat);
        }
    };
    const QJsonObject telegram
        = config.value("channels"_L1).toObject().value("telegram"_L1).toObject();
    add(telegram.value("approvalsChatId"_L1));
    for (const QJsonValue &value : telegram.value("allowFrom"_L1).toArray()) {
        add(value);
    }
    return chats;
}

bool bindsOneOf(const QSet<qint64> &chats, const QJsonObject &match)
{
    const QJsonObject peer = match.value("peer"_L1).toObject();
    const auto chat = parseInt64(peer.value("id"_L1));
    return match.value("channel"_L1).toString() == "telegram"_L1
        && peer.value("kind"_L1).toString() == "dm"_L1 && chat && chats.contains(*chat);
}
} // namespace

QStringList loadAvailableAgentIdsFromBrackwenConfig(const QList<BrackwenConfig::File> &files)
{
    QSet<QString> ids;
    const auto add = [&ids](const QString &text) {
        if (const auto id = agentIdFrom(text)) {
            ids.insert(*id);
        }
    };
    for (const auto &file : files) {
        const QJsonObject agents = file.content.value("agents"_L1).toObject();
        for (const QJsonValue &agent : agents.value("list"_L1).toArray()) {
            add(agent.toObject().value("id"_L1).toString());
        }
        for (const QString &key : agents.keys()) {
            if (key != "defaults"_L1 && key != "list"_L1) {
                add(key);
            }
        }
    }
    QStringList sorted(ids.cbegin(), ids.cend());
    std::ranges::sort(sorted);
    return sorted;
}

std::optional<QString> loadPairedAgentIdFromBrackwenConfig(const QList<BrackwenConfig::File> &files)
{
    QSet<qint64> chats;
    for (const auto &file : files) {
        chats.unite(approvalChats(file.content));
    }
    for (const auto &file : files) {
        for (const QJsonValue &value : file.content.value("bindings"_L1).toArray()) {
            const QJsonObject binding = value.toObject();
            const auto id = agentIdFrom(binding.value("agentId"_L1).toString());
            if (id && bindsOneOf(chats, binding.value("match"_L1).toObject())) {
                return id;
            }
        }
    }
    return std::nullopt;
}

} // namespace bram
