// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "audit/AuditLogFiles.h"
#include "audit/WeeklyAuditSummary.h"

#include <QList>

#include <atomic>
#include <cstddef>
#include <optional>
#include <vector>

namespace bram
{

class SystemLog;

/// How far an aggregation is, and the wish that it end. Shared between the thread that works and the one that
/// looks on.
struct AggregationProgress {
    std::atomic<std::size_t> bytesDone = 0;
    std::atomic<std::size_t> bytesTotal = 0;
    std::atomic<bool> isCancelled = false;
};

/// What a report is made of.
struct WeeklyAuditFindings {
    WeeklyAuditSummary summary = {};
    QList<AuditEventRecord> highRiskRows = {}; ///< as `highRiskAuditRows` chooses and orders them
};

struct AggregationOptions {
    qint64 sinceMs = 0; ///< records before are not counted
    qsizetype maxRows = 0; ///< of high risk
    int threads = 2; ///< at work at the same time, the calling one among them
};

/// Reads the files once and counts what is in them as it comes by; the same as to take all records of
/// `AuditLogStore::records(sinceMs)` and to apply `buildWeeklyAuditSummary` and `highRiskAuditRows`, in a
/// fraction of the time and in memory that does not grow with the log. The files are in the order of
/// `AuditLogStore::openLogFiles`. One that cannot be read to its end is logged, with what it gave counted.
/// Nothing when cancelled.
///
/// For a thread other than the main one. `log` takes lines from any thread.
std::optional<WeeklyAuditFindings> aggregateAuditLog(const std::vector<AuditLogFile> &files,
                                                     const AggregationOptions &options,
                                                     AggregationProgress &progress, SystemLog &log);

} // namespace bram
