// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "audit/AuditLogFiles.h"

#include <filesystem>
#include <string_view>

namespace bram
{

class SystemLog;

/// Writes whole lines, each with its line feed, to the end of the audit log in `directory`, on the
/// calling thread. The folder is made (0700) and the file too (0600, at once whole). Rotation holds
/// for each line as if it had come alone; making the folder, looking at the file and pruning happen
/// once for all lines that go to one file, because they cost far more than the lines do.
///
/// A record is never torn: a last line without line feed, left by a crash, is closed before the
/// first record goes in, and a write that fails part-way is cut back to the last whole line. What
/// could not be written is lost, with one line in the system log: "[Brackwen][Audit] append failed:
/// " and why.
void appendAuditLines(const std::filesystem::path &directory, std::string_view lines,
                      const AuditLogLimits &limits, SystemLog &log);

} // namespace bram
