// SPDX-License-Identifier: Apache-2.0
#include "monitor/DecisionResolver.h"

#include "audit/Redaction.h"
#include "gateway/GatewayStatus.h"
#include "model/CommandRules.h"
#include "monitor/ApprovalBoard.h"
#include "system/BackgroundTasks.h"
#include "system/Clock.h"
#include "system/Memory.h"
#include "system/NextTurn.h"

#include <QElapsedTimer>
#include <QStringBuilder>

#include <algorithm>
#include <array>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr QLatin1StringView viaGateway("gateway");
constexpr QLatin1StringView viaCommandLine("cli");
/// How long a bulk of decisions may hold the event loop before the rest waits for the next turn.
constexpr int bulkTurnMs = 8;
/// From this many decisions on, what they needed is worth giving back.
constexpr qsizetype burstSize = 1000;
constexpr int restAfterBurstMs = 500;

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

} // namespace

DecisionOrigin DecisionOrigin::local()
{
    return {u"app-local"_s, u"app-user"_s};
}

DecisionOrigin DecisionOrigin::automatic()
{
    return {u"app-local"_s, u"app-user"_s, DecisionMaker::AlwaysAllowList};
}

QString unknownApprovalPhrase(const QString &description)
{
    static constexpr std::array<QLatin1StringView, 4> phrases {
        "unknown approval id"_L1, "approval not found"_L1, "already resolved"_L1, "not pending"_L1};
    const QString lowered = description.toLower();
    const auto *phrase
        = std::ranges::find_if(phrases, [&](auto each) { return lowered.contains(each); });
    return phrase == phrases.end() ? QString() : QString(*phrase);
}

bool isUnknownApprovalError(const QString &description)
{
    return !unknownApprovalPhrase(description).isEmpty();
}

DecisionResolver::DecisionResolver(const Collaborators &collaborators)
    : m_collaborators(collaborators)
{
    // With the connection goes what it might still have answered.
    connect(&collaborators.client, &GatewayClient::stateChanged, this,
            [this] { m_unanswered.clear(); });
    m_afterBurst.setSingleShot(true);
    m_afterBurst.setInterval(restAfterBurstMs);
    connect(&m_afterBurst, &QTimer::timeout, this, [this] {
        if (!isIdle()) {
            m_afterBurst.start();
            return;
        }
        m_settledCount = 0;
        m_resolvingIds.squeeze();
        returnFreeMemory();
    });
}

bool DecisionResolver::resolve(const QString &approvalId, ApprovalDecision decision,
                               const DecisionOrigin &origin, ActivityTracking tracking)
{
    const auto &board = m_collaborators.board;
    const auto *pending = board.find(approvalId);
    return begin({pending != nullptr ? *pending
                                     : ApprovalItem {.approvalId = approvalId,
                                                     .command = board.commandFor(approvalId),
                                                     .agentId = std::nullopt},
                  decision, origin, tracking});
}

void DecisionResolver::allowAutomatically(const ApprovalItem &item)
{
    begin(
        {item, ApprovalDecision::AllowOnce, DecisionOrigin::automatic(), ActivityTracking::Record});
}

bool DecisionResolver::begin(const Attempt &attempt)
{
    const auto &item = attempt.item;
    auto &recorder = m_collaborators.recorder;
    if (m_stopped) {
        report(attempt, {DecisionOutcome::Kind::Failed, u"the program is ending"_s});
        return false;
    }
    if (isResolving(item.approvalId)) {
        recorder.recordIgnoredDuplicate(item, attempt.decision, attempt.origin);
        report(attempt, {DecisionOutcome::Kind::IgnoredDuplicate, {}});
        return false;
    }
    if (isApprovalExpired(item, m_collaborators.clock.nowMs())) {
        recorder.recordExpired(item, attempt.decision, attempt.origin);
        m_collaborators.board.remove(item.approvalId, ApprovalHistoryState::Canceled);
        report(attempt, {DecisionOutcome::Kind::Expired, {}});
        return false;
    }
    m_resolvingIds.insert(item.approvalId);
    recorder.recordDecisionRequested(item, attempt.decision, attempt.origin);
    m_collaborators.tasks.spawn(travel(this, attempt), "decision "_L1 % item.approvalId);
    return true;
}

