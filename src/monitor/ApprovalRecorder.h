// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "audit/AuditEventRecord.h"
#include "model/ApprovalDecision.h"
#include "model/ApprovalItem.h"
#include "monitor/ApprovalMetrics.h"

#include <QHash>
#include <QSet>
#include <QString>

#include <optional>

namespace bram
{

class ApprovalBoard;
class AuditLogStore;
class Clock;
struct DecisionOrigin;
class SystemLog;

/// Counts what happens to requests and puts each event on record: the counters, the metrics log line and
/// the audit log.
class ApprovalRecorder
{
public:
    struct Collaborators {
        const ApprovalBoard &board;
        AuditLogStore &audit;
        const Clock &clock;
        SystemLog &log;
    };

    explicit ApprovalRecorder(const Collaborators &collaborators);

    const ApprovalMetrics &metrics() const { return m_metrics; }

    /// Everything that becomes of this made-up request is marked on record.
    void markExercise(const QString &approvalId) { m_exercises.insert(approvalId); }

    /// A request event; one repeated for a known request is not counted again.
    void recordRequested(const ApprovalItem &item);

    void recordDecisionRequested(const ApprovalItem &item, ApprovalDecision decision,
                                 const DecisionOrigin &origin);
    void recordIgnoredDuplicate(const ApprovalItem &item, ApprovalDecision decision,
                                const DecisionOrigin &origin);
    /// A decision came too late.
    void recordExpired(const ApprovalItem &item, ApprovalDecision decision,
                       const DecisionOrigin &origin);
    /// Nobody decided in time.
    void recordExpired(const ApprovalItem &item);
    /// `failure` has been masked.
    void recordResolveFailed(const ApprovalItem &item, ApprovalDecision decision,
                             const DecisionOrigin &origin, const QString &failure);

    /// The gateway has confirmed a decision that went by `transport` ("gateway" or "cli").
    void recordResolved(const ApprovalItem &item, ApprovalDecision decision,
                        const QString &transport, const DecisionOrigin &origin);
    void recordUnknownApproval(const QString &approvalId, const QString &source);

    /// Decided by another client. Counts only while the request is still pending here.
    void recordExternalResolved(const QString &approvalId, const QString &source);

    /// Drops the creation time kept for a request that was taken off the list.
    void forget(const QString &approvalId) { m_createdAtMs.remove(approvalId); }
    void forgetAll() { m_createdAtMs.clear(); }

private:
    void put(AuditEventRecord record);
    AuditEventRecord decisionRecord(QLatin1StringView kind, const ApprovalItem &item,
                                    ApprovalDecision decision, const DecisionOrigin &origin);
    /// What of a command goes on record.
    struct CommandFacts {
        QString command;
        QString risk;
        QString preview;
    };
    const CommandFacts &factsOf(const QString &command);
    std::optional<qint64> consumeLatencyMs(const QString &approvalId);
    void logMetricsSnapshot(const QString &reason, std::optional<qint64> latencyMs);

    Collaborators m_collaborators;
    ApprovalMetrics m_metrics;
    QHash<QString, qint64> m_createdAtMs; ///< by approval id, while pending
    QSet<QString> m_exercises; ///< approval ids; two for each exercise that was ordered
    std::optional<CommandFacts> m_lastFacts; ///< the events of one request often follow each other
};

/// Marks what the always-allow list has decided, in records and in the activity feed.
extern const QString automaticNote;

/// The preview of a command as it may stand on record: with what looks like a secret masked.
QString recordedPreview(const QString &command);

} // namespace bram
