// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "audit/AuditLogFiles.h"

#include <QString>

#include <chrono>
#include <expected>
#include <filesystem>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

namespace bram
{

class SystemLog;

/// How far writing came: the bytes of whole lines that are in the file, and why it went no further
/// (empty when all are in).
struct AuditWriteResult {
    std::size_t bytes = 0;
    QString error;
};

/// Writes whole lines to the end of the audit log in `directory`, on the calling thread. The folder is made
/// (0700) and the file too (0600, at once whole). Rotation holds for each line as if it had come alone;
/// looking at the file happens once for all lines that go to it, because that costs far more than the lines
/// do. The archives are pruned whenever the folder has changed, and once a minute for their ages.
///
/// A record is never torn: a last line without line feed, left by a crash, is closed before the
/// first record goes in, and a write that fails part-way is cut back to the last whole line.
class AuditLogWriter
{
public:
    AuditLogWriter(const std::filesystem::path &directory, const AuditLogLimits &limits,
                   SystemLog &log);
    ~AuditLogWriter();
    Q_DISABLE_COPY_MOVE(AuditLogWriter)

    /// Each line comes with its line feed. The file stays open for the next lines.
    AuditWriteResult append(std::string_view lines);

    /// How many archives were deleted before their time since this was asked last.
    std::size_t takeDeletedEarly() { return std::exchange(m_deletedEarly, 0); }

    /// Closes the file: nothing is to come for a while.
    void rest();

private:
    struct OpenFile;
    bool isStillRight(std::size_t incomingBytes) const;
    std::expected<void, QString> open();
    AuditWriteResult write(std::string_view lines);
    void pruneIfNeeded();
    QString describe(const QString &error) const;

    const std::filesystem::path m_directory;
    const std::filesystem::path m_path;
    const AuditLogLimits m_limits;
    SystemLog &m_log;
    std::unique_ptr<OpenFile> m_file;
    /// When the archives were last looked through, and how the folder was then.
    std::optional<std::chrono::system_clock::time_point> m_prunedAt;
    std::chrono::system_clock::time_point m_folderChangedAt;
    std::size_t m_deletedEarly = 0;
};

} // namespace bram
