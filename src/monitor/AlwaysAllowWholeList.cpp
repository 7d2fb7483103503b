// SPDX-License-Identifier: Apache-2.0

// The operations on the whole list; those on chosen entries are in AlwaysAllowOperations.cpp.

#include "monitor/AlwaysAllowOperations.h"

#include "allowlist/ExecApprovalsEdit.h"
#include "monitor/OperatorPrompts.h"
#include "system/Clock.h"
#include "system/SystemLog.h"

#include <QSet>

#include <algorithm>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr qsizetype cancelChoice = 3; ///< behind the three lists

/// How many of the entries the list holds.
qsizetype countIn(AlwaysAllowOperations::Target target, const QList<AlwaysAllowEntry> &entries)
{
    using Target = AlwaysAllowOperations::Target;
    const auto elsewhere
        = target == Target::App ? AlwaysAllowSource::BrackwenOnly : AlwaysAllowSource::LocalOnly;
    const auto others = target == Target::Both
        ? 0
        : std::ranges::count(entries, elsewhere, &AlwaysAllowEntry::source);
    return entries.size() - others;
}

QStringList concreteCommands(const QList<AlwaysAllowEntry> &entries)
{
    QStringList texts;
    for (const auto &entry : entries) {
        texts.append(entry.command);
    }
    return concreteCommandsForBrackwen(texts);
}
} // namespace

QCoro::Task<> AlwaysAllowOperations::reload(OperatorPrompts &prompts, AlwaysAllowScope scope)
{
    return reloading(this, &prompts, scope);
}

QCoro::Task<> AlwaysAllowOperations::promptAndReloadAlwaysAllowEntries(OperatorPrompts &prompts)
{
    return askingAndReloading(this, &prompts);
}

QCoro::Task<bool> AlwaysAllowOperations::clear(OperatorPrompts &prompts, Target target)
{
    return clearing(this, &prompts, target);
}

QCoro::Task<bool> AlwaysAllowOperations::promptAndClearAlwaysAllowEntries(OperatorPrompts &prompts)
{
    return askingAndClearing(this, &prompts);
}

QCoro::Task<bool> AlwaysAllowOperations::addAllToAppList(OperatorPrompts &prompts,
                                                         QList<AlwaysAllowEntry> shown)
{
    return addingAll(this, &prompts, std::move(shown));
}

QCoro::Task<bool>
AlwaysAllowOperations::registerCurrentAlwaysAllowEntriesToBrackwen(OperatorPrompts &prompts)
{
    return registering(this, &prompts);
}

QCoro::Task<> AlwaysAllowOperations::reloading(Self self, OperatorPrompts *prompts,
                                               AlwaysAllowScope scope)
{
    auto &own = self->m_collaborators;
    const qint64 nowMs = own.clock.nowMs();
    const QString text
        = alwaysAllowBackupText(own.list.allEntries(), tr("Always allow list auto-backup"), nowMs);
    using Written = std::expected<QString, Error>;
    std::function<Written()> work
        = [home = own.homeFolder, text, nowMs] { return writeAutomaticBackup(home, text, nowMs); };
    const Written abandoned = std::unexpected(Error {u"the program ends"_s});
    const Written written = co_await self->m_worker.run<Written>(abandoned, std::move(work));
    if (!self) {
        co_return;
    }
    if (written) {
        replaceLastAutomaticBackup(own.preferences, *written);
    }
    own.list.reload(scope);
    if (scope == AlwaysAllowScope::IncludeRegistered) {
        self->record(ActivityActor::AppAndBrackwen, ActivityAction::RefreshAlwaysAllowList,
                     u"include-registered"_s);
    } else {
        self->record(ActivityActor::App, ActivityAction::RefreshAlwaysAllowList, u"app-only"_s);
    }
    if (!written) {
        const QString message = u"Auto backup failed: "_s + written.error().message;
        own.log.write(QString(u"[Brackwen] "_s + message));
        const Alert notice {tr("Refresh List"), message};
        co_await prompts->inform(notice);
    }
}

QCoro::Task<> AlwaysAllowOperations::askingAndReloading(Self self, OperatorPrompts *prompts)
{
    const Question question {
        .title = tr("Refresh List"),
        .text = tr("Choose whether to also load previously registered always-allow entries."),
        .buttons
        = {tr("Include registered entries"), tr("Refresh current list only"), tr("Cancel")},
        .harmless = 2};
    const auto choice = co_await prompts->ask(question);
    if (!self || choice >= 2) {
        co_return;
    }
    co_await reloading(self, prompts,
                       choice == 0 ? AlwaysAllowScope::IncludeRegistered
                                   : AlwaysAllowScope::AppOnly);
}

QCoro::Task<bool> AlwaysAllowOperations::clearing(Self self, OperatorPrompts *prompts,
                                                  Target target)
{
    if (target == Target::App) {
        const bool isChanged = co_await clearingLists(self, prompts, target);
        co_return isChanged;
    }
    const Question question {
        .title = tr("Confirmation"),
        .text = tr("All Brackwen registered always-allow entries will also be deleted. After "
                   "deletion, approvals will be requested again when commands run."),
        .buttons = {tr("Confirm"), tr("Cancel")},
        .harmless = 1};
    const auto choice = co_await prompts->ask(question);
    if (!self || choice != 0) {
        co_return false;
    }
    const bool isChanged = co_await clearingLists(self, prompts, target);
    co_return isChanged;
}

