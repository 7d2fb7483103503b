// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "allowlist/ExactJson.h"

#include <QFileSystemWatcher>
#include <QHash>
#include <QObject>
#include <QSet>
#include <QStringList>
#include <QTimer>

#include <functional>

namespace bram
{

class SystemLog;

/// The agent platform's own always-allow lists: the files exec-approvals*.json in its folder. They belong
/// to the platform. They are read anew just before each change, changed only where the always-allow lists
/// stand, and never made. A file that cannot be used is left alone and said once in the log. Main thread.
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

    /// Each returns whether at least one file has changed.
    bool appendCommands(const QStringList &commands);
    bool removeDigests(const QSet<QString> &digests);
    bool clear();

    /// From here on `changed` tells of changes.
    void watch();

Q_SIGNALS:
    /// Something was done to the files or in their folder, by whomever; shortly after the last change.
    void changed();

private:
    using Edit = std::function<std::expected<bool, Error>(ExactJson &root)>;

    std::expected<bool, Error> editFile(const QString &path, const Edit &edit);
    bool editEach(const Edit &edit);
    void sayProblem(const QString &path, const QString &problem);
    void watchWhatIsThere();

    QString m_folder;
    SystemLog &m_log;
    QHash<QString, QString> m_problems; ///< by path, as they were said
    QFileSystemWatcher m_watcher;
    QTimer m_settling;
    bool m_isWatching = false;
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
