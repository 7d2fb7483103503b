// SPDX-License-Identifier: Apache-2.0
#include "monitor/RemoteDecisions.h"

#include "audit/Redaction.h"
#include "gateway/GatewayStatus.h"
#include "model/HonestDisplay.h"
#include "monitor/AgentSelection.h"
#include "monitor/ApprovalBoard.h"
#include "monitor/DecisionResolver.h"
#include "monitor/TelegramMirror.h"
#include "system/SystemLog.h"

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
QString sourceText(DecisionInputSource source)
{
    return source == DecisionInputSource::CallbackButton ? u"telegram-callback"_s
                                                         : u"telegram-command"_s;
}

QString senderText(const TelegramDecision &decision)
{
    return decision.sender.isEmpty() ? QString()
                                     : QString(u" sender="_s + redacted(decision.sender));
}

DecisionOrigin originOf(const TelegramDecision &decision)
{
    const QString chat = QString::number(decision.chatId);
    DecisionOrigin origin {sourceText(decision.source), QString(u"telegram-chat:"_s + chat)};
    origin.detail = u"chat="_s + chat + senderText(decision);
    return origin;
}
} // namespace

RemoteDecisions::RemoteDecisions(const Collaborators &collaborators)
    : m_collaborators(collaborators)
{
}

RemoteVerdict RemoteDecisions::decide(const TelegramDecision &decision,
                                      const TelegramBotConfig &config)
{
    const auto &lines = m_collaborators.status.lines();
    if (lines.remoteApprovalLocked) {
        m_collaborators.log.write(
            QString(u"[Brackwen][Telegram] decision blocked by remote lock chat="_s
                    + QString::number(decision.chatId) + u" reason="_s
                    + lines.remoteApprovalLockReason.value_or(u"auth-failure lock"_s)
                    + senderText(decision)));
        return RemoteVerdict::Locked;
    }
    const auto *item = m_collaborators.board.find(decision.approvalId);
    if (item == nullptr) {
        return m_collaborators.board.hasExpired(decision.approvalId) ? RemoteVerdict::Expired
                                                                     : RemoteVerdict::NotPending;
    }
    const auto boundAgents = config.agentsOf(decision.chatId);
    if (boundAgents.isEmpty()) {
        return deny(decision, u"unbound chat"_s);
    }
    const QString pending
        = u" pendingAgent="_s + (item->agentId ? honestLine(*item->agentId).text : u"nil"_s);
    const AgentSelection &agents = m_collaborators.agents;
    if (!agents.matches(*item)) {
        return deny(decision, u"selected agent mismatch"_s,
                    pending + u" selected="_s + honestLine(agents.selectedAgentId()).text);
    }
    if (!item->agentId || !boundAgents.contains(*item->agentId)) {
        return deny(decision, u"agent not bound"_s, pending);
    }
    if (m_collaborators.mirror.hasChanged(*item)) {
        // A chat may still show the request as it was before.
        return deny(decision, u"request changed after it was shown"_s, {}, RemoteVerdict::Changed);
    }
    if (decision.shown == ShownInChat::Nothing) {
        return deny(decision, u"older than the request"_s, {}, RemoteVerdict::OlderThanRequest);
    }
    if (decision.decision != ApprovalDecision::Deny && decision.shown != ShownInChat::Whole
        && !config.offersPartlyShown) {
        return deny(decision, u"command not shown whole"_s, {}, RemoteVerdict::NotShownWhole);
    }
    if (m_collaborators.decisions.resolve(decision.approvalId, decision.decision,
                                          originOf(decision), ActivityTracking::Record)) {
        return RemoteVerdict::Started;
    }
    return m_collaborators.board.hasExpired(decision.approvalId) ? RemoteVerdict::Expired
                                                                 : RemoteVerdict::NotPending;
}

RemoteVerdict RemoteDecisions::deny(const TelegramDecision &decision, const QString &why,
                                    const QString &facts, RemoteVerdict verdict)
{
    m_collaborators.log.write(QString(u"[Brackwen][Telegram] decision denied: "_s + why
                                      + u" chat="_s + QString::number(decision.chatId) + facts
                                      + senderText(decision)));
    return verdict;
}

} // namespace bram
