// SPDX-License-Identifier: Apache-2.0
#include "audit/AuditLogWriter.h"

#include "system/Files.h"
#include "system/SystemLog.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace bram
{

using namespace Qt::StringLiterals;
namespace fs = std::filesystem;

namespace
{
constexpr std::chrono::minutes pruneInterval(1);
constexpr std::chrono::milliseconds settlingTime(20);
constexpr mode_t privateMode = 0600;

class FileDescriptor
{
public:
    explicit FileDescriptor(int number)
        : m_number(number)
    {
    }
    ~FileDescriptor() { close(); }
    Q_DISABLE_COPY_MOVE(FileDescriptor)

    int number() const { return m_number; }
    bool isOpen() const { return m_number >= 0; }

    /// False when closing reports an error: on network file systems, a write that failed late.
    bool close() { return m_number < 0 || ::close(std::exchange(m_number, -1)) == 0; }

private:
    int m_number;
};

/// How far writing came: the bytes of whole lines that are in the file, and why it went no further
/// (empty when all are in).
struct WriteResult {
    std::size_t bytes = 0;
    QString error;
};

QString systemError(int number)
{
    return QString::fromStdString(std::system_category().message(number));
}

std::string_view wholeLines(std::string_view bytes)
{
    return bytes.substr(0, bytes.rfind('\n') + 1);
}

std::size_t firstLineBytes(std::string_view lines)
{
    return std::min(lines.find('\n') + 1, lines.size());
}

/// The lines, from the first on, that one file takes which holds `size` bytes now.
std::string_view linesThatFit(std::string_view lines, quint64 size, quint64 maxBytes)
{
    const quint64 room = maxBytes > size ? maxBytes - size : 0;
    if (lines.size() <= room) {
        return lines;
    }
    if (const auto fitting = wholeLines(lines.substr(0, room)); !fitting.empty()) {
        return fitting;
    }
    // Either a line that is larger than a whole file may be, which gets one for itself; or the full
    // file could not be moved away and has to take everything.
    return size == 0 ? lines.substr(0, firstLineBytes(lines)) : lines;
}

/// Writes at the end of the file, which is `start` bytes long and ends with a whole line.
WriteResult writeWholeLines(int descriptor, off_t start, std::string_view lines)
{
    std::size_t written = 0;
    while (written < lines.size()) {
        const ssize_t count = ::write(descriptor, lines.data() + written, lines.size() - written);
        if (count > 0) {
            written += static_cast<std::size_t>(count);
        } else if (count == 0 || errno != EINTR) {
            const QString error = systemError(count == 0 ? EIO : errno);
            const std::size_t kept = wholeLines(lines.substr(0, written)).size();
            // Should this fail as well, the next append closes the torn line.
            [[maybe_unused]] const int cut
                = ::ftruncate(descriptor, start + static_cast<off_t>(kept));
            return {kept, error};
        }
    }
    return {written, {}};
}

WriteResult closed(FileDescriptor &file, WriteResult result)
{
    if (!file.close() && result.error.isEmpty()) {
        result.error = systemError(errno);
    }
    return result;
}

/// The first lines of a new file come into sight together with it.
WriteResult writeNewFile(const fs::path &path, std::string_view lines)
{
    fs::path temporary = path;
    temporary += ".new";
    // A leftover of a crash; it never was part of the log.
    ::unlink(temporary.c_str());
    FileDescriptor file(
        ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, privateMode));
    if (!file.isOpen()) {
        return {0, systemError(errno)};
    }
    const WriteResult result = closed(file, writeWholeLines(file.number(), 0, lines));
    if (result.bytes == 0) {
        ::unlink(temporary.c_str());
        return result;
    }
    if (::rename(temporary.c_str(), path.c_str()) != 0) {
        const QString error = systemError(errno);
        ::unlink(temporary.c_str());
        return {0, error};
    }
    return result;
}

/// Closes a torn last line with a line feed. Returns the size of the file then, or the errno
/// negated.
off_t closeTornLine(int descriptor, off_t size)
{
    char last = '\n';
    if (size > 0 && ::pread(descriptor, &last, 1, size - 1) < 0) {
        return -errno;
    }
    if (last == '\n') {
        return size;
    }
    return ::write(descriptor, "\n", 1) == 1 ? size + 1 : -errno;
}

WriteResult appendToFile(const fs::path &path, std::string_view lines)
{
    // Without O_NONBLOCK, a FIFO in the file's place would hold the thread for ever.
    FileDescriptor file(
        ::open(path.c_str(), O_RDWR | O_APPEND | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file.isOpen()) {
        return errno == ENOENT ? writeNewFile(path, lines) : WriteResult {0, systemError(errno)};
    }
    struct stat status = {};
    if (::fstat(file.number(), &status) != 0) {
        return {0, systemError(errno)};
    }
    if (!S_ISREG(status.st_mode)) {
        return {0, u"not a regular file"_s};
    }
    if ((status.st_mode & 07777 & ~privateMode) != 0) {
        // One that came from a copy, a backup or an older umask. Where it is not ours to change, the
        // record still goes in.
        [[maybe_unused]] const int narrowed = ::fchmod(file.number(), privateMode);
    }
    const off_t start = closeTornLine(file.number(), status.st_size);
    if (start < 0) {
        return {0, systemError(static_cast<int>(-start))};
    }
    return closed(file, writeWholeLines(file.number(), start, lines));
}

void logLostLines(SystemLog &log, std::string_view lost, const QString &why)
{
    const auto count = std::ranges::count(lost, '\n');
    logAuditFailure(log, u"append", count > 1 ? u"%1 (%2 events lost)"_s.arg(why).arg(count) : why);
}
/// Looking through the folder costs more than writing a line: done when an archive may have come or gone,
/// which shows in the folder's own time, and now and then because archives grow old.
void pruneIfNeeded(const fs::path &directory, const AuditLogLimits &limits, SystemLog &log,
                   AuditPruneState &pruned)
{
    using namespace std::chrono;
    struct stat status = {};
    if (::stat(directory.c_str(), &status) != 0) {
        return;
    }
    const auto now = system_clock::now();
    const system_clock::time_point changedAt(duration_cast<system_clock::duration>(
        seconds(status.st_mtim.tv_sec) + nanoseconds(status.st_mtim.tv_nsec)));
    const bool isDue = !pruned.at || now - *pruned.at >= pruneInterval || now < *pruned.at;
    // A change in the same tick of the file system's clock as the last look would not show.
    if (isDue || changedAt != pruned.folderChangedAt || *pruned.at - changedAt < settlingTime) {
        pruneOldAuditArchives(directory, limits, log);
        pruned = {now, changedAt};
    }
}
} // namespace

void appendAuditLines(const fs::path &directory, std::string_view lines,
                      const AuditLogLimits &limits, SystemLog &log, AuditPruneState &pruned)
{
    const fs::path file = currentAuditLogFile(directory);
    while (!lines.empty()) {
        const quint64 size = rotateAuditLogIfNeeded(directory, firstLineBytes(lines), limits, log);
        if (size == 0) {
            if (const auto made = makePrivateFolder(QFile::decodeName(directory.c_str())); !made) {
                logLostLines(log, lines, made.error().message);
                return;
            }
        }
        pruneIfNeeded(directory, limits, log, pruned);
        const std::string_view run = linesThatFit(lines, size, limits.maxBytes);
        const WriteResult result = appendToFile(file, run);
        lines.remove_prefix(result.bytes);
        if (!result.error.isEmpty()) {
            logLostLines(log, lines,
                         u"%1: %2"_s.arg(QFile::decodeName(file.c_str()), result.error));
            return;
        }
    }
}

} // namespace bram
