// SPDX-License-Identifier: Apache-2.0
#include "monitor/AlwaysAllowOperations.h"

#include "model/TextRules.h"
#include "monitor/ApprovalMonitor.h"
#include "monitor/OperatorPrompts.h"

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
