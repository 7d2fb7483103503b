// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/Error.h"

#include <QStringView>

#include <expected>
#include <filesystem>
#include <functional>
#include <string_view>
#include <vector>

namespace bram
{

class SystemLog;

/// How large and how old the audit log may become. The defaults are the application's own values.
struct AuditLogLimits {
    /// A line that would take the current file past this rotates it first.
    quint64 maxBytes = 10'485'760;
    /// Archives last written longer ago are deleted, a current file is rotated.
    double retentionDays = 30;
    /// How many archives stay, the youngest.
    int maxArchives = 24;
    /// Lines that may wait in memory, beside those being written; about a million events. Reached
    /// only when the disk is stuck, or by a flood of events from a gateway gone wrong.
    quint64 maxPendingBytes = 268'435'456;
};

/// A file of the log, open for reading: what it held when it was opened can be read from then on, also after it
/// has been rotated away or pruned.
class AuditLogFile
{
public:
    /// Fails when it is no regular file or cannot be read. Waits for nobody: a FIFO or device is refused.
    static std::expected<AuditLogFile, Error> open(const std::filesystem::path &path);

    AuditLogFile(AuditLogFile &&other) noexcept;
    ~AuditLogFile();
    AuditLogFile &operator=(AuditLogFile &&) = delete;

    const std::filesystem::path &path() const { return m_path; }
    /// In bytes, when it was opened.
    std::size_t size() const { return m_size; }
    int descriptor() const { return m_descriptor; }

private:
    AuditLogFile() = default;

    std::filesystem::path m_path;
    std::size_t m_size = 0;
    int m_descriptor = -1;
};

// The steps of keeping the audit log, each for itself and without state, on the calling thread:
// the audit store's own. The folder holds the current file, "audit-events.jsonl", and archives,
// which are all regular files named "audit-events-" … ".jsonl"; anything else in it is never
// touched.
//
// Failures do not travel further than this: they become one line in the system log,
// "[Brackwen][Audit] STEP failed: " and the error's description.

/// The current file of the audit log in this folder, whether or not it exists.
std::filesystem::path currentAuditLogFile(const std::filesystem::path &directory);

/// The current file if it exists, then the archives by modification date, oldest first (an archive
/// whose date cannot be read comes before all others). Empty when the folder cannot be listed.
std::vector<std::filesystem::path> auditLogFilesForSummary(const std::filesystem::path &directory);

/// Hands every line of the file to `consume`, in order, as raw bytes without the line feed; the
/// bytes are valid during the call only. A last line without line feed is handed on too. A line of
/// more than 16 MiB is nobody's record and is passed over. Fails, with the lines so far handed on,
/// when the file is no regular file or cannot be read; a FIFO or device is not even opened.
std::expected<void, Error>
streamAuditLogLines(const std::filesystem::path &file,
                    const std::function<void(std::string_view)> &consume);

/// Makes the current file an archive when `incomingBytes` more would take it past the size limit,
/// or when it was last written longer ago than the retention time. The archive is named after the
/// current time in milliseconds, or the next millisecond whose name is free. Logs "rotate failed"
/// when the move fails. Returns the size of the file that the bytes now go to: 0 when there is none
/// yet.
quint64 rotateAuditLogIfNeeded(const std::filesystem::path &directory, quint64 incomingBytes,
                               const AuditLogLimits &limits, SystemLog &log);

/// Deletes the archives past the retention time, then the oldest beyond `maxArchives`. Logs "prune
/// failed" or "archive cap prune failed" for each that cannot be deleted, and goes on. Returns how many it has
/// deleted whose retention time was not over.
std::size_t pruneOldAuditArchives(const std::filesystem::path &directory,
                                  const AuditLogLimits &limits, SystemLog &log);

/// Writes one line of the room's five: "[Brackwen][Audit] " STEP " failed: " DESCRIPTION. `step` is
/// one of "append", "rotate", "prune", "archive cap prune" and "read".
void logAuditFailure(SystemLog &log, QStringView step, QStringView description);

} // namespace bram
