// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "allowlist/AlwaysAllowList.h"
#include "model/ActivityEntry.h"
#include "system/Worker.h"

#include <QCoro/QCoroTask>
#include <QObject>
#include <QPointer>

namespace bram
{

class ApprovalMonitor;
class Clock;
class OperatorPrompts;
class Preferences;
class SystemLog;

/// What the operator does with the always-allow list, at the desktop and at the terminal: asks what has to
/// be asked, does it, and records it in the activity feed.
///
/// What could not be changed in the platform's files is told, and stands in the activity feed.
///
/// A task ends when the operation has; it is to be kept by `BackgroundTasks::spawn` or awaited. Where
/// it says so, it gives whether something has changed. `prompts` lives until the task ends. Parameters
/// are values because they live on in a coroutine. Main thread.
class AlwaysAllowOperations final : public QObject
{
    Q_OBJECT

public:
    struct Collaborators {
        AlwaysAllowList &list;
        ApprovalMonitor &monitor;
        Preferences &preferences;
        const Clock &clock;
        SystemLog &log;
        QString homeFolder; ///< the automatic backups lie in `.brackwen/` there
    };

    enum class Target {
        App,
        Brackwen,
        Both,
    };

    explicit AlwaysAllowOperations(const Collaborators &collaborators);

    /// The entries, and the signal of their changes.
    const AlwaysAllowList &list() const { return m_collaborators.list; }

    // Entries that were chosen; one that is no longer there is left out. Without a question:
    bool addToAppList(const QList<AlwaysAllowEntry> &chosen);
    /// Takes back that these commands were always-allowed here. Gives how many still were.
    qsizetype takeBack(const QStringList &commands);
    QCoro::Task<bool> remove(OperatorPrompts &prompts, QList<AlwaysAllowEntry> chosen,
                             Target target);
    /// Asks when they are several.
    QCoro::Task<bool> promptAndAdd(OperatorPrompts &prompts, QList<AlwaysAllowEntry> chosen);
    /// Asks from which list, once for all of them.
    QCoro::Task<bool> promptAndRemoveAlwaysAllowEntry(OperatorPrompts &prompts,
                                                      QList<AlwaysAllowEntry> chosen);

    // The whole list. A backup is made before it is read again.
    QCoro::Task<> reload(OperatorPrompts &prompts, AlwaysAllowScope scope);
    QCoro::Task<> promptAndReloadAlwaysAllowEntries(OperatorPrompts &prompts);
    /// Asks for confirmation where the platform's entries go.
    QCoro::Task<bool> clear(OperatorPrompts &prompts, Target target);
    QCoro::Task<bool> promptAndClearAlwaysAllowEntries(OperatorPrompts &prompts);
    /// Adds the entries that the operator has before their eyes, and none that a search keeps from them.
    QCoro::Task<bool> addAllToAppList(OperatorPrompts &prompts, QList<AlwaysAllowEntry> shown);
    QCoro::Task<bool> registerCurrentAlwaysAllowEntriesToBrackwen(OperatorPrompts &prompts);

    // Backups. False when no file was chosen, or it was of no use: the operator has been told.
    QCoro::Task<bool> backupAlwaysAllowEntries(OperatorPrompts &prompts);
    QCoro::Task<bool> backupTo(OperatorPrompts &prompts, QString path);
    QCoro::Task<bool> restoreAlwaysAllowEntriesFromBackup(OperatorPrompts &prompts);
    QCoro::Task<bool> restoreFrom(OperatorPrompts &prompts, QString path);

private:
    using Self = QPointer<AlwaysAllowOperations>;

    static QCoro::Task<bool> removing(Self self, OperatorPrompts *prompts,
                                      QList<AlwaysAllowEntry> chosen, Target target);
    static QCoro::Task<bool> askingAndAdding(Self self, OperatorPrompts *prompts,
                                             QList<AlwaysAllowEntry> chosen);
    static QCoro::Task<bool> askingAndRemoving(Self self, OperatorPrompts *prompts,
                                               QList<AlwaysAllowEntry> chosen);
    static QCoro::Task<> reloading(Self self, OperatorPrompts *prompts, AlwaysAllowScope scope);
    static QCoro::Task<> askingAndReloading(Self self, OperatorPrompts *prompts);
    static QCoro::Task<bool> clearing(Self self, OperatorPrompts *prompts, Target target);
    static QCoro::Task<bool> askingAndClearing(Self self, OperatorPrompts *prompts);
    static QCoro::Task<bool> addingAll(Self self, OperatorPrompts *prompts,
                                       QList<AlwaysAllowEntry> shown);
    static QCoro::Task<bool> registering(Self self, OperatorPrompts *prompts);
    static QCoro::Task<bool> choosingAndBackingUp(Self self, OperatorPrompts *prompts);
    static QCoro::Task<bool> backingUp(Self self, OperatorPrompts *prompts, QString path);
    static QCoro::Task<bool> choosingAndRestoring(Self self, OperatorPrompts *prompts);
    static QCoro::Task<bool> restoring(Self self, OperatorPrompts *prompts, QString path);

    static QCoro::Task<bool> removingFrom(Self self, OperatorPrompts *prompts, Target target,
                                          QList<AlwaysAllowEntry> entries);
    static QCoro::Task<bool> clearingLists(Self self, OperatorPrompts *prompts, Target target);
    /// Adds commands that were restored to the platform's lists, too.
    static QCoro::Task<> registeringRestored(Self self, OperatorPrompts *prompts,
                                             QStringList commands);
    static QCoro::Task<> tellingNotDone(Self self, OperatorPrompts *prompts,
                                        ExecApprovalsOutcome outcome);
    /// What could not be changed in the platform's files, and why; empty when nothing.
    QString notDoneText(const ExecApprovalsOutcome &outcome) const;
    static QString refusedText(qsizetype count);
    static QString restoredText(const QList<BackedUpCommand> &commands, qsizetype count);
    void record(ActivityActor actor, ActivityAction action, const QString &detail);
    /// With what one entry is, or how many they are; and with what was not done of it.
    void recordEntries(ActivityActor actor, ActivityAction action,
                       const QList<AlwaysAllowEntry> &entries,
                       const ExecApprovalsOutcome &outcome = {});
    void recordCount(ActivityActor actor, ActivityAction action, qsizetype count,
                     const ExecApprovalsOutcome &outcome = {});

    Collaborators m_collaborators;
    Worker m_worker; ///< for the backups: the disk may be a slow one
};

} // namespace bram
