// SPDX-License-Identifier: Apache-2.0

// The operations with backup files.

#include "monitor/AlwaysAllowOperations.h"

#include "allowlist/ExecApprovalsEdit.h"
#include "monitor/OperatorPrompts.h"
#include "system/Clock.h"
#include "system/FileReplacement.h"
#include "system/SystemLog.h"

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
const QString lastFolder = u"always-allow-backup"_s;
} // namespace

QCoro::Task<bool> AlwaysAllowOperations::backup(OperatorPrompts &prompts)
{
    return choosingAndBackingUp(this, &prompts);
}

QCoro::Task<bool> AlwaysAllowOperations::backupTo(OperatorPrompts &prompts, QString path)
{
    return backingUp(this, &prompts, std::move(path));
}

QCoro::Task<bool> AlwaysAllowOperations::restore(OperatorPrompts &prompts)
{
    return choosingAndRestoring(this, &prompts);
}

QCoro::Task<bool> AlwaysAllowOperations::restoreFrom(OperatorPrompts &prompts, QString path)
{
    return restoring(this, &prompts, std::move(path));
}

QCoro::Task<bool> AlwaysAllowOperations::choosingAndBackingUp(Self self, OperatorPrompts *prompts)
{
    const FileQuestion question {.kind = FileQuestion::Kind::SaveFile,
                                 .title = tr("Always allow list backup"),
                                 .suggestedName
                                 = manualBackupName(self->m_collaborators.clock.nowMs()),
                                 .acceptLabel = {},
                                 .rememberedAs = lastFolder};
    const auto path = co_await prompts->askForFile(question);
    if (!self || !path) {
        co_return false;
    }
    const bool isDone = co_await backingUp(self, prompts, *path);
    co_return isDone;
}

QCoro::Task<bool> AlwaysAllowOperations::backingUp(Self self, OperatorPrompts *prompts,
                                                   QString path)
{
    auto &own = self->m_collaborators;
    const QString text = alwaysAllowBackupText(own.list.entries(), tr("Always allow list backup"),
                                               own.clock.nowMs());
    const auto written = writePrivateFile(path, text.toUtf8());
    if (!written) {
        own.log.write(
            QString(u"[Brackwen] always-allow backup failed: "_s + written.error().message));
        const Alert notice {tr("Always allow list backup"),
                            tr("Backup failed: %1").arg(written.error().message)};
        co_await prompts->inform(notice);
        co_return false;
    }
    self->recordCount(ActivityActor::App, ActivityAction::BackupAlwaysAllowList,
                      own.list.entries().size());
    co_return true;
}

QCoro::Task<bool> AlwaysAllowOperations::choosingAndRestoring(Self self, OperatorPrompts *prompts)
{
    const FileQuestion question {.kind = FileQuestion::Kind::OpenFile,
                                 .title = tr("Restore Always Allow Backup"),
                                 .suggestedName = {},
                                 .acceptLabel = {},
                                 .rememberedAs = lastFolder};
    const auto path = co_await prompts->askForFile(question);
    if (!self || !path) {
        co_return false;
    }
    const bool isDone = co_await restoring(self, prompts, *path);
    co_return isDone;
}

QCoro::Task<bool> AlwaysAllowOperations::restoring(Self self, OperatorPrompts *prompts,
                                                   QString path)
{
    auto &own = self->m_collaborators;
    const auto commands = readAlwaysAllowBackup(path);
    const qsizetype count = commands ? own.list.restore(*commands) : 0;
    if (count == 0) {
        own.log.write(
            QString(u"[Brackwen] always-allow restore failed: "_s
                    + (commands ? path + u" holds no valid entry"_s : commands.error().message)));
        const Alert notice {tr("Restore failed"), tr("No valid entries were found in the backup.")};
        co_await prompts->inform(notice);
        co_return false;
    }
    self->record(ActivityActor::App, ActivityAction::RestoreAlwaysAllowList,
                 u"restored-count="_s + QString::number(count));
    QString outcome = tr("Entries restored to the app list: %1.").arg(count);
    if (const auto refused = commands->size() - count; refused > 0) {
        outcome += u' '
            + tr("Refused because their ID is not 64 lower-case hexadecimal digits: %1.")
                  .arg(refused);
    }
    const Question question {
        .title = tr("Do you want to also add restored items to Brackwen always-allow lists?"),
        .text = outcome,
        .buttons = {tr("Confirm"), tr("Cancel")},
        .harmless = 1};
    const auto choice = co_await prompts->ask(question);
    if (!self || choice != 0) {
        co_return true;
    }
    QStringList texts;
    for (const BackedUpCommand &restored : *commands) {
        if (own.list.find(restored.digest) != nullptr) { // one that was refused is not
            texts.append(restored.command);
        }
    }
    own.list.registerAtBrackwen(concreteCommandsForBrackwen(texts));
    co_return true;
}

} // namespace bram
