// SPDX-License-Identifier: Apache-2.0
#include "allowlist/ExecApprovalsFiles.h"

#include "allowlist/CommandDigest.h"
#include "allowlist/ExecApprovalsEdit.h"
#include "system/FileReplacement.h"
#include "system/Files.h"
#include "system/SystemLog.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <utility>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr qint64 maxBytes = 16 * 1024 * 1024;
/// A program that writes a file in place needs a moment until it is whole.
constexpr int settlingMs = 100;
/// As long as events keep coming, which may be about other files in the folder.
constexpr int longestSettlingMs = 1000;
/// How often an edit is done again because the file had changed meanwhile.
constexpr int mostAttempts = 50;

/// In the order of their names.
QStringList candidatesIn(const QString &folder)
{
    // The name filter of QDir would ignore case.
    const QStringList names
        = QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System);
    QStringList paths;
    for (const QString &name : names) {
        if (name.startsWith("exec-approvals"_L1) && name.endsWith(".json"_L1)) {
            paths.append(folder + u'/' + name);
        }
    }
    std::ranges::sort(paths);
    return paths;
}

std::expected<ExactJsonDocument, Error> readDocument(const QString &path)
{
    const auto content = readRegularFile(path, maxBytes);
    if (!content) {
        return std::unexpected(content.error());
    }
    auto document = parseExactJson(*content);
    if (document && !document->root.isObject()) {
        return std::unexpected(Error {u"not a JSON object"_s});
    }
    return document;
}
} // namespace

QList<ExecApprovalsPlace> findInExecApprovalsFiles(const QString &folder, const QString &digest)
{
    QList<ExecApprovalsPlace> places;
    for (const QString &path : candidatesIn(folder)) {
        if (const auto document = readDocument(path)) {
            for (const QString &agent : agentsAllowing(document->root, digest)) {
                places.append({path, agent});
            }
        }
    }
    return places;
}

ExecApprovalsFiles::ExecApprovalsFiles(const QString &folder, SystemLog &log)
    : m_folder(folder)
    , m_log(log)
{
    m_settling.setSingleShot(true);
    m_settling.setInterval(settlingMs);
    connect(&m_settling, &QTimer::timeout, this, &ExecApprovalsFiles::look);
    const auto settle = [this] {
        if (!m_settling.isActive()) {
            m_unsettled.start();
        }
        if (m_unsettled.elapsed() < longestSettlingMs) {
            m_settling.start();
        }
    };
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, settle);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, [this, settle] {
        m_wasWritten = true;
        settle();
    });
}

QStringList ExecApprovalsFiles::candidatePaths() const
{
    return candidatesIn(m_folder);
}

ExecApprovalsFiles::Patterns ExecApprovalsFiles::load()
{
    Patterns patterns;
    for (const QString &path : candidatePaths()) {
        const auto document = readDocument(path);
        if (!document) {
            sayProblem(path, document.error().message);
            continue;
        }
        m_problems.remove(path);
        patterns.paths.append(path);
        for (const QString &pattern : allowlistPatterns(document->root)) {
            if (const auto digest = normalizedCommandDigest(pattern)) {
                patterns.commandsByDigest.insert(*digest, pattern);
            }
        }
    }
    return patterns;
}

QCoro::Task<ExecApprovalsOutcome>
ExecApprovalsFiles::appendCommandsToExecApprovalsFiles(QStringList commands)
{
    return editing(this,
                   [commands](ExactJson &root) { return bram::appendCommands(root, commands); });
}

QCoro::Task<ExecApprovalsOutcome>
ExecApprovalsFiles::removeAlwaysAllowDigestFromExecApprovalsFiles(QSet<QString> digests)
{
    return editing(this, [digests](ExactJson &root) { return bram::removeDigests(root, digests); });
}

QCoro::Task<ExecApprovalsOutcome> ExecApprovalsFiles::clearAlwaysAllowInExecApprovalsFiles()
{
    return editing(this, [](ExactJson &root) { return clearAllowlists(root); });
}

