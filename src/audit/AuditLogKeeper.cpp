// SPDX-License-Identifier: Apache-2.0
#include "audit/AuditLogKeeper.h"

#include "audit/AuditRecordCodec.h"

#include <QDateTime>

#include <algorithm>
#include <string>

namespace bram
{

using namespace Qt::StringLiterals;

AuditLogKeeper::AuditLogKeeper(const std::filesystem::path &directory, const AuditLogLimits &limits,
                               AuditLogHealth &health, SystemLog &log)
    : m_writer(directory, limits, log)
    , m_health(health)
    , m_log(log)
    , m_maxArchives(limits.maxArchives)
{
}

void AuditLogKeeper::append(std::string_view lines)
{
    tryToEndGap();
    const AuditWriteResult result
        = m_gap ? AuditWriteResult {.error = m_condition.problem} : m_writer.append(lines);
    if (!result.error.isEmpty()) {
        const auto lost = std::ranges::count(lines.substr(result.bytes), '\n');
        const QString count = lost > 1 ? u" (%1 events lost)"_s.arg(lost) : QString();
        logAuditFailure(m_log, u"append", QString(result.error + count));
        openGap(static_cast<quint64>(lost), result.error);
    }
    recordEarlyDeletions();
}

void AuditLogKeeper::addLost(quint64 events, const QString &why)
{
    logAuditFailure(m_log, u"append", u"%1 events lost %2"_s.arg(events).arg(why));
    openGap(events, u"events lost "_s + why);
}

void AuditLogKeeper::openGap(quint64 lostEvents, const QString &problem)
{
    if (!m_gap) {
        m_gap = Gap {.sinceMs = QDateTime::currentMSecsSinceEpoch()};
    }
    m_gap->lostEvents += lostEvents;
    m_condition.isWritable = false;
    m_condition.problem = problem;
    m_condition.lostEvents = 0;
    m_health.report(m_condition);
}

void AuditLogKeeper::tryToEndGap()
{
    if (!m_gap) {
        return;
    }
    const AuditWriteResult result
        = write({.kind = AuditKind::auditGap,
                 .note = u"lostEvents=%1 sinceMs=%2 reason=%3"_s.arg(m_gap->lostEvents)
                             .arg(m_gap->sinceMs)
                             .arg(m_condition.problem)});
    if (!result.error.isEmpty()) {
        openGap(0, result.error);
        return;
    }
    m_condition.isWritable = true;
    m_condition.lostEvents = m_gap->lostEvents;
    m_gap.reset();
    m_health.report(m_condition);
}

AuditWriteResult AuditLogKeeper::write(AuditEventRecord record)
{
    record.timestampMs = QDateTime::currentMSecsSinceEpoch();
    std::string line;
    appendAuditLine(record, line);
    return m_writer.append(line);
}

void AuditLogKeeper::recordEarlyDeletions()
{
    const std::size_t deleted = m_writer.takeDeletedEarly();
    if (deleted == 0) {
        return;
    }
    m_condition.archivesDeletedEarly += deleted;
    m_health.report(m_condition);
    const AuditWriteResult result
        = write({.kind = AuditKind::auditArchivesDeletedEarly,
                 .note = u"deletedArchives=%1 maxArchives=%2"_s.arg(deleted).arg(m_maxArchives)});
    if (!result.error.isEmpty()) {
        openGap(1, result.error);
    }
}

} // namespace bram
