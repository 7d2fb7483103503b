// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "audit/AuditLogStore.h"
#include "gateway/ConnectionSupervision.h"
#include "model/GatewayEvent.h"
#include "monitor/AgentSelection.h"
#include "monitor/ApprovalBoard.h"
#include "monitor/ApprovalRecorder.h"
#include "monitor/DecisionResolver.h"
#include "monitor/ExpiryWatch.h"
#include "monitor/MenuStateLog.h"

#include <QCoro/QCoroTask>
#include <QObject>

namespace bram
{

/// The coordinator: joins the gateway's reports, the board that views show, the record and the decisions.
/// Each of these subjects is a class of its own; here is only what passes between them. Main thread only.
class ApprovalMonitor final : public QObject
{
    Q_OBJECT

public:
    struct Collaborators {
        GatewayClient &client;
        GatewaySession &session;
        GatewayStatus &status;
        AgentSelection &agents;
        AuditLogStore &audit;
        BackgroundTasks &tasks;
        const Clock &clock;
        SystemLog &log;
        MonitorPorts ports;
        CommandLineUse commandLine = CommandLineUse::Allowed;
    };

    explicit ApprovalMonitor(const Collaborators &collaborators);

    /// Goes through the steps of the start in their order. Returns at once.
    void start();

    /// Ends the connection; decisions still under way end as failed. Nothing starts afterwards.
    void stop();

    const ApprovalBoard &board() const { return m_board; }
    const GatewayStatus &gatewayStatus() const { return m_collaborators.status; }
    const ApprovalMetrics &metrics() const { return m_recorder.metrics(); }
    const ConnectionSupervision &supervision() const { return m_supervision; }
    const AuditLogHealth &auditHealth() const { return m_collaborators.audit.health(); }
    AgentSelection &agents() { return m_collaborators.agents; }
    DecisionResolver &decisions() { return m_resolver; }

    /// Connects anew, on the operator's wish.
    void reconnectGateway();
    /// Takes the token from the platform's configuration file and connects anew.
    void reloadGatewayToken();
    /// Forgets every pending request here, without telling the gateway.
    void clearPendingApprovals();
    void clearHistory();
    /// For operations of the operator that are not decisions.
    void recordActivity(ActivityActor actor, ActivityAction action, const QString &detail);

    /// Takes a gateway event in.
    void handleGatewayEvent(const GatewayEvent &event);
    /// Takes a request in that an exercise has made up.
    void handleExercise(const ApprovalItem &item);
    /// Takes a report of the connection in, from the client or from a simulation.
    void handleConnectionState(const GatewayConnectionState &state);
    /// Undoes what a made-up end of the connection has left: connects anew where that is still needed, and lets
    /// chats decide if it was that which had locked them.
    void recoverFromSimulation();

Q_SIGNALS:
    /// The steps of the start have been gone through; the connection may still be on its way.
    void started();

private:
    static QCoro::Task<> startUp(QPointer<ApprovalMonitor> self);
    void onApprovalRequested(const ApprovalItem &item);
    void onApprovalResolved(const QString &approvalId);
    void onExpired(const QString &approvalId);
    void showConnectionAsWorking();

    Collaborators m_collaborators;
    ApprovalBoard m_board;
    ApprovalRecorder m_recorder;
    DecisionResolver m_resolver;
    ExpiryWatch m_expiry;
    ConnectionSupervision m_supervision;
    MenuStateLog m_menuState;
};

} // namespace bram
