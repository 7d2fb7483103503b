// SPDX-License-Identifier: Apache-2.0
#include "audit/AuditLogFiles.h"

#include "audit/AuditLineReader.h"
#include "system/SystemErrors.h"
#include "system/SystemLog.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <optional>
#include <string>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace bram
{

using namespace Qt::StringLiterals;
namespace fs = std::filesystem;

namespace
{
constexpr std::string_view archivePrefix = "audit-events-";
constexpr std::string_view archiveSuffix = ".jsonl";

struct Archive {
    fs::path path;
    std::optional<fs::file_time_type> modified;
};

bool isArchiveName(std::string_view name)
{
    return name.starts_with(archivePrefix) && name.ends_with(archiveSuffix);
}

bool isRegularFile(const fs::path &path)
{
    std::error_code ignored;
    return fs::is_regular_file(path, ignored);
}

std::optional<fs::file_time_type> modificationTime(const fs::path &path)
{
    std::error_code error;
    const auto time = fs::last_write_time(path, error);
    return error ? std::nullopt : std::optional(time);
}

/// Whole days do not matter here: a file is too old from the first moment past the limit.
bool isPastRetention(const std::optional<fs::file_time_type> &modified, double retentionDays)
{
    if (!modified) {
        return false;
    }
    const std::chrono::duration<double> age = fs::file_time_type::clock::now() - *modified;
    return age.count() > retentionDays * 86'400;
}

/// The archives of the folder, oldest first. An absent date compares as earlier than every date.
std::expected<std::vector<Archive>, std::error_code> archivesOldestFirst(const fs::path &directory)
{
    std::vector<Archive> archives;
    std::error_code error;
    fs::directory_iterator entry(directory, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        if (isArchiveName(entry->path().filename().native()) && isRegularFile(entry->path())) {
            archives.push_back({entry->path(), modificationTime(entry->path())});
        }
    }
    if (error) {
        return std::unexpected(error);
    }
    // By name first, so that files of one instant keep an order: their names carry the time.
    std::ranges::sort(archives, {}, &Archive::path);
    std::ranges::stable_sort(archives, {}, &Archive::modified);
    return archives;
}

QString describe(const fs::path &path, const std::error_code &error)
{
    return u"%1: %2"_s.arg(QFile::decodeName(path.c_str()), systemErrorText(error.value()));
}

/// The archive name for this moment. Two rotations in one millisecond must not end in one file.
fs::path freeArchivePath(const fs::path &directory)
{
    using namespace std::chrono;
    auto milliseconds
        = duration_cast<std::chrono::milliseconds>(system_clock::now().time_since_epoch()).count();
    while (true) {
        std::string name(archivePrefix);
        name += std::to_string(milliseconds++);
        name += archiveSuffix;
        fs::path path = directory / name;
        std::error_code ignored;
        if (!fs::exists(fs::symlink_status(path, ignored))) {
            return path;
        }
    }
}
} // namespace

fs::path currentAuditLogFile(const fs::path &directory)
{
    return directory / "audit-events.jsonl";
}

std::vector<fs::path> auditLogFilesForSummary(const fs::path &directory)
{
    std::vector<fs::path> files;
    if (auto current = currentAuditLogFile(directory); isRegularFile(current)) {
        files.push_back(std::move(current));
    }
    if (auto archives = archivesOldestFirst(directory)) {
        for (Archive &archive : *archives) {
            files.push_back(std::move(archive.path));
        }
    }
    return files;
}

std::expected<AuditLogFile, Error> AuditLogFile::open(const fs::path &path)
{
    const auto failure = [&path](int errorNumber) {
        return std::unexpected(Error {describe(path, {errorNumber, std::generic_category()})});
    };
    // Without O_NONBLOCK, opening a FIFO waits for a writer. It changes nothing for regular files.
    AuditLogFile file;
    file.m_path = path;
    file.m_descriptor = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (file.m_descriptor < 0) {
        return failure(errno);
    }
    struct stat status = {};
    if (::fstat(file.m_descriptor, &status) != 0) {
        return failure(errno);
    }
    if (!S_ISREG(status.st_mode)) {
        return std::unexpected(
            Error {u"%1: not a regular file"_s.arg(QFile::decodeName(path.c_str()))});
    }
    file.m_size = static_cast<std::size_t>(status.st_size);
    return file;
}

AuditLogFile::AuditLogFile(AuditLogFile &&other) noexcept
    : m_path(std::move(other.m_path))
    , m_size(other.m_size)
    , m_descriptor(std::exchange(other.m_descriptor, -1))
{
}

AuditLogFile::~AuditLogFile()
{
    if (m_descriptor >= 0) {
        ::close(m_descriptor);
    }
}

std::expected<void, Error> streamAuditLogLines(const fs::path &path,
                                               const std::function<void(std::string_view)> &consume)
{
    const auto file = AuditLogFile::open(path);
    if (!file) {
        return std::unexpected(file.error());
    }
    if (const auto read = AuditLineReader().read(*file, consume); !read) {
        return std::unexpected(
            Error {u"%1: %2"_s.arg(QFile::decodeName(path.c_str()), read.error().message)});
    }
    return {};
}

quint64 rotateAuditLogIfNeeded(const fs::path &directory, quint64 incomingBytes,
                               const AuditLogLimits &limits, SystemLog &log)
{
    const fs::path current = currentAuditLogFile(directory);
    std::error_code error;
    const quint64 size = fs::file_size(current, error);
    if (error) {
        return 0;
    }
    // Written so that no sum can overflow.
    const bool full = size > limits.maxBytes || incomingBytes > limits.maxBytes - size;
    if (!full && !isPastRetention(modificationTime(current), limits.retentionDays)) {
        return size;
    }
    fs::rename(current, freeArchivePath(directory), error);
    if (error) {
        logAuditFailure(log, u"rotate", describe(current, error));
        return size;
    }
    return 0;
}

std::size_t pruneOldAuditArchives(const fs::path &directory, const AuditLogLimits &limits,
                                  SystemLog &log)
{
    auto archives = archivesOldestFirst(directory);
    if (!archives) {
        logAuditFailure(log, u"prune", describe(directory, archives.error()));
        return 0;
    }
    std::error_code error;
    std::erase_if(*archives, [&](const Archive &archive) {
        if (!isPastRetention(archive.modified, limits.retentionDays)) {
            return false;
        }
        fs::remove(archive.path, error);
        if (error) {
            logAuditFailure(log, u"prune", describe(archive.path, error));
        }
        return !error;
    });
    const auto kept = static_cast<std::size_t>(std::max(limits.maxArchives, 0));
    const std::size_t excess = archives->size() > kept ? archives->size() - kept : 0;
    std::size_t deletedEarly = 0;
    for (std::size_t i = 0; i < excess; ++i) {
        const Archive &archive = archives->at(i);
        fs::remove(archive.path, error);
        if (error) {
            logAuditFailure(log, u"archive cap prune", describe(archive.path, error));
        } else if (!isPastRetention(archive.modified, limits.retentionDays)) {
            ++deletedEarly;
        }
    }
    return deletedEarly;
}

void logAuditFailure(SystemLog &log, QStringView step, QStringView description)
{
    log.write(u"[Brackwen][Audit] %1 failed: %2"_s.arg(step, description));
}

} // namespace bram