QCoro::Task<ExecApprovalsOutcome> ExecApprovalsFiles::editing(QPointer<ExecApprovalsFiles> self,
                                                              Edit edit)
{
    using Results = QMap<QString, Edited>; // in the order of the paths
    std::function<Results()> work = [folder = self->m_folder, edit] {
        Results results;
        for (const QString &path : candidatesIn(folder)) {
            results.insert(path, editFile(path, edit));
        }
        return results;
    };
    const Results results = co_await self->m_worker.run<Results>({}, std::move(work));
    if (!self) {
        co_return {};
    }
    ExecApprovalsOutcome outcome {.isWithoutFile = results.isEmpty()};
    for (const auto &[path, edited] : results.asKeyValueRange()) {
        outcome.isChanged = outcome.isChanged || edited.isChanged;
        if (edited.problem) {
            self->sayProblem(path, *edited.problem);
            outcome.failures.append({path, *edited.problem});
        }
        if (edited.failure) {
            self->m_log.write(
                QString(u"[Brackwen] Brackwen allowlist update failed: "_s + *edited.failure));
            outcome.failures.append({path, *edited.failure});
        }
    }
    co_return outcome;
}

ExecApprovalsFiles::Edited ExecApprovalsFiles::editFile(const QString &path, const Edit &edit)
{
    if (!QFileInfo::exists(path)) { // a link to nowhere
        const auto document = readDocument(path);
        return document ? Edited() : Edited {.problem = document.error().message};
    }
    const auto lock
        = FolderLock::acquire(QFileInfo(QFileInfo(path).canonicalFilePath()).absolutePath());
    if (!lock) {
        return {.failure = lock.error().message};
    }
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        auto document = readDocument(path);
        if (!document) {
            return {.problem = document.error().message};
        }
        const auto edited = edit(document->root);
        if (!edited) {
            return {.failure = path + u": "_s + edited.error().message};
        }
        if (!*edited) {
            return {};
        }
        QByteArray text = prettyText(document->root);
        if (document->source.startsWith(byteOrderMark)) {
            text.prepend(byteOrderMark);
        }
        const auto replaced = replaceFile(path, document->source, text);
        if (!replaced) {
            return {.failure = replaced.error().message};
        }
        if (*replaced == Replacement::Done) {
            return {.isChanged = true};
        }
    }
    return {.failure = path + u": another program keeps changing it"_s};
}

void ExecApprovalsFiles::sayProblem(const QString &path, const QString &problem)
{
    if (std::exchange(m_problems[path], problem) == problem) {
        return;
    }
    const QString reason = problem.section(path + u": "_s, -1); // the reader's texts name it, too
    m_log.write(
        QString(u"[Brackwen] exec-approvals file %1 cannot be used: %2"_s.arg(path, reason)));
}

void ExecApprovalsFiles::watch()
{
    watchWhatIsThere();
    m_stamps = stamps();
}

QMap<QString, FileStamp> ExecApprovalsFiles::stamps() const
{
    QMap<QString, FileStamp> stamps;
    for (const QString &path : candidatePaths()) {
        stamps.insert(path, FileStamp::of(path));
    }
    return stamps;
}

void ExecApprovalsFiles::look()
{
    watchWhatIsThere();
    // The folder is the platform's, and busy with files that are none of ours.
    const bool isWritten = std::exchange(m_wasWritten, false);
    const auto now = stamps();
    if (std::exchange(m_stamps, now) != now || isWritten) {
        Q_EMIT changed();
    }
}

void ExecApprovalsFiles::watchWhatIsThere()
{
    // As long as the folder is not there, the one above tells when it comes.
    const bool isThere = QFileInfo(m_folder).isDir();
    QStringList wanted {isThere ? m_folder : QFileInfo(m_folder).absolutePath()};
    for (const QString &path : candidatePaths()) {
        wanted.append(path); // also follows a link to the file it names
        if (const QFileInfo file(path); file.isSymLink()) {
            wanted.append(QFileInfo(file.symLinkTarget()).absolutePath());
        }
    }
    wanted.removeDuplicates();
    // Anew: a watched path may meanwhile stand for another file.
    if (const QStringList watched = m_watcher.directories() + m_watcher.files();
        !watched.isEmpty()) {
        m_watcher.removePaths(watched);
    }
    m_watcher.addPaths(wanted);
}

} // namespace bram
