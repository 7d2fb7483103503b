// SPDX-License-Identifier: Apache-2.0
#include "monitor/ApprovalMonitor.h"

#include "gateway/GatewaySession.h"
#include "gateway/GatewayStatus.h"
#include "system/BackgroundTasks.h"
#include "system/SystemLog.h"

#include <QStringBuilder>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
/// Of a command that is not answered by itself.
AskReason askReason(AlwaysAllowVerdict verdict)
{
    switch (verdict) {
    case AlwaysAllowVerdict::Unknown:
        return AskReason::Usual;
    case AlwaysAllowVerdict::Allowed:
        return AskReason::NotRecordable;
    case AlwaysAllowVerdict::NotExact:
        return AskReason::NotExact;
    }
    Q_UNREACHABLE();
}
} // namespace

ApprovalMonitor::ApprovalMonitor(const Collaborators &collaborators)
    : m_collaborators(collaborators)
    , m_board(collaborators.clock, collaborators.log, collaborators.ports)
    , m_recorder({m_board, collaborators.audit, collaborators.clock, collaborators.log})
    , m_resolver({.board = m_board,
                  .recorder = m_recorder,
                  .client = collaborators.client,
                  .status = collaborators.status,
                  .tasks = collaborators.tasks,
                  .clock = collaborators.clock,
                  .alwaysAllow = collaborators.ports.alwaysAllow,
                  .commandLine = collaborators.commandLine})
    , m_expiry(collaborators.clock)
    , m_supervision({.session = collaborators.session,
                     .status = collaborators.status,
                     .audit = collaborators.audit,
                     .clock = collaborators.clock,
                     .log = collaborators.log})
    , m_menuState(m_board, collaborators.status, collaborators.log)
{
    connect(&collaborators.client, &GatewayClient::eventReceived, this,
            &ApprovalMonitor::handleGatewayEvent);
    connect(&collaborators.client, &GatewayClient::stateChanged, this,
            &ApprovalMonitor::handleConnectionState);
    connect(&collaborators.client, &GatewayClient::handshakeCompleted, this,
            [this] { m_supervision.handleHandshakeCompleted(); });
    connect(&collaborators.client, &GatewayClient::waitingForKeyring, this,
            [this] { m_collaborators.status.showWaitingForKeyring(); });
    connect(&collaborators.client, &GatewayClient::messageRefused, this,
            [this](qint64 bytes) { m_supervision.handleRefusedMessage(bytes); });
    connect(&collaborators.client, &GatewayClient::decisionConfirmedLate, &m_resolver,
            &DecisionResolver::confirmLate);
    connect(&collaborators.agents, &AgentSelection::selectedAgentChanged, &m_board,
            &ApprovalBoard::applyAgentChoice);
    const auto forget = [this](const QString &approvalId) {
        m_recorder.forget(approvalId);
        m_expiry.forget(approvalId);
    };
    connect(&m_board, &ApprovalBoard::requestRemoved, this, forget);
    connect(&m_board, &ApprovalBoard::requestForgotten, this, forget);
    connect(&m_expiry, &ExpiryWatch::expired, this, &ApprovalMonitor::onExpired);
    connect(&m_resolver, &DecisionResolver::decisionSettled, this,
            [this](const QString &approvalId) {
                m_menuState.note(
                    u"refresh"_s); // before the announcement of our own decision names itself
                // It may have failed after the request's time was over; and one whose automatic answer has failed
                // is listed only now.
                if (const auto *item = m_board.find(approvalId)) {
                    m_expiry.watch(*item);
                }
            });
    connect(&m_board, &ApprovalBoard::displayItemsChanged, this,
            [this] { m_menuState.note(u"refresh"_s); });
    connect(&m_board, &ApprovalBoard::decidedInPopup, this,
            [this](const QString &approvalId, ApprovalDecision decision) {
                m_resolver.resolve(approvalId, decision, DecisionOrigin::local(),
                                   ActivityTracking::Record);
            });
}

void ApprovalMonitor::start()
{
    m_collaborators.tasks.spawn(startUp(this), u"start"_s);
}

QCoro::Task<> ApprovalMonitor::startUp(QPointer<ApprovalMonitor> self)
{
    co_await self->m_collaborators.session.migrateLegacyCredentials();
    if (!self) {
        co_return;
    }
    self->m_collaborators.agents.start();
    self->m_collaborators.session.connectGateway();
    Q_EMIT self->started();
}

void ApprovalMonitor::stop()
{
    m_resolver.stop();
    m_expiry.clear();
    m_collaborators.session.stop();
}