QCoro::Task<bool> AlwaysAllowOperations::askingAndClearing(Self self, OperatorPrompts *prompts)
{
    const Question question {.title = tr("Clear Always Allow List"),
                             .text = tr("Choose how you want to clear the list."),
                             .buttons
                             = {tr("Clear app list only"), tr("Keep app list, clear Brackwen only"),
                                tr("Clear app list and Brackwen list"), tr("Cancel")},
                             .harmless = cancelChoice};
    const auto choice = co_await prompts->ask(question);
    if (!self || choice >= cancelChoice) {
        co_return false;
    }
    const bool isChanged = co_await clearing(self, prompts, Target(choice));
    co_return isChanged;
}

QCoro::Task<bool> AlwaysAllowOperations::clearingLists(Self self, OperatorPrompts *prompts,
                                                       Target target)
{
    auto &list = self->m_collaborators.list;
    const auto before = countIn(target, list.allEntries());
    bool isChanged = target != Target::Brackwen && list.clearApp();
    ExecApprovalsOutcome outcome;
    if (target != Target::App) {
        outcome = co_await list.clearBrackwen();
        isChanged = isChanged || outcome.isChanged;
    }
    if (!self) {
        co_return isChanged;
    }
    const auto gone = before - countIn(target, list.allEntries());
    switch (target) {
    case Target::App:
        self->recordCount(ActivityActor::App, ActivityAction::ClearAppList, gone);
        break;
    case Target::Brackwen:
        self->recordCount(ActivityActor::Brackwen, ActivityAction::ClearBrackwenList, gone,
                          outcome);
        break;
    case Target::Both:
        self->recordCount(ActivityActor::AppAndBrackwen, ActivityAction::ClearBothLists, gone,
                          outcome);
        break;
    }
    co_await tellingNotDone(self, prompts, outcome);
    co_return isChanged;
}

QCoro::Task<bool> AlwaysAllowOperations::addingAll(Self self, OperatorPrompts *prompts,
                                                   QList<AlwaysAllowEntry> shown)
{
    const auto newCount = shown.size() - countIn(Target::App, shown);
    const QString note
        = tr("Shown entries: %1. Not in the app list yet: %2.").arg(shown.size()).arg(newCount);
    const Question question {.title = tr("Confirm registration"),
                             .text = tr("Register the All approval list to the app list?"),
                             .buttons = {tr("Register"), tr("Cancel")},
                             .harmless = 1,
                             .notes = {note}};
    const auto choice = co_await prompts->ask(question);
    if (!self || choice != 0) {
        co_return false;
    }
    auto &list = self->m_collaborators.list;
    const auto added
        = list.present(shown); // not what has been taken out while the question was open
    const bool isChanged = list.addAlwaysAllowEntryToAppList(added);
    self->recordCount(ActivityActor::App, ActivityAction::AddAllToAppList, added.size());
    const Alert notice {tr("Confirm registration"),
                        tr("All visible entries were added to the app list.")};
    co_await prompts->inform(notice);
    co_return isChanged;
}

QCoro::Task<bool> AlwaysAllowOperations::registering(Self self, OperatorPrompts *prompts)
{
    auto &list = self->m_collaborators.list;
    QStringList commands = concreteCommands(list.entries());
    if (commands.isEmpty()) {
        const Alert notice {
            tr("No commands to register"),
            tr("There are no concrete commands in the current list that can be registered to "
               "Brackwen.")};
        co_await prompts->inform(notice);
        co_return false;
    }
    const Question question {
        .title = tr("Do you want to register this always-allow list to Brackwen?"),
        .text = tr("This will add commands from the current list to Brackwen always-allow lists."),
        .buttons = {tr("Register"), tr("Cancel")},
        .harmless = 1};
    const auto choice = co_await prompts->ask(question);
    if (!self || choice != 0) {
        co_return false;
    }
    const QStringList now = concreteCommands(list.entries());
    const QSet<QString> current(now.cbegin(), now.cend());
    commands.removeIf([&current](const QString &command) { return !current.contains(command); });
    const auto outcome = co_await list.registerAtBrackwen(commands);
    if (!self) {
        co_return outcome.isChanged;
    }
    const QString notDone = self->notDoneText(outcome);
    const bool hasFailed = !outcome.isChanged && !notDone.isEmpty();
    self->recordCount(ActivityActor::Brackwen, ActivityAction::RegisterAlwaysAllowToBrackwen,
                      hasFailed ? 0 : commands.size(), outcome);
    const QString changedText
        = tr("Commands from the current list were added to Brackwen always-allow lists.");
    const QString unchangedText
        = tr("No new items were added because they were already registered.");
    QStringList texts {outcome.isChanged ? changedText
                           : hasFailed   ? QString()
                                         : unchangedText,
                       notDone};
    texts.removeAll(QString());
    const Alert notice {hasFailed ? tr("Registration failed") : tr("Registration completed"),
                        texts.join(u'\n')};
    co_await prompts->inform(notice);
    co_return outcome.isChanged;
}

} // namespace bram
