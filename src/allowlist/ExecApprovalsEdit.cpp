// SPDX-License-Identifier: Apache-2.0
#include "allowlist/ExecApprovalsEdit.h"

#include "allowlist/CommandDigest.h"
#include "model/TextRules.h"

#include <algorithm>
#include <utility>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
const QString agentsKey = u"agents"_s;
const QString mainAgent = u"main"_s;
const QString allowlistKey = u"allowlist"_s;
const QString patternKey = u"pattern"_s;
const QString commandKey = u"command"_s;

std::optional<QString> textMember(const ExactJson &object, const QString &name)
{
    const auto *member = object.member(name);
    return member != nullptr && member->kind == ExactJson::Kind::String
        ? trimmedOrAbsent(member->text())
        : std::nullopt;
}

/// Calls `visit` with every agent that is an object.
template<typename Root, typename Visit>
void forEachAgent(Root &root, Visit visit)
{
    auto *agents = root.member(agentsKey);
    if (agents == nullptr || !agents->isObject()) {
        return;
    }
    for (auto &agent : agents->values) {
        if (agent.isObject()) {
            visit(agent);
        }
    }
}

/// The member where it is there, with the kind that it has to have; null counts as absent.
std::expected<ExactJson *, Error> memberOfKind(ExactJson &object, const QString &name,
                                               ExactJson::Kind kind)
{
    auto *member = object.member(name);
    if (member == nullptr || member->isNull()) {
        return nullptr;
    }
    if (member->kind != kind) {
        return std::unexpected(Error {u"\"%1\" is not %2"_s.arg(
            name, kind == ExactJson::Kind::Array ? u"an array"_s : u"an object"_s)});
    }
    return member;
}
} // namespace

std::optional<QString> allowlistPattern(const ExactJson &element)
{
    if (element.kind == ExactJson::Kind::String) {
        return trimmedOrAbsent(element.text());
    }
    if (!element.isObject()) {
        return std::nullopt;
    }
    const auto pattern = textMember(element, patternKey);
    return pattern ? pattern : textMember(element, commandKey);
}

QStringList allowlistPatterns(const ExactJson &root)
{
    QStringList patterns;
    forEachAgent(root, [&](const ExactJson &agent) {
        const auto *list = agent.member(allowlistKey);
        if (list == nullptr || !list->isArray()) {
            return;
        }
        for (const auto &element : list->values) {
            if (const auto pattern = allowlistPattern(element)) {
                patterns.append(*pattern);
            }
        }
    });
    return patterns;
}

std::expected<bool, Error> appendCommands(ExactJson &root, const QStringList &commands)
{
    // Nothing is made before it is certain that all of it fits in.
    const auto agents = memberOfKind(root, agentsKey, ExactJson::Kind::Object);
    if (!agents) {
        return std::unexpected(agents.error());
    }
    std::expected<ExactJson *, Error> agent = nullptr;
    std::expected<ExactJson *, Error> list = nullptr;
    if (*agents != nullptr) {
        agent = memberOfKind(**agents, mainAgent, ExactJson::Kind::Object);
    }
    if (agent && *agent != nullptr) {
        list = memberOfKind(**agent, allowlistKey, ExactJson::Kind::Array);
    }
    if (!agent || !list) {
        return std::unexpected(!agent ? agent.error() : list.error());
    }

    QSet<QString> existing;
    if (*list != nullptr) {
        for (const auto &element : (*list)->values) {
            if (const auto pattern = allowlistPattern(element)) {
                existing.insert(*pattern);
            }
        }
    }
    std::vector<ExactJson> added;
    for (const QString &command : commands) {
        if (!existing.contains(command)) {
            existing.insert(command);
            added.push_back(ExactJson::object());
            added.back().setMember(patternKey, ExactJson::string(command));
        }
    }
    if (added.empty()) {
        return false;
    }
    auto &allAgents
        = *agents != nullptr ? **agents : root.setMember(agentsKey, ExactJson::object());
    auto &main = *agent != nullptr ? **agent : allAgents.setMember(mainAgent, ExactJson::object());
    auto &target = *list != nullptr ? **list : main.setMember(allowlistKey, ExactJson::array());
    std::ranges::move(added, std::back_inserter(target.values));
    return true;
}

std::expected<bool, Error> removeDigests(ExactJson &root, const QSet<QString> &digests)
{
    bool isChanged = false;
    forEachAgent(root, [&](ExactJson &agent) {
        auto *list = agent.member(allowlistKey);
        if (list == nullptr || !list->isArray()) {
            return;
        }
        const auto removed = std::erase_if(list->values, [&](const ExactJson &element) {
            const auto pattern = allowlistPattern(element);
            return pattern
                && digests.contains(normalizedCommandDigest(*pattern).value_or(QString()));
        });
        isChanged = isChanged || removed > 0;
    });
    return isChanged;
}

QStringList agentsAllowing(const ExactJson &root, const QString &digest)
{
    QStringList names;
    const auto *agents = root.member(agentsKey);
    if (agents == nullptr || !agents->isObject()) {
        return names;
    }
    for (std::size_t i = 0; i < agents->values.size(); ++i) {
        const auto *list
            = agents->values[i].isObject() ? agents->values[i].member(allowlistKey) : nullptr;
        const bool allows = list != nullptr && list->isArray()
            && std::ranges::any_of(list->values, [&](const ExactJson &element) {
                                const auto pattern = allowlistPattern(element);
                                return pattern && normalizedCommandDigest(*pattern) == digest;
                            });
        if (allows) {
            names.append(
                ExactJson {.kind = ExactJson::Kind::String, .token = agents->keys[i]}.text());
        }
    }
    return names;
}

std::expected<bool, Error> clearAllowlists(ExactJson &root)
{
    bool isChanged = false;
    forEachAgent(root, [&](ExactJson &agent) {
        const auto *list = agent.member(allowlistKey);
        if (list == nullptr || !list->isArray() || !list->values.empty()) {
            agent.setMember(allowlistKey, ExactJson::array());
            isChanged = true;
        }
    });
    return isChanged;
}

QStringList concreteCommandsForBrackwen(const QStringList &texts)
{
    QStringList commands;
    QSet<QString> seen;
    for (const QString &text : texts) {
        const QString command = text.trimmed();
        const bool isConcrete = !command.contains(u'…') && !command.startsWith(u'(')
            && (command.contains(u'/') || command.contains(u' '));
        if (isConcrete && !seen.contains(command)) {
            seen.insert(command);
            commands.append(command);
        }
    }
    return commands;
}

} // namespace bram