void ApprovalMonitor::reconnectGateway()
{
    m_board.recordActivity(ActivityActor::App, ActivityAction::ReconnectGateway, {});
    m_collaborators.session.connectGateway();
}

void ApprovalMonitor::reloadGatewayToken()
{
    if (m_collaborators.session.reloadGatewayTokenFromConfig()) {
        m_supervision.allowAutomaticTokenResync();
        m_board.recordActivity(ActivityActor::App, ActivityAction::ReloadGatewayToken, {});
    }
}

void ApprovalMonitor::clearPendingApprovals()
{
    m_recorder.forgetAll();
    m_expiry.clear();
    m_board.clearPending();
}

void ApprovalMonitor::recordActivity(ActivityActor actor, ActivityAction action,
                                     const QString &detail)
{
    m_board.recordActivity(actor, action, detail);
}

void ApprovalMonitor::clearHistory()
{
    m_board.clearHistory();
}

void ApprovalMonitor::handleGatewayEvent(const GatewayEvent &event)
{
    showConnectionAsWorking();
    if (const auto *requested = std::get_if<ApprovalRequested>(&event)) {
        onApprovalRequested(requested->item);
    } else {
        onApprovalResolved(std::get<ApprovalResolved>(event).approvalId);
    }
}

void ApprovalMonitor::handleExercise(const ApprovalItem &item)
{
    m_recorder.markExercise(item.approvalId);
    handleGatewayEvent(ApprovalRequested {item});
}

void ApprovalMonitor::handleConnectionState(const GatewayConnectionState &state)
{
    m_supervision.handleConnectionState(state);
    m_menuState.note(std::holds_alternative<GatewayConnecting>(state) ? u"state.connecting"_s
                         : std::holds_alternative<GatewayConnected>(state)
                         ? u"state.connected"_s
                         : u"state.disconnected"_s);
}

void ApprovalMonitor::recoverFromSimulation()
{
    m_supervision.endExercise();
    // The refusal itself may have led to a new connection; another one would only cut decisions off.
    if (m_collaborators.status.lines().connectionIndicator != IndicatorState::Green) {
        m_collaborators.session.connectGateway();
    }
}

void ApprovalMonitor::showConnectionAsWorking()
{
    if (!m_collaborators.client.isHandshakeCompleted()) {
        return; // it may be anybody's, or made up for an exercise
    }
    auto &status = m_collaborators.status;
    if (status.lines().connectionIndicator != IndicatorState::Green) {
        status.setConnection(u"Gateway connected"_s, IndicatorState::Green);
    }
    const auto token = tokenIndicator(status.lines().tokenState);
    if (token != IndicatorState::Red && token != IndicatorState::Green) {
        status.setTokenState(TokenSyncState::Matching);
    }
}

void ApprovalMonitor::onApprovalRequested(const ApprovalItem &item)
{
    m_collaborators.log.write(
        QString("[Brackwen] event exec.approval.requested id="_L1 % item.approvalId));
    m_recorder.recordRequested(item);
    const auto *rules = m_collaborators.ports.alwaysAllow;
    const auto verdict
        = rules != nullptr ? rules->verdict(item.command) : AlwaysAllowVerdict::Unknown;
    // Nothing is answered by itself that cannot be put on record.
    if (verdict == AlwaysAllowVerdict::Allowed && auditHealth().condition().isWritable) {
        m_board.addToHistory(item);
        m_resolver.allowAutomatically(item);
        m_menuState.note(u"approval.auto-allow"_s);
        return;
    }
    m_board.add(item, askReason(verdict));
    m_expiry.watch(item);
    m_menuState.note(u"approval.requested"_s);
}

void ApprovalMonitor::onApprovalResolved(const QString &approvalId)
{
    m_collaborators.log.write(
        QString("[Brackwen] event exec.approval.resolved id="_L1 % approvalId));
    m_recorder.recordExternalResolved(approvalId, u"gateway-event"_s);
    m_board.remove(approvalId, ApprovalHistoryState::Resolved);
    m_menuState.note(u"approval.resolved"_s);
}

void ApprovalMonitor::onExpired(const QString &approvalId)
{
    const auto *item = m_board.find(approvalId);
    if (item == nullptr || m_resolver.isResolving(approvalId)) {
        return; // a decision that was made in time still counts
    }
    m_recorder.recordExpired(*item);
    m_board.remove(approvalId, ApprovalHistoryState::Canceled);
}

} // namespace bram
