// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "allowlist/ExactJson.h"
#include "system/FileStamp.h"
#include "system/Worker.h"

#include <QCoro/QCoroTask>
#include <QElapsedTimer>
#include <QFileSystemWatcher>
#include <QHash>
#include <QMap>
#include <QObject>
#include <QPointer>
#include <QSet>
#include <QStringList>
#include <QTimer>

#include <functional>
#include <optional>

namespace bram
{

class SystemLog;

/// What an edit of the platform's files came to.
struct ExecApprovalsOutcome {
    bool isChanged = false; ///< at least one file
    bool isWithoutFile = false; ///< there is none that could be changed
    struct Failure {
        QString path;
        QString reason; ///< names the path where that helps

        bool operator==(const Failure &) const = default;
    };
    QList<Failure> failures {}; ///< of files that were left as they are

    bool isDone() const { return !isWithoutFile && failures.isEmpty(); }
};

/// The agent platform's own always-allow lists: the files exec-approvals*.json in its folder. They belong
/// to the platform. They are read anew just before each change, changed only where the always-allow lists
/// stand, and never made. A file that cannot be used is left alone and said once in the log.
///
/// Changes are made on another thread, one after the other in the order of the calls: each may wait for
/// another program that is changing the files. Everything else is for the main thread.
class ExecApprovalsFiles final : public QObject
{
    Q_OBJECT

public:
    /// `folder` need not exist.
    ExecApprovalsFiles(const QString &folder, SystemLog &log);

    struct Patterns {
        QHash<QString, QString> commandsByDigest;
        QStringList paths; ///< the files that were read
    };

    /// In the order of their names. What has such a name without being a file is among them.
    QStringList candidatePaths() const;
    Patterns load();

    // Each begins at once. What has begun is done to its end, also when this object goes; what it came to is then
    // not told.
    QCoro::Task<ExecApprovalsOutcome> appendCommandsToExecApprovalsFiles(QStringList commands);
    QCoro::Task<ExecApprovalsOutcome>
    removeAlwaysAllowDigestFromExecApprovalsFiles(QSet<QString> digests);
    QCoro::Task<ExecApprovalsOutcome> clearAlwaysAllowInExecApprovalsFiles();

    /// From here on `changed` tells of changes.
    void watch();

Q_SIGNALS:
    /// Something was done to the files, by whomever; shortly after the last change.
    void changed();

private:
    using Edit = std::function<std::expected<bool, Error>(ExactJson &root)>;

    /// What came of one file.
    struct Edited {
        bool isChanged = false;
        std::optional<QString> problem {}; ///< why it cannot be used
        std::optional<QString> failure {}; ///< why the change could not be made
    };

    static QCoro::Task<ExecApprovalsOutcome> editing(QPointer<ExecApprovalsFiles> self, Edit edit);
    static Edited editFile(const QString &path, const Edit &edit);
    void sayProblem(const QString &path, const QString &problem);
    void look();
    QMap<QString, FileStamp> stamps() const;
    void watchWhatIsThere();

    QString m_folder;
    SystemLog &m_log;
    QHash<QString, QString> m_problems; ///< by path, as they were said
    QFileSystemWatcher m_watcher;
    QTimer m_settling;
    QElapsedTimer m_unsettled; ///< since the first event that was not looked at
    QMap<QString, FileStamp> m_stamps; ///< by path, of the last look
    bool m_wasWritten = false; ///< a file itself, since the last look
    Worker m_worker;
};

/// Where a command stands in the platform's lists.
struct ExecApprovalsPlace {
    QString path;
    QString agentId; ///< from outside

    bool operator==(const ExecApprovalsPlace &) const = default;
};

/// Every place of what has this digest, in the order of the files' names; a file that cannot be used has none. For
/// any thread.
QList<ExecApprovalsPlace> findInExecApprovalsFiles(const QString &folder, const QString &digest);

} // namespace bram
