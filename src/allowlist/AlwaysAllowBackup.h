// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "allowlist/AlwaysAllowEntry.h"
#include "model/Error.h"

#include <QList>

#include <expected>

namespace bram
{

class Preferences;

/// What a backup holds of an entry; as it stands in the file, which may have been written by anybody.
struct BackedUpCommand {
    QString digest;
    QString command; ///< empty when there is none
    /// Unless the file says otherwise, a text that has the digest is what was allowed.
    bool isTextExact = true;
    QStringList forms {}; ///< as of `AlwaysAllowEntry`
    bool isSecuritySensitive = false;

    bool operator==(const BackedUpCommand &) const = default;
};

/// A backup as people and `parseAlwaysAllowBackup` read it. A command with a line break is cut there, and
/// marked as cut with an ellipsis: the format has one line for it. Where the forms do not follow from the text,
/// each has a line of its own, which other readers pass over.
QString alwaysAllowBackupText(const QList<AlwaysAllowEntry> &entries, const QString &header,
                              qint64 nowMs);

/// Each digest once, with the command of its first block. Lines of other kinds are passed over.
QList<BackedUpCommand> parseAlwaysAllowBackup(const QString &text);

/// Whether the command is whole, and another one than that of the digest: this would show one command and allow
/// another.
bool isMisleading(const BackedUpCommand &backedUp);

/// Whether the text names no more than a program, which nothing proves: the digest is that of another text, one that the
/// text may be the beginning of.
bool isUnverified(const BackedUpCommand &backedUp);

/// The name suggested for a backup that the operator makes.
QString manualBackupName(qint64 nowMs);

/// Writes the automatic backup to its folder in `homeFolder`, and returns its path. Any thread.
std::expected<QString, Error> writeAutomaticBackup(const QString &homeFolder, const QString &text,
                                                   qint64 nowMs);

/// Remembers this automatic backup and removes the one before. Main thread.
void replaceLastAutomaticBackup(Preferences &preferences, const QString &path);

/// The blocks of a backup file; at most 16 MiB of UTF-8. Any thread.
std::expected<QList<BackedUpCommand>, Error> readAlwaysAllowBackup(const QString &path);

} // namespace bram
