// SPDX-License-Identifier: Apache-2.0
#include "monitor/AlwaysAllowOperations.h"

#include "model/HonestDisplay.h"
#include "model/TextRules.h"
#include "monitor/ApprovalMonitor.h"
#include "monitor/OperatorPrompts.h"

#include <QFileInfo>

#include <algorithm>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr qsizetype cancelChoice = 3; ///< behind the three lists
constexpr qsizetype namedCharacters = 60; ///< of a command, to know it again

/// What the activity feed says of an entry: never an argument of its command.
QString entryDetail(const AlwaysAllowEntry &entry)
{
    const QString preview = recordedPreview(entry.command);
    return preview.isEmpty() ? entry.digest.left(12) + u"…"_s : preview;
}

/// What the activity feed adds where the platform's files were not all changed.
QString notDoneDetail(const ExecApprovalsOutcome &outcome)
{
    if (outcome.isWithoutFile) {
        return u" (not changed: no exec-approvals file)"_s;
    }
    QStringList names;
    for (const auto &failure : outcome.failures) {
        names.append(honestLine(QFileInfo(failure.path).fileName()).text);
    }
    return names.isEmpty() ? QString() : u" (not changed: "_s + names.join(u", "_s) + u')';
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
    const bool isChanged = m_collaborators.list.addAlwaysAllowEntryToAppList(entries);
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

QCoro::Task<bool>
AlwaysAllowOperations::promptAndRemoveAlwaysAllowEntry(OperatorPrompts &prompts,
                                                       QList<AlwaysAllowEntry> chosen)
{
    return askingAndRemoving(this, &prompts, std::move(chosen));
}

qsizetype AlwaysAllowOperations::takeBack(const QStringList &commands)
{
    const qsizetype count = m_collaborators.list.forgetAlwaysAllow(commands);
    if (count > 0) {
        recordCount(ActivityActor::App, ActivityAction::RemoveFromAppList, count);
    }
    return count;
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
        const bool isChanged = co_await removingFrom(self, prompts, target, entries);
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
    const bool isChanged = co_await removingFrom(self, prompts, target, left);
    co_return isChanged;
}

QCoro::Task<bool> AlwaysAllowOperations::removingFrom(Self self, OperatorPrompts *prompts,
                                                      Target target,
                                                      QList<AlwaysAllowEntry> entries)
{
    auto &list = self->m_collaborators.list;
    ExecApprovalsOutcome outcome;
    switch (target) {
    case Target::App:
        outcome.isChanged = list.removeAlwaysAllowEntryFromAppOnly(entries);
        if (outcome.isChanged) {
            self->recordEntries(ActivityActor::App, ActivityAction::RemoveFromAppList, entries);
        }
        break;
    case Target::Brackwen:
        outcome = co_await list.removeAlwaysAllowEntryFromBrackwenOnly(entries);
        if (self && (outcome.isChanged || !outcome.isDone())) {
            self->recordEntries(ActivityActor::Brackwen, ActivityAction::RemoveFromBrackwen,
                                entries, outcome);
        }
        break;
    case Target::Both:
        outcome = co_await list.removeAlwaysAllowEntry(entries);
        if (self) {
            self->recordEntries(ActivityActor::AppAndBrackwen, ActivityAction::RemoveFromBoth,
                                entries, outcome);
        }
        break;
    }
    if (self) {
        co_await tellingNotDone(self, prompts, outcome);
    }
    co_return outcome.isChanged;
}

QString AlwaysAllowOperations::notDoneText(const ExecApprovalsOutcome &outcome) const
{
    if (outcome.isWithoutFile) {
        return tr("Brackwen has no exec-approvals file in %1, so nothing was changed there.")
            .arg(m_collaborators.list.platformFolder());
    }
    QStringList lines;
    for (const auto &[path, reason] : outcome.failures) {
        lines.append(reason.contains(path) ? reason : path + u": "_s + reason);
    }
    return lines.isEmpty()
        ? QString()
        : tr("This could not be changed, and stays as it was:") + u'\n' + lines.join(u'\n');
}

QCoro::Task<> AlwaysAllowOperations::tellingNotDone(Self self, OperatorPrompts *prompts,
                                                    ExecApprovalsOutcome outcome)
{
    if (!outcome.isDone()) {
        const Alert notice {tr("Brackwen's list was not changed"), self->notDoneText(outcome)};
        co_await prompts->inform(notice);
    }
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

void AlwaysAllowOperations::record(ActivityActor actor, ActivityAction action,
                                   const QString &detail)
{
    m_collaborators.monitor.recordActivity(actor, action, detail);
}

void AlwaysAllowOperations::recordEntries(ActivityActor actor, ActivityAction action,
                                          const QList<AlwaysAllowEntry> &entries,
                                          const ExecApprovalsOutcome &outcome)
{
    if (entries.size() == 1) {
        record(actor, action, entryDetail(entries.constFirst()) + notDoneDetail(outcome));
    } else {
        recordCount(actor, action, entries.size(), outcome);
    }
}

void AlwaysAllowOperations::recordCount(ActivityActor actor, ActivityAction action, qsizetype count,
                                        const ExecApprovalsOutcome &outcome)
{
    record(actor, action, u"count="_s + QString::number(count) + notDoneDetail(outcome));
}

} // namespace bram
