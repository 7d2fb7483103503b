// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "system/FileStamp.h"

#include <QFileSystemWatcher>
#include <QHash>
#include <QObject>
#include <QStringList>
#include <QTimer>

namespace bram
{

/// Tells when some of a few files may hold something else than before: one was written, replaced, made or
/// removed, directly or behind a symbolic link. Their folders need not exist, but a folder is noticed only
/// once the one above it is there. Main thread; says nothing where the system has no room for
/// another watch.
class FileWatch final : public QObject
{
    Q_OBJECT

public:
    explicit FileWatch(const QStringList &paths);

    /// Watches from now on.
    void start();

Q_SIGNALS:
    /// Once for what happens in a short while. A file may be in the middle of being written; then this
    /// comes again.
    void changed();

private:
    QStringList placesToWatch() const;
    void watchPlaces();
    void look();

    QStringList m_paths;
    QFileSystemWatcher m_watcher;
    QTimer m_settling;
    QHash<QString, FileStamp> m_stamps; ///< by path
    bool m_wasWritten = false; ///< a file itself, since the last look
};

} // namespace bram
