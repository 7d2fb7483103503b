// SPDX-License-Identifier: Apache-2.0
#include "audit/AuditLogFiles.h"

#include "system/SystemLog.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <chrono>
#include <optional>
#include <string>

namespace bram
{

using namespace Qt::StringLiterals;
namespace fs = std::filesystem;

namespace
{
constexpr std::string_view archivePrefix = "audit-events-";
constexpr std::string_view archiveSuffix = ".jsonl";
constexpr std::size_t maxLineBytes = 16 * 1024 * 1024;

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
    return u"%1: %2"_s.arg(QFile::decodeName(path.c_str()),
                           QString::fromStdString(error.message()));
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

/// Cuts the bytes that arrive in pieces of any size into lines.
class LineCutter
{
public:
    explicit LineCutter(const std::function<void(std::string_view)> &consume)
        : m_consume(consume)
    {
    }

    void feed(std::string_view bytes)
    {
        for (auto end = bytes.find('\n'); end != bytes.npos; end = bytes.find('\n')) {
            keep(bytes.substr(0, end));
            finish();
            bytes.remove_prefix(end + 1);
        }
        keep(bytes);
    }

    /// Ends the line that is open, if there is one.
    void finish()
    {
        if (!m_tooLong && !m_line.empty()) {
            m_consume(m_line);
        }
        m_line.clear();
        m_tooLong = false;
    }

private:
    void keep(std::string_view bytes)
    {
        m_tooLong = m_tooLong || m_line.size() + bytes.size() > maxLineBytes;
        if (m_tooLong) {
            m_line.clear();
        } else {
            m_line += bytes;
        }
    }

    const std::function<void(std::string_view)> &m_consume;
    std::string m_line;
    bool m_tooLong = false;
};
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

std::expected<void, Error> streamAuditLogLines(const fs::path &path,
                                               const std::function<void(std::string_view)> &consume)
{
    QFile file(QFile::decodeName(path.c_str()));
    const auto failure = [&file](const QString &why) {
        return std::unexpected(Error {u"%1: %2"_s.arg(file.fileName(), why)});
    };
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        return failure(u"not a regular file"_s);
    }
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        return failure(file.errorString());
    }
    LineCutter lines(consume);
    std::array<char, 65'536> chunk;
    while (true) {
        const qint64 count = file.read(chunk.data(), chunk.size());
        if (count < 0) {
            return failure(file.errorString());
        }
        if (count == 0) {
            break;
        }
        lines.feed({chunk.data(), static_cast<std::size_t>(count)});
    }
    lines.finish();
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

void pruneOldAuditArchives(const fs::path &directory, const AuditLogLimits &limits, SystemLog &log)
{
    auto archives = archivesOldestFirst(directory);
    if (!archives) {
        logAuditFailure(log, u"prune", describe(directory, archives.error()));
        return;
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
    for (std::size_t i = 0; i < excess; ++i) {
        fs::remove(archives->at(i).path, error);
        if (error) {
            logAuditFailure(log, u"archive cap prune", describe(archives->at(i).path, error));
        }
    }
}

void logAuditFailure(SystemLog &log, QStringView step, QStringView description)
{
    log.write(u"[Brackwen][Audit] %1 failed: %2"_s.arg(step, description));
}

} // namespace bram
