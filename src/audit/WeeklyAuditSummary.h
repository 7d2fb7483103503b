// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "audit/AuditEventRecord.h"
#include "audit/AuditEventView.h"
#include "model/MenuLanguage.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace bram
{

/// What a period of the audit log comes to.
struct WeeklyAuditSummary {
    qint64 totalEvents = 0;
    qint64 requested = 0;
    qint64 resolved = 0; ///< decisions made here and confirmed
    qint64 externalResolved = 0;
    qint64 unknown = 0; ///< decisions for ids that the gateway did not know
    qint64 allowOnce = 0; ///< of the resolved ones, as the next two
    qint64 allowAlways = 0;
    qint64 deny = 0;
    qint64 highRiskRequested = 0;
    qint64 highRiskResolved = 0;
    qint64 disconnects = 0;
    qint64 authFailureDisconnects = 0; ///< auth failures, and disconnects whose note speaks of one
    qint64 latencyTotalMs = 0; ///< over the resolved ones that have a latency
    qint64 latencySamples = 0;
    QHash<QString, qint64> agentCounts = {}; ///< requests by agent id
    QHash<QString, qint64> commandCounts = {}; ///< requests by command preview

    bool operator==(const WeeklyAuditSummary &) const = default;

    /// "n/a" without samples, else "250 ms".
    QString averageLatencyText() const;
    using NamedCount = std::pair<QString, qint64>;
    /// Highest count first; equal counts by name.
    QList<NamedCount> topAgents() const;
    QList<NamedCount> topCommands() const;
};

/// Counts records one after the other, without keeping them. Two folds over parts of a log can be joined.
class WeeklyAuditFold
{
public:
    void add(const AuditEventView &event);
    void add(const WeeklyAuditFold &other);
    WeeklyAuditSummary summary() const;

private:
    struct Hash : std::hash<std::string_view> {
        using is_transparent = void;
    };
    using Counts = std::unordered_map<std::string, qint64, Hash, std::equal_to<>>;
    static void count(Counts &counts, const std::optional<std::string_view> &name);
    void addRequested(const AuditEventView &event);
    void addResolved(const AuditEventView &event);

    WeeklyAuditSummary m_counters; ///< its two maps stay empty
    Counts m_agents;
    Counts m_commands;
};

WeeklyAuditSummary buildWeeklyAuditSummary(const QList<AuditEventRecord> &records);

/// What in the summary should make an operator look, one line each, or one line saying that nothing
/// does.
QStringList anomalySignalLines(const WeeklyAuditSummary &summary, MenuLanguage language);

/// The records of high risk, newest first (of one millisecond, the later one of the list first), at most
/// `maxRows`.
QList<AuditEventRecord> highRiskAuditRows(const QList<AuditEventRecord> &records,
                                          qsizetype maxRows);

} // namespace bram
