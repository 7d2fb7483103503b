// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "audit/AuditLogFiles.h"

#include <chrono>
#include <filesystem>
#include <optional>
#include <string_view>

namespace bram
{

class SystemLog;

/// When the archives were last looked through, and how the folder was then.
struct AuditPruneState {
    std::optional<std::chrono::system_clock::time_point> at;
    std::chrono::system_clock::time_point folderChangedAt;
};

/// Writes whole lines, each with its line feed, to the end of the audit log in `directory`, on the
/// calling thread. The folder is made (0700) and the file too (0600, at once whole). Rotation holds
/// for each line as if it had come alone; looking at the file happens once for all lines that go to it,
/// because that costs far more than the lines do. The archives are pruned whenever the folder has
/// changed, and once a minute for their ages.
///
/// A record is never torn: a last line without line feed, left by a crash, is closed before the
/// first record goes in, and a write that fails part-way is cut back to the last whole line. What
/// could not be written is lost, with one line in the system log: "[Brackwen][Audit] append failed:
/// " and why.
void appendAuditLines(const std::filesystem::path &directory, std::string_view lines,
                      const AuditLogLimits &limits, SystemLog &log, AuditPruneState &pruned);

} // namespace bram
