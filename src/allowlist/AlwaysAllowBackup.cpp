// SPDX-License-Identifier: Apache-2.0
#include "allowlist/AlwaysAllowBackup.h"

#include "allowlist/AppAlwaysAllowList.h"
#include "allowlist/CommandDigest.h"
#include "allowlist/ExecApprovalsEdit.h"
#include "model/UtcTime.h"
#include "system/FileReplacement.h"
#include "system/Files.h"
#include "system/Preferences.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QUtf8StringView>

#include <algorithm>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
const QString lastPathKey = u"approvals.always-allow.auto-backup.last-path"_s;
constexpr QLatin1StringView automaticPrefix("always-allow-auto-backup-");
constexpr qint64 maxBackupBytes = 16 * 1024 * 1024;
constexpr QLatin1StringView idPrefix("ID: ");
constexpr QLatin1StringView commandPrefix("Command: ");
constexpr QLatin1StringView sensitiveLine("Sensitive: yes");
constexpr QLatin1StringView exactPrefix("Exact: ");
constexpr QLatin1StringView unknownForm("unknown");
constexpr QLatin1StringView lineBreakLine("LineBreak: yes"); ///< of earlier releases

QString sourceWord(AlwaysAllowSource source)
{
    switch (source) {
    case AlwaysAllowSource::LocalOnly:
        return u"local"_s;
    case AlwaysAllowSource::BrackwenOnly:
        return u"brackwen"_s;
    case AlwaysAllowSource::Both:
        return u"local+brackwen"_s;
    }
    Q_UNREACHABLE();
}

QString fileName(QLatin1StringView prefix, qint64 nowMs)
{
    return prefix + QString::number(nowMs / 1000) + u".txt"_s;
}

QString onOneLine(const QString &command)
{
    const QString trimmed = command.trimmed();
    const auto lineBreak = std::ranges::find_if(trimmed, isLineBreak);
    return lineBreak == trimmed.end() ? trimmed
                                      : trimmed.first(lineBreak - trimmed.begin()) + u" …"_s;
}
} // namespace

QString alwaysAllowBackupText(const QList<AlwaysAllowEntry> &entries, const QString &header,
                              qint64 nowMs)
{
    const auto now = utcTime(nowMs);
    QStringList lines {header, u"GeneratedAt: "_s + now.toString(Qt::ISODate),
                       u"Count: "_s + QString::number(entries.size()), QString()};
    for (const auto &entry : entries) {
        lines += {idPrefix + entry.digest, u"Source: "_s + sourceWord(entry.source),
                  entry.isSecuritySensitive ? QString(sensitiveLine) : u"Sensitive: no"_s};
        const QString command = onOneLine(entry.command);
        const bool isOwn = entry.source != AlwaysAllowSource::BrackwenOnly;
        if (isOwn && knownCommand(command, entry.digest).forms != entry.forms) {
            const QStringList forms
                = entry.forms.isEmpty() ? QStringList(unknownForm) : entry.forms;
            for (const QString &form : forms) {
                lines.append(exactPrefix + form);
            }
        }
        lines += {commandPrefix + command, QString()};
    }
    return lines.join(u'\n');
}

QList<BackedUpCommand> parseAlwaysAllowBackup(const QString &text)
{
    QList<BackedUpCommand> commands;
    QSet<QString> seen;
    BackedUpCommand block;
    const auto close = [&] {
        block.digest = block.digest.trimmed();
        if (!block.digest.isEmpty() && !seen.contains(block.digest)) {
            seen.insert(block.digest);
            commands.append(block);
        }
        block = {};
    };
    QString lines = text;
    lines.replace("\r\n"_L1, "\n"_L1).replace(u'\r', u'\n');
    for (const QStringView part : qTokenize(lines, u'\n')) {
        const QStringView line = part.trimmed();
        if (line.isEmpty()) {
            close();
        } else if (line.startsWith(idPrefix)) {
            block.digest = line.sliced(idPrefix.size()).toString();
        } else if (line.startsWith(commandPrefix)) {
            block.command = line.sliced(commandPrefix.size()).trimmed().toString();
        } else if (line.startsWith(exactPrefix)) {
            block.isTextExact = false;
            const QStringView form = line.sliced(exactPrefix.size()).trimmed();
            if (isCommandForm(form)) {
                block.forms.append(form.toString());
            }
        } else if (line == sensitiveLine) {
            block.isSecuritySensitive = true;
        } else if (line == lineBreakLine) {
            block.isTextExact = false;
        }
    }
    close();
    return commands;
}

bool isMisleading(const BackedUpCommand &backedUp)
{
    // Previews, which have no arguments and no folder, are for commands of many digests.
    return isCommandDigest(backedUp.digest)
        && !concreteCommandsForBrackwen({backedUp.command}).isEmpty()
        && normalizedCommandDigest(backedUp.command) != backedUp.digest;
}

bool isUnverified(const BackedUpCommand &backedUp)
{
    return isCommandDigest(backedUp.digest) && !backedUp.command.isEmpty()
        && !isMisleading(backedUp) && normalizedCommandDigest(backedUp.command) != backedUp.digest;
}

QString manualBackupName(qint64 nowMs)
{
    return fileName("always-allow-backup-"_L1, nowMs);
}

std::expected<QString, Error> writeAutomaticBackup(const QString &homeFolder, const QString &text,
                                                   qint64 nowMs)
{
    const QString folder = homeFolder + u"/.brackwen/approvals-menu-backups"_s;
    if (const auto made = makePrivateFolder(folder); !made) {
        return std::unexpected(made.error());
    }
    const QString path = folder + u'/' + fileName(automaticPrefix, nowMs);
    if (const auto written = writePrivateFile(path, text.toUtf8()); !written) {
        return std::unexpected(written.error());
    }
    return path;
}

void replaceLastAutomaticBackup(Preferences &preferences, const QString &path)
{
    const QString previous = preferences.text(lastPathKey).value_or(QString());
    // The preferences may hold anything: only a backup is removed.
    if (!previous.isEmpty() && previous != path
        && QFileInfo(previous).fileName().startsWith(automaticPrefix)) {
        QFile::remove(previous);
    }
    preferences.setText(lastPathKey, path);
    preferences.save();
}

std::expected<QList<BackedUpCommand>, Error> readAlwaysAllowBackup(const QString &path)
{
    const auto content = readRegularFile(path, maxBackupBytes);
    if (!content) {
        return std::unexpected(content.error());
    }
    if (!QUtf8StringView(*content).isValidUtf8()) {
        return std::unexpected(Error {u"cannot read %1: not UTF-8"_s.arg(path)});
    }
    return parseAlwaysAllowBackup(QString::fromUtf8(*content));
}

} // namespace bram
