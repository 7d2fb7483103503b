// SPDX-License-Identifier: Apache-2.0
#include "monitor/AlwaysAllowOperations.h"

#include "allowlist/ExecApprovalsEdit.h"
#include "model/TextRules.h"
#include "monitor/ApprovalMonitor.h"
#include "monitor/OperatorPrompts.h"
#include "system/Clock.h"
#include "system/SystemLog.h"

#include <algorithm>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
/// Buttons of the questions with three choices and a way out.
constexpr qsizetype cancelChoice = 3;
constexpr qsizetype namedCharacters = 60; ///< of a command, to know it again

/// What the activity feed says of an entry: never an argument of its command.
QString entryDetail(const AlwaysAllowEntry &entry)
{
    const QString preview = recordedPreview(entry.command);
    return preview.isEmpty() ? entry.digest.left(12) + u"…"_s : preview;
}

/// What a question about the entries says of them beside how many they are.
QStringList notesOn(const QList<AlwaysAllowEntry> &entries)
{
    QStringList notes;
    if (entries.size() == 1) {
        const AlwaysAllowEntry &entry = entries.constFirst();
        const QString beginning = firstCharacters(entry.command, namedCharacters);
        notes.append(entry.command.isEmpty()
                         ? AlwaysAllowOperations::tr("ID: %1").arg(entry.digest)
                         : beginning + (beginning.size() < entry.command.size() ? u"…"_s : u""_s));
    }
    if (std::ranges::count(entries, AlwaysAllowSource::BrackwenOnly, &AlwaysAllowEntry::source)
        > 0) {
        notes.append(AlwaysAllowOperations::tr(
            "To delete from the Brackwen list only keeps a command allowed: one that the app list "
            "does not have yet goes into it."));
    }
    return notes;
}

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

AlwaysAllowOperations::AlwaysAllowOperations(const Collaborators &collaborators)
    : m_collaborators(collaborators)
{
}

bool AlwaysAllowOperations::addToAppList(const QList<AlwaysAllowEntry> &chosen)
{
    const auto entries = m_collaborators.list.present(chosen);
    if (entries.isEmpty()) {
        return false;
    }
    const bool isChanged = m_collaborators.list.addToApp(entries);
    recordEntries(ActivityActor::App, ActivityAction::AddToAppList, entries);
    return isChanged;
}

QCoro::Task<bool> AlwaysAllowOperations::remove(OperatorPrompts &prompts,
                                                QList<AlwaysAllowEntry> chosen, Target target)
{
    return removing(this, &prompts, std::move(chosen), target);
}

QCoro::Task<bool> AlwaysAllowOperations::promptAndAdd(OperatorPrompts &prompts,
                                                      QList<AlwaysAllowEntry> chosen)
{
    return askingAndAdding(this, &prompts, std::move(chosen));
}

QCoro::Task<bool> AlwaysAllowOperations::promptAndRemove(OperatorPrompts &prompts,
                                                         QList<AlwaysAllowEntry> chosen)
{
    return askingAndRemoving(this, &prompts, std::move(chosen));
}

QCoro::Task<> AlwaysAllowOperations::reload(OperatorPrompts &prompts, AlwaysAllowScope scope)
{
    return reloading(this, &prompts, scope);
}

QCoro::Task<> AlwaysAllowOperations::promptAndReload(OperatorPrompts &prompts)
{
    return askingAndReloading(this, &prompts);
}

QCoro::Task<bool> AlwaysAllowOperations::clear(OperatorPrompts &prompts, Target target)
{
    return clearing(this, &prompts, target);
}

QCoro::Task<bool> AlwaysAllowOperations::promptAndClear(OperatorPrompts &prompts)
{
    return askingAndClearing(this, &prompts);
}

QCoro::Task<bool> AlwaysAllowOperations::addAllToAppList(OperatorPrompts &prompts,
                                                         QList<AlwaysAllowEntry> shown)
{
    return addingAll(this, &prompts, std::move(shown));
}

QCoro::Task<bool> AlwaysAllowOperations::registerToBrackwen(OperatorPrompts &prompts)
{
    return registering(this, &prompts);
}

QCoro::Task<bool> AlwaysAllowOperations::askingAndAdding(Self self, OperatorPrompts *prompts,
                                                         QList<AlwaysAllowEntry> chosen)
{
    if (chosen.size() > 1) {
        const Question question {
            .title = tr("Confirm registration"),
            .text = tr("Add the %1 selected entries to the app list?").arg(chosen.size()),
            .buttons = {tr("Register"), tr("Cancel")},
            .harmless = 1};
        const auto choice = co_await prompts->ask(question);
        if (!self || choice != 0) {
            co_return false;
        }
    }
    co_return self->addToAppList(chosen);
}

QCoro::Task<bool> AlwaysAllowOperations::removing(Self self, OperatorPrompts *prompts,
                                                  QList<AlwaysAllowEntry> chosen, Target target)
{
    const auto entries = self->m_collaborators.list.present(chosen);
    if (entries.isEmpty()) {
        co_return false;
    }
    const auto unregistered
        = std::ranges::count(entries, AlwaysAllowSource::LocalOnly, &AlwaysAllowEntry::source);
    if (target != Target::Brackwen || unregistered == 0) {
        const bool isChanged = co_await removingFrom(self, target, entries);
        co_return isChanged;
    }
    const QString text = entries.size() == 1
        ? tr("This entry is not registered in Brackwen. It will be kept in the app list.")
        : tr("%1 of these entries are not registered in Brackwen. They will be kept in the app "
             "list.")
              .arg(unregistered);
    const Alert notice {tr("Notice"), text};
    co_await prompts->inform(notice);
    if (!self) {
        co_return false;
    }
    if (entries.size() == 1) {
        co_return self->addToAppList(entries);
    }
    const auto left = self->m_collaborators.list.present(entries);
    const bool isChanged = co_await removingFrom(self, target, left);
    co_return isChanged;
}