void DecisionResolver::resolveListed(const QStringList &approvalIds, ApprovalDecision decision)
{
    const QSet<QString> wanted(approvalIds.begin(), approvalIds.end());
    QList<ApprovalItem> displayed = m_collaborators.board.displayItems();
    displayed.removeIf([&](const auto &item) { return !wanted.contains(item.approvalId); });
    m_collaborators.board.recordActivity(ActivityActor::App, bulkAction(decision),
                                         u"count="_s + QString::number(displayed.size()));
    resolveEach(displayed, decision);
}

void DecisionResolver::denyAllPendingAndDismissPopups()
{
    const QList<ApprovalItem> displayed = m_collaborators.board.displayItems();
    m_collaborators.board.recordActivity(ActivityActor::App, ActivityAction::DenyAllPending,
                                         u"count="_s + QString::number(displayed.size()));
    m_collaborators.board.dismissPopups();
    resolveEach(displayed, ApprovalDecision::Deny);
}

void DecisionResolver::resolveEach(const QList<ApprovalItem> &items, ApprovalDecision decision)
{
    const bool isRunning = !m_bulk.isEmpty();
    for (const auto &item : items) {
        m_bulk.enqueue({item, decision, DecisionOrigin::local(), ActivityTracking::Skip});
    }
    if (!isRunning) {
        continueBulk();
    }
}

void DecisionResolver::continueBulk()
{
    QElapsedTimer turn;
    turn.start();
    while (!m_bulk.isEmpty() && !turn.hasExpired(bulkTurnMs)) {
        beginOfBulk(m_bulk.dequeue());
    }
    if (!m_bulk.isEmpty()) {
        inNextTurn(this, [this] { continueBulk(); });
    }
}

/// To deny is harmless whatever has become of the request, and it may have been taken off the screen for that.
void DecisionResolver::beginOfBulk(const Attempt &attempt)
{
    const auto *now = m_collaborators.board.find(attempt.item.approvalId);
    if (attempt.decision == ApprovalDecision::Deny
        || (now != nullptr && isSameQuestion(*now, attempt.item))) {
        begin(attempt);
    } else if (now != nullptr) {
        const QString failure = u"the request has changed since it was shown"_s;
        m_collaborators.recorder.recordResolveFailed(attempt.item, attempt.decision, attempt.origin,
                                                     failure);
        report(attempt, {DecisionOutcome::Kind::Failed, failure});
    }
}

void DecisionResolver::stop()
{
    m_stopped = true;
    m_bulk.clear();
    m_commandLineTool.stop();
}

QCoro::Task<> DecisionResolver::travel(QPointer<DecisionResolver> self, Attempt attempt)
{
    const auto answer = co_await self->m_collaborators.client.resolveApproval(
        attempt.item.approvalId, attempt.decision);
    if (!self) {
        co_return;
    }
    if (answer) {
        self->onConfirmed(attempt, viaGateway);
        co_return;
    }
    if (isUnknownApprovalError(answer.error().description())) {
        self->onUnknown(attempt, viaGateway);
        co_return;
    }
    // From here on the texts are shown and kept; they are the peer's and may quote a credential.
    const QString refusal = redacted(answer.error().description());
    if (answer.error().kind == GatewayClientError::Kind::TimedOut) {
        // It has the decision and may take it yet: no other road.
        self->m_unanswered.insert(attempt.item.approvalId, attempt);
        self->onFailed(attempt, refusal, refusal);
        co_return;
    }
    if (self->m_stopped || self->m_collaborators.commandLine == CommandLineUse::Never) {
        self->onFailed(attempt, refusal, refusal);
        co_return;
    }
    const auto result
        = co_await self->m_commandLineTool.resolve(attempt.item.approvalId, attempt.decision);
    if (!self) {
        co_return;
    }
    if (result) {
        self->onConfirmed(attempt, viaCommandLine);
    } else if (isUnknownApprovalError(result.error().description())) {
        self->onUnknown(attempt, viaCommandLine);
    } else {
        const QString failure = redacted(result.error().description());
        self->onFailed(attempt, failure, refusal + u" (command-line tool: "_s + failure + u')');
    }
}

