// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "allowlist/AlwaysAllowBackup.h"
#include "allowlist/AlwaysAllowEntry.h"
#include "allowlist/AlwaysAllowVerdict.h"
#include "allowlist/AppAlwaysAllowList.h"
#include "allowlist/ExecApprovalsFiles.h"

#include <QCoro/QCoroTask>
#include <QHash>
#include <QList>
#include <QObject>
#include <QPointer>

namespace bram
{

/// Which entries are shown.
enum class AlwaysAllowScope {
    AppOnly, ///< those of the own list, with their texts there
    IncludeRegistered,
};

/// The commands that are always allowed: the application's own list, merged for display with what the
/// platform keeps in its exec-approvals files, whose changes it follows. Each operation that changes
/// something persists and reads anew. Only the application's own list answers requests. Main thread.
class AlwaysAllowList final : public QObject
{
    Q_OBJECT

public:
    /// `platformFolder` is where the exec-approvals files lie.
    AlwaysAllowList(Preferences &preferences, const QString &platformFolder, SystemLog &log);

    /// Loads both lists; from here on changes of the platform's are followed.
    void start();
    void reload(AlwaysAllowScope scope);

    /// Where the exec-approvals files lie.
    const QString &platformFolder() const { return m_platformFolder; }

    /// Of those that could be read the last time.
    qsizetype platformFileCount() const { return m_platformFileCount; }

    /// The merged list, in the order of the texts.
    const QList<AlwaysAllowEntry> &entries() const { return m_entries; }
    /// The same of both lists, whichever are shown.
    QList<AlwaysAllowEntry> allEntries() const
    {
        return merged(AlwaysAllowScope::IncludeRegistered);
    }
    const AlwaysAllowEntry *find(const QString &digest) const;
    /// Those of the entries that are still there, as they are now.
    QList<AlwaysAllowEntry> present(const QList<AlwaysAllowEntry> &entries) const;

    AlwaysAllowVerdict verdict(const QString &command) const;

    /// A person has allowed this command always: this text, or, where it is a plain one, the same words.
    void rememberAlwaysAllow(const QString &command);

    /// Whether that has been done: the list answers for this very command.
    bool isRemembered(const QString &command) const;
    /// Takes back what was remembered of these commands, and nothing of others with the same words. Returns of how
    /// many.
    qsizetype forgetAlwaysAllow(const QStringList &commands);

    // Each returns whether something has changed.
    bool addAlwaysAllowEntryToAppList(const QList<AlwaysAllowEntry> &entries);
    bool removeAlwaysAllowEntryFromAppOnly(const QList<AlwaysAllowEntry> &entries);
    bool clearApp();

    // The same, in the platform's files: begun at once, and done to its end also when this object goes. What
    // changes here is kept before the wait, so that nothing done meanwhile is lost; it counts as a change, too.
    /// The commands stay allowed here.
    QCoro::Task<ExecApprovalsOutcome>
    removeAlwaysAllowEntryFromBrackwenOnly(QList<AlwaysAllowEntry> entries);
    QCoro::Task<ExecApprovalsOutcome> removeAlwaysAllowEntry(QList<AlwaysAllowEntry> entries);
    QCoro::Task<ExecApprovalsOutcome> clearBrackwen();
    QCoro::Task<ExecApprovalsOutcome> registerAtBrackwen(QStringList commands);

    /// Takes in what has a proper digest, without replacing a text that is there. Returns how many.
    qsizetype restore(const QList<BackedUpCommand> &commands);

Q_SIGNALS:
    void entriesChanged();

private:
    using Self = QPointer<AlwaysAllowList>;

    /// When the work on the platform's files has ended: loads the lists anew where something has changed, there or
    /// before here, and gives what it came to.
    enum class Reload { WhereChanged, Always };
    static QCoro::Task<ExecApprovalsOutcome>
    following(Self self, QCoro::Task<ExecApprovalsOutcome> work, bool isChangedHere, Reload reload);

    bool ensureAlwaysAllowEntryInAppList(const AlwaysAllowEntry &entry);
    bool takeFromApp(const QList<AlwaysAllowEntry> &entries);
    QCoro::Task<ExecApprovalsOutcome>
    removeBrackwenAlwaysAllowEntry(const QList<AlwaysAllowEntry> &entries);
    void loadBrackwenAlwaysAllowFromExecApprovalsFiles();
    QList<AlwaysAllowEntry> merged(AlwaysAllowScope scope) const;
    void refreshAlwaysAllowEntries();
    void persistAndReload();

    const QString m_platformFolder;
    AppAlwaysAllowList m_app;
    ExecApprovalsFiles m_files;
    QHash<QString, QString> m_platform; ///< patterns by digest
    qsizetype m_platformFileCount = 0;
    AlwaysAllowScope m_scope = AlwaysAllowScope::IncludeRegistered;
    QList<AlwaysAllowEntry> m_entries;
};

} // namespace bram