QCoro::Task<bool> AlwaysAllowOperations::removingFrom(Self self, Target target,
                                                      QList<AlwaysAllowEntry> entries)
{
    auto &list = self->m_collaborators.list;
    bool isChanged = false;
    switch (target) {
    case Target::App:
        isChanged = list.removeFromApp(entries);
        if (isChanged) {
            self->recordEntries(ActivityActor::App, ActivityAction::RemoveFromAppList, entries);
        }
        break;
    case Target::Brackwen:
        isChanged = co_await list.removeFromBrackwen(entries);
        if (self && isChanged) {
            self->recordEntries(ActivityActor::Brackwen, ActivityAction::RemoveFromBrackwen,
                                entries);
        }
        break;
    case Target::Both:
        isChanged = co_await list.removeFromBoth(entries);
        if (self) {
            self->recordEntries(ActivityActor::AppAndBrackwen, ActivityAction::RemoveFromBoth,
                                entries);
        }
        break;
    }
    co_return isChanged;
}

QCoro::Task<bool> AlwaysAllowOperations::askingAndRemoving(Self self, OperatorPrompts *prompts,
                                                           QList<AlwaysAllowEntry> chosen)
{
    const QString title = chosen.size() == 1
        ? tr("Remove always-allow entry")
        : tr("Remove %1 always-allow entries").arg(chosen.size());
    const Question question {.title = title,
                             .text = tr("Choose which list to remove from."),
                             .buttons = {tr("Delete from app list only"),
                                         tr("Delete from Brackwen list only"),
                                         tr("Delete from both app and Brackwen"), tr("Cancel")},
                             .harmless = cancelChoice,
                             .notes = notesOn(chosen)};
    const auto choice = co_await prompts->ask(question);
    if (!self || choice >= cancelChoice) {
        co_return false;
    }
    const bool isChanged = co_await removing(self, prompts, chosen, Target(choice));
    co_return isChanged;
}

QCoro::Task<> AlwaysAllowOperations::reloading(Self self, OperatorPrompts *prompts,
                                               AlwaysAllowScope scope)
{
    auto &own = self->m_collaborators;
    const qint64 nowMs = own.clock.nowMs();
    const QString text
        = alwaysAllowBackupText(own.list.entries(), tr("Always allow list auto-backup"), nowMs);
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
        own.log.write(message);
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
        const bool isChanged = co_await clearingLists(self, target);
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
    const bool isChanged = co_await clearingLists(self, target);
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

QCoro::Task<bool> AlwaysAllowOperations::clearingLists(Self self, Target target)
{
    auto &list = self->m_collaborators.list;
    const auto before = countIn(target, list.entries());
    bool isChanged = target != Target::Brackwen && list.clearApp();
    if (target != Target::App) {
        const bool isBrackwenChanged = co_await list.clearBrackwen();
        isChanged = isChanged || isBrackwenChanged;
    }
    if (!self) {
        co_return isChanged;
    }
    const auto gone = before - countIn(target, list.entries());
    switch (target) {
    case Target::App:
        self->recordCount(ActivityActor::App, ActivityAction::ClearAppList, gone);
        break;
    case Target::Brackwen:
        self->recordCount(ActivityActor::Brackwen, ActivityAction::ClearBrackwenList, gone);
        break;
    case Target::Both:
        self->recordCount(ActivityActor::AppAndBrackwen, ActivityAction::ClearBothLists, gone);
        break;
    }
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
    const bool isChanged = list.addToApp(added);
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
    const bool isChanged = co_await list.registerAtBrackwen(commands);
    if (!self) {
        co_return isChanged;
    }
    self->recordCount(ActivityActor::Brackwen, ActivityAction::RegisterAlwaysAllowToBrackwen,
                      commands.size());
    const QString changedText
        = tr("Commands from the current list were added to Brackwen always-allow lists.");
    const QString unchangedText
        = tr("No new items were added because they were already registered.");
    const Alert notice {tr("Registration completed"), isChanged ? changedText : unchangedText};
    co_await prompts->inform(notice);
    co_return isChanged;
}

void AlwaysAllowOperations::record(ActivityActor actor, ActivityAction action,
                                   const QString &detail)
{
    m_collaborators.monitor.recordActivity(actor, action, detail);
}

void AlwaysAllowOperations::recordEntries(ActivityActor actor, ActivityAction action,
                                          const QList<AlwaysAllowEntry> &entries)
{
    if (entries.size() == 1) {
        record(actor, action, entryDetail(entries.constFirst()));
    } else {
        recordCount(actor, action, entries.size());
    }
}

void AlwaysAllowOperations::recordCount(ActivityActor actor, ActivityAction action, qsizetype count)
{
    record(actor, action, u"count="_s + QString::number(count));
}

} // namespace bram
