// SPDX-License-Identifier: Apache-2.0

// The operations with backup files.

#include "monitor/AlwaysAllowOperations.h"

#include "allowlist/ExecApprovalsEdit.h"
#include "monitor/OperatorPrompts.h"
#include "system/Clock.h"
#include "system/FileReplacement.h"
#include "system/SystemLog.h"

#include <algorithm>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
const QString lastFolder = u"always-allow-backup"_s;
constexpr qsizetype namedDigestCharacters = 12; ///< enough to name an entry
constexpr qsizetype mostNamed = 5;
} // namespace

QCoro::Task<bool> AlwaysAllowOperations::backupAlwaysAllowEntries(OperatorPrompts &prompts)
{
    return choosingAndBackingUp(this, &prompts);
}

QCoro::Task<bool> AlwaysAllowOperations::backupTo(OperatorPrompts &prompts, QString path)
{
    return backingUp(this, &prompts, std::move(path));
}

QCoro::Task<bool>
AlwaysAllowOperations::restoreAlwaysAllowEntriesFromBackup(OperatorPrompts &prompts)
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
    const auto count = own.list.entries().size();
    const QString text = alwaysAllowBackupText(own.list.entries(), tr("Always allow list backup"),
                                               own.clock.nowMs());
    using Written = std::expected<void, Error>;
    std::function<Written()> work
        = [path, bytes = text.toUtf8()] { return writePrivateFile(path, bytes); };
    const Written abandoned = std::unexpected(Error {u"the program ends"_s});
    const Written written = co_await self->m_worker.run<Written>(abandoned, std::move(work));
    if (!self) {
        co_return false;
    }
    if (!written) {
        own.log.write(
            QString(u"[Brackwen] always-allow backup failed: "_s + written.error().message));
        const Alert notice {tr("Always allow list backup"),
                            tr("Backup failed: %1").arg(written.error().message)};
        co_await prompts->inform(notice);
        co_return false;
    }
    self->recordCount(ActivityActor::App, ActivityAction::BackupAlwaysAllowList, count);
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
    using Read = std::expected<QList<BackedUpCommand>, Error>;
    std::function<Read()> work = [path] { return readAlwaysAllowBackup(path); };
    const Read abandoned = std::unexpected(Error {u"the program ends"_s});
    const Read read = co_await self->m_worker.run<Read>(abandoned, std::move(work));
    if (!self) {
        co_return false;
    }
    const QList<BackedUpCommand> commands = read.value_or(QList<BackedUpCommand>());
    const qsizetype count = read ? own.list.restore(commands) : 0;
    if (count == 0) {
        const QString reason = read ? refusedText(commands.size()) : read.error().message;
        own.log.write(QString(u"[Brackwen] always-allow restore failed: "_s
                              + (read ? path + u" holds no valid entry"_s : reason)));
        QStringList texts {tr("No valid entries were found in the backup."), reason};
        texts.removeAll(QString());
        const Alert notice {tr("Restore failed"), texts.join(u'\n')};
        co_await prompts->inform(notice);
        co_return false;
    }
    self->record(ActivityActor::App, ActivityAction::RestoreAlwaysAllowList,
                 u"restored-count="_s + QString::number(count));
    const Question question {
        .title = tr("Do you want to also add restored items to Brackwen always-allow lists?"),
        .text = restoredText(commands, count),
        .buttons = {tr("Confirm"), tr("Cancel")},
        .harmless = 1};
    const auto choice = co_await prompts->ask(question);
    if (!self || choice != 0) {
        co_return true;
    }
    QStringList texts;
    for (const BackedUpCommand &restored : commands) {
        if (own.list.find(restored.digest) != nullptr) { // one that was refused is not
            texts.append(restored.command);
        }
    }
    co_await registeringRestored(self, prompts, concreteCommandsForBrackwen(texts));
    co_return true;
}

QCoro::Task<> AlwaysAllowOperations::registeringRestored(Self self, OperatorPrompts *prompts,
                                                         QStringList commands)
{
    if (commands.isEmpty()) {
        const Alert notice {tr("No commands to register"),
                            tr("None of the restored entries holds a whole command, so nothing was "
                               "added to Brackwen's lists.")};
        co_await prompts->inform(notice);
        co_return;
    }
    const auto outcome = co_await self->m_collaborators.list.registerAtBrackwen(commands);
    if (!self || outcome.isDone()) {
        co_return;
    }
    self->recordCount(ActivityActor::Brackwen, ActivityAction::RegisterAlwaysAllowToBrackwen,
                      outcome.isChanged ? commands.size() : 0, outcome);
    co_await tellingNotDone(self, prompts, outcome);
}

QString AlwaysAllowOperations::refusedText(qsizetype count)
{
    return count == 0
        ? QString()
        : tr("Refused because their ID is not 64 lower-case hexadecimal digits: %1.").arg(count);
}

QString AlwaysAllowOperations::restoredText(const QList<BackedUpCommand> &commands, qsizetype count)
{
    QStringList texts {tr("Entries restored to the app list: %1.").arg(count),
                       refusedText(commands.size() - count)};
    if (const auto unverified = std::ranges::count_if(commands, &isUnverified); unverified > 0) {
        texts.append(
            tr("%1 of them name only a program: what they allow cannot be checked against it.")
                .arg(unverified));
    }
    QStringList misleading;
    for (const BackedUpCommand &restored : commands) {
        if (isMisleading(restored)) {
            misleading.append(restored.digest.left(namedDigestCharacters));
        }
    }
    if (!misleading.isEmpty()) {
        const auto all = misleading.size();
        misleading.resize(std::min(all, mostNamed));
        texts.append(tr("CAUTION: %1 of them show another command than the one that they allow: %2")
                         .arg(QString::number(all),
                              misleading.join(u", "_s) + (all > mostNamed ? u" …"_s : QString())));
    }
    texts.removeAll(QString());
    return texts.join(u' ');
}

} // namespace bram
