// SPDX-License-Identifier: Apache-2.0
#include "monitor/DecisionResolver.h"

#include "gateway/GatewayStatus.h"
#include "model/CommandRules.h"
#include "monitor/ApprovalBoard.h"
#include "monitor/CommandLineFallback.h"
#include "system/BackgroundTasks.h"
#include "system/Clock.h"

#include <algorithm>
#include <array>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr QLatin1StringView viaGateway("gateway");
constexpr QLatin1StringView viaCommandLine("cli");

ApprovalHistoryState historyState(ApprovalDecision decision)
{
    switch (decision) {
    case ApprovalDecision::AllowOnce:
        return ApprovalHistoryState::AllowOnce;
    case ApprovalDecision::AllowAlways:
        return ApprovalHistoryState::AllowAlways;
    case ApprovalDecision::Deny:
        return ApprovalHistoryState::Deny;
    }
    Q_UNREACHABLE();
}

ActivityAction singleAction(ApprovalDecision decision)
{
    switch (decision) {
    case ApprovalDecision::AllowOnce:
        return ActivityAction::AllowOnce;
    case ApprovalDecision::AllowAlways:
        return ActivityAction::AllowAlways;
    case ApprovalDecision::Deny:
        return ActivityAction::Deny;
    }
    Q_UNREACHABLE();
}

ActivityAction bulkAction(ApprovalDecision decision)
{
    switch (decision) {
    case ApprovalDecision::AllowOnce:
        return ActivityAction::ApproveAllPending;
    case ApprovalDecision::AllowAlways:
        return ActivityAction::AlwaysAllowAllPending;
    case ApprovalDecision::Deny:
        return ActivityAction::DenyAllPending;
    }
    Q_UNREACHABLE();
}

QStringList idsOf(const QList<ApprovalItem> &items)
{
    QStringList ids;
    ids.reserve(items.size());
    for (const auto &item : items) {
        ids.append(item.approvalId);
    }
    return ids;
}
} // namespace

DecisionOrigin DecisionOrigin::local()
{
    return {u"app-local"_s, u"app-user"_s};
}

bool isUnknownApprovalError(const QString &description)
{
    static constexpr std::array<QLatin1StringView, 4> phrases {
        "unknown approval id"_L1, "approval not found"_L1, "already resolved"_L1, "not pending"_L1};
    const QString lowered = description.toLower();
    return std::ranges::any_of(phrases, [&](auto phrase) { return lowered.contains(phrase); });
}

DecisionResolver::DecisionResolver(const Collaborators &collaborators)
    : m_collaborators(collaborators)
{
}

void DecisionResolver::resolve(const QString &approvalId, ApprovalDecision decision,
                               const DecisionOrigin &origin, ActivityTracking tracking)
{
    const Attempt attempt {approvalId, decision, origin, tracking};
    auto &recorder = m_collaborators.recorder;
    if (isResolving(approvalId)) {
        recorder.recordIgnoredDuplicate(approvalId, decision, origin);
        Q_EMIT decisionSettled(approvalId, decision, {DecisionOutcome::Kind::IgnoredDuplicate, {}});
        return;
    }
    const auto *item = m_collaborators.board.find(approvalId);
    if (item != nullptr && isApprovalExpired(*item, m_collaborators.clock.nowMs())) {
        recorder.recordExpired(*item, decision, origin);
        removeApproval(m_collaborators.board, recorder, approvalId, ApprovalHistoryState::Canceled);
        Q_EMIT decisionSettled(approvalId, decision, {DecisionOutcome::Kind::Expired, {}});
        return;
    }
    m_resolvingIds.insert(approvalId);
    recorder.recordDecisionRequested(approvalId, decision, origin);
    m_collaborators.tasks.spawn(travel(this, attempt), u"decision "_s + approvalId);
}

void DecisionResolver::resolveListed(const QStringList &approvalIds, ApprovalDecision decision)
{
    QStringList displayed;
    for (const auto &item : m_collaborators.board.displayItems()) {
        if (approvalIds.contains(item.approvalId)) {
            displayed.append(item.approvalId);
        }
    }
    m_collaborators.board.recordActivity(ActivityActor::App, bulkAction(decision),
                                         u"count="_s + QString::number(displayed.size()));
    resolveEach(displayed, decision);
}

