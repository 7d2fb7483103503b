// SPDX-License-Identifier: Apache-2.0
#include "audit/AuditLogWriter.h"

#include "system/Files.h"
#include "system/SystemErrors.h"
#include "system/SystemLog.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
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
AuditWriteResult writeWholeLines(int descriptor, off_t start, std::string_view lines)
{
    std::size_t written = 0;
    while (written < lines.size()) {
        const ssize_t count = ::write(descriptor, lines.data() + written, lines.size() - written);
        if (count > 0) {
            written += static_cast<std::size_t>(count);
        } else if (count == 0 || errno != EINTR) {
            const QString error = systemErrorText(count == 0 ? EIO : errno);
            const std::size_t kept = wholeLines(lines.substr(0, written)).size();
            // Should this fail as well, the next append closes the torn line.
            [[maybe_unused]] const int cut
                = ::ftruncate(descriptor, start + static_cast<off_t>(kept));
            return {kept, error};
        }
    }
    return {written, {}};
}

AuditWriteResult closed(FileDescriptor &file, AuditWriteResult result)
{
    if (!file.close() && result.error.isEmpty()) {
        result.error = systemErrorText(errno);
    }
    return result;
}

/// The first lines of a new file come into sight together with it.
AuditWriteResult writeNewFile(const fs::path &path, std::string_view lines)
{
    fs::path temporary = path;
    temporary += ".new";
    // A leftover of a crash; it never was part of the log.
    ::unlink(temporary.c_str());
    FileDescriptor file(
        ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, privateMode));
    if (!file.isOpen()) {
        return {0, systemErrorText(errno)};
    }
    const AuditWriteResult result = closed(file, writeWholeLines(file.number(), 0, lines));
    if (result.bytes == 0) {
        ::unlink(temporary.c_str());
        return result;
    }
    if (::rename(temporary.c_str(), path.c_str()) != 0) {
        const QString error = systemErrorText(errno);
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

std::chrono::system_clock::time_point toTimePoint(const timespec &time)
{
    using namespace std::chrono;
    return system_clock::time_point(
        duration_cast<system_clock::duration>(seconds(time.tv_sec) + nanoseconds(time.tv_nsec)));
}
} // namespace

/// The current file between two appends. It ends with a whole line.
struct AuditLogWriter::OpenFile {
    explicit OpenFile(int number)
        : descriptor(number)
    {
    }

    FileDescriptor descriptor;
    struct stat status = {}; ///< as it was when it was opened
    off_t size = 0; ///< as we left it
};

AuditLogWriter::AuditLogWriter(const fs::path &directory, const AuditLogLimits &limits,
                               SystemLog &log)
    : m_directory(directory)
    , m_path(currentAuditLogFile(directory))
    , m_limits(limits)
    , m_log(log)
{
}

AuditLogWriter::~AuditLogWriter()
{
    rest();
}

AuditWriteResult AuditLogWriter::append(std::string_view lines)
{
    AuditWriteResult whole;
    while (!lines.empty()) {
        const std::size_t incoming = firstLineBytes(lines);
        if (!isStillRight(incoming)) {
            rest();
        }
        const quint64 size = m_file
            ? static_cast<quint64>(m_file->size)
            : rotateAuditLogIfNeeded(m_directory, incoming, m_limits, m_log);
        if (size == 0) {
            if (const auto made = makePrivateFolder(QFile::decodeName(m_directory.c_str()));
                !made) {
                whole.error = made.error().message;
                return whole;
            }
        }
        pruneIfNeeded();
        const AuditWriteResult result = write(linesThatFit(lines, size, m_limits.maxBytes));
        lines.remove_prefix(result.bytes);
        whole.bytes += result.bytes;
        if (!result.error.isEmpty()) {
            whole.error = describe(result.error);
            return whole;
        }
    }
    return whole;
}

void AuditLogWriter::rest()
{
    if (m_file && !m_file->descriptor.close()) {
        logAuditFailure(m_log, u"append", describe(systemErrorText(errno)));
    }
    m_file.reset();
}

/// Whether the file that we have open still is the current one, as we left it, and takes more without
/// being rotated. If not, it is looked at from the beginning.
bool AuditLogWriter::isStillRight(std::size_t incomingBytes) const
{
    struct stat status = {};
    if (!m_file || ::stat(m_path.c_str(), &status) != 0) {
        return false;
    }
    const std::chrono::duration<double> age
        = std::chrono::system_clock::now() - toTimePoint(status.st_mtim);
    return status.st_dev == m_file->status.st_dev && status.st_ino == m_file->status.st_ino
        && (status.st_mode & 07777 & ~privateMode) == 0 && status.st_size == m_file->size
        && static_cast<quint64>(status.st_size) + incomingBytes <= m_limits.maxBytes
        && age.count() <= m_limits.retentionDays * 86'400;
}

/// Opens the current file, if there is one, and makes it end with a whole line.
std::expected<void, QString> AuditLogWriter::open()
{
    // Without O_NONBLOCK, a FIFO in the file's place would hold the thread for ever.
    auto file = std::make_unique<OpenFile>(
        ::open(m_path.c_str(), O_RDWR | O_APPEND | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    const int descriptor = file->descriptor.number();
    if (descriptor < 0 && errno == ENOENT) {
        return {};
    }
    if (descriptor < 0 || ::fstat(descriptor, &file->status) != 0) {
        return std::unexpected(systemErrorText(errno));
    }
    if (!S_ISREG(file->status.st_mode)) {
        return std::unexpected(u"not a regular file"_s);
    }
    if ((file->status.st_mode & 07777 & ~privateMode) != 0) {
        // One that came from a copy, a backup or an older umask. Where it is not ours to change, the
        // record still goes in.
        [[maybe_unused]] const int narrowed = ::fchmod(descriptor, privateMode);
    }
    file->size = closeTornLine(descriptor, file->status.st_size);
    if (file->size < 0) {
        return std::unexpected(systemErrorText(static_cast<int>(-file->size)));
    }
    m_file = std::move(file);
    return {};
}

AuditWriteResult AuditLogWriter::write(std::string_view lines)
{
    if (!m_file) {
        if (const auto opened = open(); !opened) {
            return {0, opened.error()};
        }
    }
    if (!m_file) {
        return writeNewFile(m_path, lines);
    }
    AuditWriteResult result = writeWholeLines(m_file->descriptor.number(), m_file->size, lines);
    m_file->size += static_cast<off_t>(result.bytes);
    if (!result.error.isEmpty()) {
        m_file.reset();
    }
    return result;
}

QString AuditLogWriter::describe(const QString &error) const
{
    return u"%1: %2"_s.arg(QFile::decodeName(m_path.c_str()), error);
}

/// Looking through the folder costs more than writing a line: done when an archive may have come or gone,
/// which shows in the folder's own time, and now and then because archives grow old.
void AuditLogWriter::pruneIfNeeded()
{
    struct stat status = {};
    if (::stat(m_directory.c_str(), &status) != 0) {
        return;
    }
    const auto now = std::chrono::system_clock::now();
    const auto changedAt = toTimePoint(status.st_mtim);
    const bool isDue = !m_prunedAt || now - *m_prunedAt >= pruneInterval || now < *m_prunedAt;
    // A change in the same tick of the file system's clock as the last look would not show.
    if (isDue || changedAt != m_folderChangedAt || *m_prunedAt - changedAt < settlingTime) {
        m_deletedEarly += pruneOldAuditArchives(m_directory, m_limits, m_log);
        m_prunedAt = now;
        m_folderChangedAt = changedAt;
    }
}

} // namespace bram
