// SPDX-License-Identifier: Apache-2.0
#include "ui/terminal/AlwaysAllowCommands.h"

#include "system/BackgroundTasks.h"
#include "ui/terminal/TerminalPrompts.h"
#include "ui/terminal/TerminalText.h"
#include "ui/terminal/TerminalTr.h"
#include "ui/terminal/TerminalVoice.h"
#include "ui/terminal/TypedPath.h"

#include <QFileInfo>

namespace bram
{

using namespace Qt::StringLiterals;

AlwaysAllowCommands::AlwaysAllowCommands(const Collaborators &collaborators)
    : m_collaborators(collaborators)
{
}

void AlwaysAllowCommands::carryOut(const AlwaysAllowCommand &command)
{
    using Kind = AlwaysAllowCommand::Kind;
    switch (command.kind) {
    case Kind::List:
        list();
        return;
    case Kind::Backup:
    case Kind::Restore: {
        const auto path
            = usableTypedPath(command.argument,
                              command.kind == Kind::Backup ? FileQuestion::Kind::SaveFile
                                                           : FileQuestion::Kind::OpenFile);
        if (!path) {
            m_collaborators.voice.say(path.error().message, LineStyle::Warning);
            return;
        }
        m_collaborators.tasks.spawn(useFile(this, command.kind, *path), u"always-allow file"_s);
        return;
    }
    case Kind::Reload:
    case Kind::Register:
    case Kind::Add:
    case Kind::AddAll:
    case Kind::Remove:
    case Kind::Clear:
        m_collaborators.tasks.spawn(change(this, command), u"always-allow"_s);
        return;
    }
}

void AlwaysAllowCommands::list()
{
    m_collaborators.voice.print(alwaysAllowLines(m_collaborators.alwaysAllow.list().entries(),
                                                 m_collaborators.voice.columns()));
}

const AlwaysAllowEntry *AlwaysAllowCommands::find(const QString &digest)
{
    const AlwaysAllowEntry *found = nullptr;
    int count = 0;
    for (const AlwaysAllowEntry &entry : m_collaborators.alwaysAllow.list().entries()) {
        if (entry.digest == digest) {
            return &entry;
        }
        if (!entry.digest.startsWith(digest)) {
            continue;
        }
        ++count;
        found = &entry;
    }
    if (count > 1) {
        m_collaborators.voice.say(TerminalTr::tr("More than one entry begins with: ")
                                      + beginningOfTyped(digest),
                                  LineStyle::Warning);
        return nullptr;
    }
    if (found == nullptr) {
        m_collaborators.voice.say(TerminalTr::tr("No entry begins with: ")
                                      + beginningOfTyped(digest),
                                  LineStyle::Warning);
    }
    return found;
}

QCoro::Task<> AlwaysAllowCommands::change(QPointer<AlwaysAllowCommands> self,
                                          AlwaysAllowCommand command)
{
    using Kind = AlwaysAllowCommand::Kind;
    AlwaysAllowOperations &operations = self->m_collaborators.alwaysAllow;
    TerminalPrompts &prompts = self->m_collaborators.prompts;
    bool isChanged = false;
    if (command.kind == Kind::Reload) {
        co_await operations.promptAndReloadAlwaysAllowEntries(prompts);
        if (self) {
            self->m_collaborators.voice.say(
                TerminalTr::tr("Entries: %1").arg(operations.list().entries().size()));
        }
        co_return;
    }
    if (command.kind == Kind::Register) {
        isChanged = co_await operations.registerCurrentAlwaysAllowEntriesToBrackwen(prompts);
    } else if (command.kind == Kind::AddAll) {
        isChanged = co_await operations.addAllToAppList(prompts, operations.list().entries());
    } else if (command.kind == Kind::Clear) {
        isChanged = co_await operations.clear(prompts, command.target);
    } else {
        const AlwaysAllowEntry *entry = self->find(command.argument);
        if (entry == nullptr) {
            co_return;
        }
        const QList<AlwaysAllowEntry> chosen {*entry};
        if (command.kind == Kind::Add) {
            isChanged = operations.addToAppList(chosen);
        } else {
            isChanged = co_await operations.remove(prompts, chosen, command.target);
        }
    }
    if (self) {
        self->m_collaborators.voice.say(isChanged
                                            ? TerminalTr::tr("The always-allow list has changed.")
                                            : TerminalTr::tr("Nothing has changed."));
    }
}

QCoro::Task<> AlwaysAllowCommands::useFile(QPointer<AlwaysAllowCommands> self,
                                           AlwaysAllowCommand::Kind kind, QString path)
{
    AlwaysAllowOperations &operations = self->m_collaborators.alwaysAllow;
    TerminalPrompts &prompts = self->m_collaborators.prompts;
    if (kind == AlwaysAllowCommand::Kind::Restore) {
        co_await operations.restoreFrom(prompts, path);
        co_return;
    }
    if (QFileInfo::exists(path)) {
        const bool agreed = co_await prompts.agreeToReplace(path);
        if (!self || !agreed) {
            co_return;
        }
    }
    const bool isWritten = co_await operations.backupTo(prompts, path);
    if (self && isWritten) {
        self->m_collaborators.voice.say(TerminalTr::tr("The always-allow list is in: ") + path);
    }
}

} // namespace bram
