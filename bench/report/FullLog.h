// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "audit/AuditLogFiles.h"

#include <QString>

#include <vector>

namespace bram::bench
{

/// The first event of the log; the others come a second apart.
inline constexpr qint64 firstTimestampMs = 1'718'000'000'000;

/// Writes an audit log into `folder` until it holds all the files it may hold, all but the last as long as
/// they may be: requests that are asked, decided and resolved, of several agents, with some Korean, some
/// escapes and some lost connections. Ends the process when it cannot. Gives the files, opened.
std::vector<AuditLogFile> writeFullLog(const QString &folder);

} // namespace bram::bench
