// SPDX-License-Identifier: Apache-2.0
#include "monitor/ApprovalRecorder.h"

#include "audit/AuditLogStore.h"
#include "audit/Redaction.h"
#include "model/CommandRules.h"
#include "monitor/ApprovalBoard.h"
#include "monitor/DecisionResolver.h"
#include "system/Clock.h"
#include "system/SystemLog.h"

#include <algorithm>

namespace bram
{

using namespace Qt::StringLiterals;

ApprovalRecorder::ApprovalRecorder(const Collaborators &collaborators)
    : m_collaborators(collaborators)
{
}

void ApprovalRecorder::recordRequested(const ApprovalItem &item)
{
    const auto known = m_createdAtMs.find(item.approvalId);
    if (known != m_createdAtMs.end()) {
        if (item.createdAtMs >= 1) {
            *known = std::min(*known, item.createdAtMs);
        }
        return;
    }
    m_createdAtMs.insert(item.approvalId, item.createdAtMs);
    ++m_metrics.requestedCount;
    logMetricsSnapshot(u"requested"_s, std::nullopt);
    m_collaborators.audit.append({.timestampMs = m_collaborators.clock.nowMs(),
                                  .kind = AuditKind::approvalRequested,
                                  .approvalId = item.approvalId,
                                  .agentId = item.agentId,
                                  .source = u"gateway"_s,
                                  .risk = rawText(commandRiskLevel(item.command)),
                                  .commandPreview = commandPreview(item.command)});
}

void ApprovalRecorder::recordDecisionRequested(const QString &approvalId,
                                               ApprovalDecision decision,
                                               const DecisionOrigin &origin)
{
    m_collaborators.audit.append(
        decisionRecord(AuditKind::approvalDecisionRequested, approvalId, decision, origin));
}

void ApprovalRecorder::recordIgnoredDuplicate(const QString &approvalId, ApprovalDecision decision,
                                              const DecisionOrigin &origin)
{
    auto record = decisionRecord(AuditKind::approvalDecisionIgnoredDuplicate, approvalId, decision,
                                 origin);
    record.note = u"duplicate in-flight decision ignored"_s;
    m_collaborators.audit.append(record);
}

void ApprovalRecorder::recordExpired(const ApprovalItem &item, ApprovalDecision decision,
                                     const DecisionOrigin &origin)
{
    auto record = decisionRecord(AuditKind::approvalExpired, item.approvalId, decision, origin);
    record.note = u"expiredAtMs="_s + QString::number(item.expiresAtMs);
    m_collaborators.audit.append(record);
}

void ApprovalRecorder::recordResolveFailed(const QString &approvalId, ApprovalDecision decision,
                                           const DecisionOrigin &origin, const QString &failure)
{
    auto record
        = decisionRecord(AuditKind::approvalResolveFailed, approvalId, decision, origin);
    record.note = redacted(failure);
    m_collaborators.audit.append(record);
}

void ApprovalRecorder::recordResolved(const QString &approvalId, ApprovalDecision decision,
                                      const QString &transport, const DecisionOrigin &origin)
{
    ++m_metrics.resolvedCount;
    switch (decision) {
    case ApprovalDecision::AllowOnce:
        ++m_metrics.allowOnceCount;
        break;
    case ApprovalDecision::AllowAlways:
        ++m_metrics.allowAlwaysCount;
        break;
    case ApprovalDecision::Deny:
        ++m_metrics.denyCount;
        break;
    }
    const auto latencyMs = consumeLatencyMs(approvalId);
    logMetricsSnapshot(u"resolved."_s + transport + u'.' + rawText(decision), latencyMs);
    auto record = decisionRecord(AuditKind::approvalResolved, approvalId, decision, origin);
    record.latencyMs = latencyMs;
    record.note = u"decisionSource="_s + origin.source + u" actor="_s + origin.actor;
    m_collaborators.audit.append(record);
}

void ApprovalRecorder::recordUnknownApproval(const QString &approvalId, const QString &source)
{
    ++m_metrics.unknownApprovalCount;
    logMetricsSnapshot(u"unknown."_s + source, std::nullopt);
    m_collaborators.audit.append({.timestampMs = m_collaborators.clock.nowMs(),
                                  .kind = AuditKind::approvalUnknownId,
                                  .approvalId = approvalId,
                                  .source = source});
}

void ApprovalRecorder::recordExternalResolved(const QString &approvalId, const QString &source)
{
    const auto *item = m_collaborators.board.find(approvalId);
    if (item == nullptr) {
        return;
    }
    ++m_metrics.resolvedCount;
    ++m_metrics.externalResolvedCount;
    const auto latencyMs = consumeLatencyMs(approvalId);
    logMetricsSnapshot(u"external"_s, latencyMs);
    m_collaborators.audit.append({.timestampMs = m_collaborators.clock.nowMs(),
                                  .kind = AuditKind::approvalResolvedExternal,
                                  .approvalId = approvalId,
                                  .agentId = item->agentId,
                                  .decision = u"resolved"_s,
                                  .source = source,
                                  .risk = rawText(commandRiskLevel(item->command)),
                                  .latencyMs = latencyMs,
                                  .commandPreview = commandPreview(item->command)});
}

AuditEventRecord ApprovalRecorder::decisionRecord(QLatin1StringView kind,
                                                  const QString &approvalId,
                                                  ApprovalDecision decision,
                                                  const DecisionOrigin &origin) const
{
    const auto *item = m_collaborators.board.find(approvalId);
    const QString command = m_collaborators.board.commandFor(approvalId);
    return {.timestampMs = m_collaborators.clock.nowMs(),
            .kind = kind,
            .approvalId = approvalId,
            .agentId = item != nullptr ? item->agentId : std::nullopt,
            .decision = rawText(decision),
            .source = origin.source,
            .actor = origin.actor,
            .risk = rawText(commandRiskLevel(command)),
            .commandPreview = commandPreview(command)};
}

std::optional<qint64> ApprovalRecorder::consumeLatencyMs(const QString &approvalId)
{
    const qint64 createdAtMs = m_createdAtMs.take(approvalId);
    if (createdAtMs < 1) {
        return std::nullopt;
    }
    const qint64 latencyMs = m_collaborators.clock.nowMs() - createdAtMs;
    m_metrics.latencyTotalMs += latencyMs;
    ++m_metrics.latencySamples;
    return latencyMs;
}

void ApprovalRecorder::logMetricsSnapshot(const QString &reason, std::optional<qint64> latencyMs)
{
    m_collaborators.log.write(QString(
        "[Brackwen][Metrics] reason="_L1 + reason + u' '
        + m_metrics.snapshotText(m_collaborators.board.items().size())
        + (latencyMs ? " latencyMs="_L1 + QString::number(*latencyMs) : QString())));
}

void removeApproval(ApprovalBoard &board, ApprovalRecorder &recorder, const QString &approvalId,
                    ApprovalHistoryState state)
{
    recorder.forget(approvalId);
    board.remove(approvalId, state);
}

} // namespace bram
