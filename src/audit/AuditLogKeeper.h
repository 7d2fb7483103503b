// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "audit/AuditEventRecord.h"
#include "audit/AuditLogHealth.h"
#include "audit/AuditLogWriter.h"

#include <optional>
#include <string_view>

namespace bram
{

/// Writes to the audit log, and keeps account of what is not in it: events that could not be written, which lie
/// in a gap, and archives that were deleted before their time. It says so to `AuditLogHealth`, and in the log
/// itself as soon as that takes records. For the store's thread.
class AuditLogKeeper
{
public:
    AuditLogKeeper(const std::filesystem::path &directory, const AuditLogLimits &limits,
                   AuditLogHealth &health, SystemLog &log);

    /// Lines that cannot be written are lost, with one line in the system log for them together:
    /// "[Brackwen][Audit] append failed: " and why.
    void append(std::string_view lines);
    /// Of events that never came here.
    void addLost(quint64 events, const QString &why);

    bool isInGap() const { return m_gap.has_value(); }
    /// Looks whether the log takes records again.
    void tryToEndGap();

    void rest() { m_writer.rest(); }

private:
    struct Gap {
        qint64 sinceMs = 0;
        quint64 lostEvents = 0;
    };

    void openGap(quint64 lostEvents, const QString &problem);
    AuditWriteResult write(AuditEventRecord record);
    void recordEarlyDeletions();

    AuditLogWriter m_writer;
    AuditLogHealth &m_health;
    SystemLog &m_log;
    const int m_maxArchives;
    AuditLogCondition m_condition;
    std::optional<Gap> m_gap;
};

} // namespace bram
