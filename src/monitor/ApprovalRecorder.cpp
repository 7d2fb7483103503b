// SPDX-License-Identifier: Apache-2.0
#include "monitor/ApprovalRecorder.h"

#include "allowlist/CommandDigest.h"
#include "audit/AuditLogStore.h"
#include "audit/AutomaticAnswers.h"
#include "audit/Redaction.h"
#include "model/CommandRules.h"
#include "monitor/ApprovalBoard.h"
#include "monitor/DecisionResolver.h"
#include "system/Clock.h"
#include "system/SystemLog.h"

#include <QStringBuilder>

#include <algorithm>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr qsizetype shortestKey = 16;

QString expiryNote(const ApprovalItem &item)
{
    return u"expiredAtMs="_s + QString::number(item.expiresAtMs);
}

/// A request that ended here without anybody's decision: one that is announced later is the truth.
bool isEndedByClock(ApprovalHistoryState state)
{
    return state != ApprovalHistoryState::Pending && state != ApprovalHistoryState::Resolved
        && !isOwnDecision(state);
}

/// Who it was belongs into every record of what somebody did, also of what came to nothing.
QString withDetail(const QString &note, const DecisionOrigin &origin)
{
    return origin.detail.isEmpty() ? note : QString(note + u' ' + origin.detail);
}
} // namespace

const QString automaticNote = u"auto-allow"_s;

QString recordedPreview(const QString &command)
{
    // The first word is a program as a rule, but it may be a key that was pasted in the wrong place.
    const QString preview = commandPreview(command);
    const qsizetype program = preview.lastIndexOf(u"=… ") + 1;
    const QStringView word = QStringView(preview).sliced(program);
    return word.size() >= shortestKey || word.contains(u':')
        ? QString(QStringView(preview).first(program) % redacted(word.toString()))
        : preview;
}

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
    const auto &[command, risk, preview] = factsOf(item.command);
    put({.timestampMs = m_collaborators.clock.nowMs(),
         .kind = AuditKind::approvalRequested,
         .approvalId = item.approvalId,
         .agentId = item.agentId,
         .source = u"gateway"_s,
         .risk = risk,
         .commandPreview = preview});
}

void ApprovalRecorder::recordDecisionRequested(const ApprovalItem &item, ApprovalDecision decision,
                                               const DecisionOrigin &origin)
{
    auto record = decisionRecord(AuditKind::approvalDecisionRequested, item, decision, origin);
    if (origin.maker == DecisionMaker::AlwaysAllowList) {
        record.note = automaticNote;
    } else if (!origin.detail.isEmpty()) {
        record.note = origin.detail;
    }
    put(std::move(record));
}

void ApprovalRecorder::recordIgnoredDuplicate(const ApprovalItem &item, ApprovalDecision decision,
                                              const DecisionOrigin &origin)
{
    auto record
        = decisionRecord(AuditKind::approvalDecisionIgnoredDuplicate, item, decision, origin);
    record.note = withDetail(u"duplicate in-flight decision ignored"_s, origin);
    put(std::move(record));
}

void ApprovalRecorder::recordExpired(const ApprovalItem &item, ApprovalDecision decision,
                                     const DecisionOrigin &origin)
{
    auto record = decisionRecord(AuditKind::approvalExpired, item, decision, origin);
    record.note = withDetail(expiryNote(item), origin);
    put(std::move(record));
}

void ApprovalRecorder::recordExpired(const ApprovalItem &item)
{
    const auto &[command, risk, preview] = factsOf(item.command);
    put({.timestampMs = m_collaborators.clock.nowMs(),
         .kind = AuditKind::approvalExpired,
         .approvalId = item.approvalId,
         .agentId = item.agentId,
         .source = DecisionOrigin::local().source,
         .risk = risk,
         .commandPreview = preview,
         .note = expiryNote(item)});
}

void ApprovalRecorder::recordResolveFailed(const ApprovalItem &item, ApprovalDecision decision,
                                           const DecisionOrigin &origin, const QString &failure)
{
    auto record = decisionRecord(AuditKind::approvalResolveFailed, item, decision, origin);
    record.note = withDetail(failure, origin);
    if (origin.maker == DecisionMaker::AlwaysAllowList) {
        *record.note += u' ' + automaticNote;
    }
    put(std::move(record));
}

