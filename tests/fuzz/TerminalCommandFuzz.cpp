// SPDX-License-Identifier: Apache-2.0
#include "Fuzz.h"

#include "ui/terminal/CommandLine.h"

using namespace bram;
using namespace Qt::StringLiterals;
using bram::fuzz::require;

namespace
{
/// The line one would type for a command that changes something.
QString typedFor(const TerminalCommand &command)
{
    if (const auto *agent = std::get_if<AgentCommand>(&command)) {
        return u"agent "_s + agent->agentId;
    }
    if (const auto *file = std::get_if<FileCommand>(&command)) {
        const QStringList words {u"export "_s, u"report "_s, u"diagnostics "_s};
        return words.at(static_cast<qsizetype>(file->purpose)) + file->path;
    }
    if (const auto *list = std::get_if<AlwaysAllowCommand>(&command)) {
        const QStringList kinds {u"list"_s,   u"reload"_s, u"register"_s, u"add"_s,    u"add-all"_s,
                                 u"remove"_s, u"clear"_s,  u"backup"_s,   u"restore"_s};
        const QStringList targets {u"app"_s, u"brackwen"_s, u"both"_s};
        using Kind = AlwaysAllowCommand::Kind;
        const bool hasTarget = list->kind == Kind::Remove || list->kind == Kind::Clear;
        const QString target
            = hasTarget ? targets.at(static_cast<qsizetype>(list->target)) : QString();
        return (u"always-allow "_s + kinds.at(static_cast<qsizetype>(list->kind)) + u' '
                + list->argument + u' ' + target)
            .trimmed();
    }
    if (const auto *language = std::get_if<LanguageCommand>(&command)) {
        return u"language "_s + rawText(language->language);
    }
    if (const auto *polling = std::get_if<SharedPollingCommand>(&command)) {
        return polling->isAllowed ? u"shared-polling on"_s : u"shared-polling off"_s;
    }
    if (const auto *one = std::get_if<DecideCommand>(&command)) {
        return rawText(one->decision) + u' ' + one->target;
    }
    if (const auto *all = std::get_if<DecideAllCommand>(&command)) {
        return rawText(all->decision) + u" all"_s;
    }
    return {};
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString line = fuzz::toText(fuzz::toBytes(data, size));
    const auto command = parseCommandLine(line);
    if (!command) {
        const QString &message = command.error().message;
        require(!message.isEmpty() && message.size() < 300 && !message.contains(u'\n'),
                "a refusal is one line that repeats little of what was typed");
        return 0;
    }
    if (const QString typed = typedFor(*command); !typed.isEmpty()) {
        require(line.simplified() == typed.simplified(), "only what was typed is carried out");
        require(parseCommandLine(typed) == command, "a command survives being typed again");
    }
    return 0;
}
