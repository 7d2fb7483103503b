// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "audit/AuditLogFiles.h"
#include "audit/WeeklyAuditSummary.h"

#include <vector>

namespace bram::bench
{

/// The same counts as the program's, by one thread that parses one line at a time with simdjson's on-demand
/// interface, and goes no further than the fields it needs: no check of the others, no lines of other
/// writers, no rows for the table, no cancelling.
WeeklyAuditSummary floorFold(const std::vector<AuditLogFile> &files, qint64 sinceMs);

} // namespace bram::bench