void DecisionResolver::resolveAllPending(ApprovalDecision decision)
{
    resolveListed(idsOf(m_collaborators.board.displayItems()), decision);
}

void DecisionResolver::denyAllPendingAndDismissPopups()
{
    const QStringList displayed = idsOf(m_collaborators.board.displayItems());
    m_collaborators.board.recordActivity(ActivityActor::App, ActivityAction::DenyAllPending,
                                         u"count="_s + QString::number(displayed.size()));
    m_collaborators.board.dismissPopups();
    resolveEach(displayed, ApprovalDecision::Deny);
}

void DecisionResolver::resolveEach(const QStringList &approvalIds, ApprovalDecision decision)
{
    for (const auto &approvalId : approvalIds) {
        resolve(approvalId, decision, DecisionOrigin::local(), ActivityTracking::Skip);
    }
}

QCoro::Task<> DecisionResolver::travel(QPointer<DecisionResolver> self, Attempt attempt)
{
    const auto answer = co_await self->m_collaborators.client.resolveApproval(attempt.approvalId,
                                                                              attempt.decision);
    if (!self) {
        co_return;
    }
    if (answer) {
        self->onConfirmed(attempt, viaGateway);
        co_return;
    }
    const QString refusal = answer.error().description();
    if (isUnknownApprovalError(refusal)) {
        self->onUnknown(attempt, viaGateway);
        co_return;
    }
    if (self->m_stopped || self->m_collaborators.commandLine == CommandLineUse::Never) {
        self->onFailed(attempt, refusal, refusal);
        co_return;
    }
    const auto result = co_await resolveViaCommandLine(attempt.approvalId, attempt.decision);
    if (!self) {
        co_return;
    }
    if (result) {
        self->onConfirmed(attempt, viaCommandLine);
    } else if (isUnknownApprovalError(result.error().description())) {
        self->onUnknown(attempt, viaCommandLine);
    } else {
        const QString failure = result.error().description();
        self->onFailed(attempt, failure, refusal + u" (command-line tool: "_s + failure + u')');
    }
}

void DecisionResolver::onConfirmed(const Attempt &attempt, const QString &transport)
{
    auto &board = m_collaborators.board;
    const QString command = board.commandFor(attempt.approvalId);
    if (attempt.decision == ApprovalDecision::AllowAlways
        && m_collaborators.alwaysAllow != nullptr) {
        m_collaborators.alwaysAllow->remember(command);
    }
    m_collaborators.recorder.recordResolved(attempt.approvalId, attempt.decision, transport,
                                            attempt.origin);
    removeApproval(board, m_collaborators.recorder, attempt.approvalId,
                   historyState(attempt.decision));
    if (attempt.tracking == ActivityTracking::Record) {
        board.recordActivity(ActivityActor::App, singleAction(attempt.decision),
                             commandPreview(command) + u" ["_s + attempt.origin.source + u']');
    }
    settle(attempt, {DecisionOutcome::Kind::Confirmed, {}});
}

void DecisionResolver::onUnknown(const Attempt &attempt, const QString &transport)
{
    auto &recorder = m_collaborators.recorder;
    recorder.recordUnknownApproval(attempt.approvalId, transport + u".resolve"_s);
    recorder.recordExternalResolved(attempt.approvalId, transport + u"-unknown"_s);
    removeApproval(m_collaborators.board, recorder, attempt.approvalId,
                   ApprovalHistoryState::Resolved);
    m_collaborators.status.setDecisionText(u"Approval already resolved elsewhere."_s);
    settle(attempt, {DecisionOutcome::Kind::ResolvedElsewhere, {}});
}

void DecisionResolver::onFailed(const Attempt &attempt, const QString &failure,
                                const QString &shown)
{
    m_collaborators.status.setDecisionText(u"Resolve failed: "_s + failure);
    m_collaborators.recorder.recordResolveFailed(attempt.approvalId, attempt.decision,
                                                 attempt.origin, failure);
    settle(attempt, {DecisionOutcome::Kind::Failed, shown});
}

void DecisionResolver::settle(const Attempt &attempt, const DecisionOutcome &outcome)
{
    m_resolvingIds.remove(attempt.approvalId);
    Q_EMIT decisionSettled(attempt.approvalId, attempt.decision, outcome);
}

} // namespace bram