void ApprovalRecorder::recordResolved(const ApprovalItem &item, ApprovalDecision decision,
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
    const auto latencyMs = consumeLatencyMs(item.approvalId);
    logMetricsSnapshot("resolved."_L1 % transport % u'.' % rawText(decision), latencyMs);
    auto record = decisionRecord(AuditKind::approvalResolved, item, decision, origin);
    record.latencyMs = latencyMs;
    record.note = "decisionSource="_L1 % origin.source % " actor="_L1 % origin.actor;
    if (origin.maker == DecisionMaker::AlwaysAllowList) {
        const auto digest = normalizedCommandDigest(item.command);
        *record.note += u' ' + (digest ? automaticAnswerNote(*digest) : automaticNote);
    } else if (!origin.detail.isEmpty()) {
        *record.note += u' ' + origin.detail;
    }
    put(std::move(record));
}

void ApprovalRecorder::recordUnknownApproval(const QString &approvalId, const QString &source)
{
    ++m_metrics.unknownApprovalCount;
    logMetricsSnapshot(u"unknown."_s + source, std::nullopt);
    put({.timestampMs = m_collaborators.clock.nowMs(),
         .kind = AuditKind::approvalUnknownId,
         .approvalId = approvalId,
         .source = source});
}

void ApprovalRecorder::recordExternalResolved(const QString &approvalId, const QString &source)
{
    const auto *item = m_collaborators.board.find(approvalId);
    const auto *row = m_collaborators.board.historyRow(approvalId);
    if (item == nullptr && (row == nullptr || !isEndedByClock(row->state))) {
        m_createdAtMs.remove(approvalId);
        return;
    }
    ++m_metrics.resolvedCount;
    ++m_metrics.externalResolvedCount;
    const auto latencyMs = consumeLatencyMs(approvalId);
    logMetricsSnapshot(u"external"_s, latencyMs);
    const auto &[command, risk, preview] = factsOf(item != nullptr ? item->command : row->command);
    put({.timestampMs = m_collaborators.clock.nowMs(),
         .kind = AuditKind::approvalResolvedExternal,
         .approvalId = approvalId,
         .agentId = item != nullptr ? item->agentId : std::nullopt,
         .decision = u"resolved"_s,
         .source = source,
         .risk = risk,
         .latencyMs = latencyMs,
         .commandPreview = preview});
}

void ApprovalRecorder::put(AuditEventRecord record)
{
    if (record.approvalId && m_exercises.contains(*record.approvalId)) {
        record.source = exerciseSource;
    }
    m_collaborators.audit.append(record);
}

AuditEventRecord ApprovalRecorder::decisionRecord(QLatin1StringView kind, const ApprovalItem &item,
                                                  ApprovalDecision decision,
                                                  const DecisionOrigin &origin)
{
    const auto &[command, risk, preview] = factsOf(item.command);
    return {.timestampMs = m_collaborators.clock.nowMs(),
            .kind = kind,
            .approvalId = item.approvalId,
            .agentId = item.agentId,
            .decision = rawText(decision),
            .source = origin.source,
            .actor = origin.actor,
            .risk = risk,
            .commandPreview = preview};
}

const ApprovalRecorder::CommandFacts &ApprovalRecorder::factsOf(const QString &command)
{
    if (!m_lastFacts || m_lastFacts->command != command) {
        m_lastFacts = {command, rawText(commandRiskLevel(command)), recordedPreview(command)};
    }
    return *m_lastFacts;
}

std::optional<qint64> ApprovalRecorder::consumeLatencyMs(const QString &approvalId)
{
    const qint64 createdAtMs = m_createdAtMs.take(approvalId);
    if (createdAtMs < 1) {
        return std::nullopt;
    }
    const qint64 latencyMs = m_collaborators.clock.nowMs() - createdAtMs;
    // The creation time is the peer's and may be anything.
    qint64 totalMs = 0;
    if (!qAddOverflow(m_metrics.latencyTotalMs, latencyMs, &totalMs)) {
        m_metrics.latencyTotalMs = totalMs;
        ++m_metrics.latencySamples;
    }
    return latencyMs;
}

void ApprovalRecorder::logMetricsSnapshot(const QString &reason, std::optional<qint64> latencyMs)
{
    m_collaborators.log.write(
        QString("[Brackwen][Metrics] reason="_L1 % reason % u' '
                % m_metrics.snapshotText(m_collaborators.board.items().size())
                % (latencyMs ? " latencyMs="_L1 + QString::number(*latencyMs) : QString())));
}

} // namespace bram
