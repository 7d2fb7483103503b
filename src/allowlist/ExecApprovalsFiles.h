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

namespace bram
{

class SystemLog;

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

    // Each begins at once, and gives whether at least one file has changed. What has begun is done to its end,
    // also when this object goes.
    QCoro::Task<bool> appendCommands(QStringList commands);
    QCoro::Task<bool> removeDigests(QSet<QString> digests);
    QCoro::Task<bool> clear();

    /// From here on `changed` tells of changes.
    void watch();

Q_SIGNALS:
    /// Something was done to the files, by whomever; shortly after the last change.
    void changed();

private:
    using Edit = std::function<std::expected<bool, Error>(ExactJson &root)>;

    /// What an edit came to, told on the main thread.
    struct Outcome {
        bool isChanged = false;
        QMap<QString, QString> problems {}; ///< by path: why a file cannot be used
        QStringList failures {};
    };

    static QCoro::Task<bool> editing(QPointer<ExecApprovalsFiles> self, Edit edit);
    static Outcome editEach(const QStringList &paths, const Edit &edit);
    static std::expected<bool, Error> editFile(const QString &path, const Edit &edit,
                                               Outcome &outcome);
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