void DecisionResolver::confirmLate(const QString &approvalId)
{
    const auto found = m_unanswered.constFind(approvalId);
    if (found == m_unanswered.constEnd()) {
        return;
    }
    const Attempt attempt = *found;
    m_unanswered.erase(found);
    const auto *listed = m_collaborators.board.find(approvalId);
    if (listed == nullptr || isSameQuestion(*listed, attempt.item)) {
        onConfirmed(attempt, viaGateway);
    } else { // the id has come again with another command, which stays
        m_collaborators.recorder.recordResolved(attempt.item, attempt.decision, viaGateway,
                                                attempt.origin);
    }
}

void DecisionResolver::onConfirmed(const Attempt &attempt, const QString &transport)
{
    auto &board = m_collaborators.board;
    const auto &item = attempt.item;
    if (attempt.decision == ApprovalDecision::AllowAlways
        && m_collaborators.alwaysAllow != nullptr) {
        m_collaborators.alwaysAllow->remember(item.command);
    }
    m_collaborators.recorder.recordResolved(item, attempt.decision, transport, attempt.origin);
    board.remove(item.approvalId, historyState(attempt.decision), attempt.origin.maker);
    if (attempt.tracking == ActivityTracking::Record) {
        board.recordActivity(ActivityActor::App, singleAction(attempt.decision),
                             recordedPreview(item.command) % " ["_L1
                                 % (attempt.origin.maker == DecisionMaker::AlwaysAllowList
                                        ? automaticNote
                                        : attempt.origin.source)
                                 % u']');
    }
    settle(attempt, {DecisionOutcome::Kind::Confirmed, {}});
}

void DecisionResolver::onUnknown(const Attempt &attempt, const QString &transport)
{
    const QString &approvalId = attempt.item.approvalId;
    auto &recorder = m_collaborators.recorder;
    recorder.recordUnknownApproval(approvalId, transport + u".resolve"_s);
    recorder.recordExternalResolved(approvalId, transport + u"-unknown"_s);
    m_collaborators.board.remove(approvalId, ApprovalHistoryState::Resolved);
    m_collaborators.status.setDecisionText(u"Approval already resolved elsewhere."_s);
    settle(attempt, {DecisionOutcome::Kind::ResolvedElsewhere, {}});
}

void DecisionResolver::onFailed(const Attempt &attempt, const QString &failure,
                                const QString &shown)
{
    m_collaborators.status.setDecisionText(u"Resolve failed: "_s + failure);
    m_collaborators.recorder.recordResolveFailed(attempt.item, attempt.decision, attempt.origin,
                                                 failure);
    if (attempt.origin.maker == DecisionMaker::AlwaysAllowList && !m_stopped
        && isUndecided(attempt.item.approvalId)) {
        m_collaborators.board.add(attempt.item, AskReason::AutomaticAnswerFailed);
    }
    settle(attempt, {DecisionOutcome::Kind::Failed, shown});
}

bool DecisionResolver::isUndecided(const QString &approvalId) const
{
    const auto &rows = m_collaborators.board.history();
    const auto row = std::ranges::find(rows, approvalId, &ApprovalHistoryEntry::approvalId);
    return row == rows.end() || row->state == ApprovalHistoryState::Pending;
}

void DecisionResolver::settle(const Attempt &attempt, const DecisionOutcome &outcome)
{
    m_resolvingIds.remove(attempt.item.approvalId);
    if (++m_settledCount >= burstSize && !m_afterBurst.isActive()) {
        m_afterBurst.start();
    }
    report(attempt, outcome);
}

void DecisionResolver::report(const Attempt &attempt, const DecisionOutcome &outcome)
{
    Q_EMIT decisionSettled(attempt.item.approvalId, attempt.decision, outcome);
}

} // namespace bram
