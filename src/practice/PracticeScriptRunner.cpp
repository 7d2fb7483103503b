// SPDX-License-Identifier: Apache-2.0
#include "practice/PracticeScriptRunner.h"

#include "practice/PracticeGateway.h"
#include "practice/SampleRequests.h"
#include "system/Clock.h"

#include <utility>

namespace bram
{

using namespace Qt::StringLiterals;

PracticeScriptRunner::PracticeScriptRunner(PracticeGateway &gateway, const Clock &clock,
                                           std::vector<ScriptStep> steps, QObject *parent)
    : QObject(parent)
    , m_gateway(gateway)
    , m_clock(clock)
    , m_steps(std::move(steps))
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &PracticeScriptRunner::run);
    connect(&m_gateway, &PracticeGateway::clientAuthenticated, this,
            [this] { resumeIfWaitingFor(ScriptVerb::WaitClient); });
    connect(&m_gateway, &PracticeGateway::decisionReceived, this,
            [this](const ReceivedDecision &decision) {
                m_decidedIds.insert(decision.approvalId);
                resumeIfWaitingFor(ScriptVerb::WaitDecision);
            });
}

void PracticeScriptRunner::start()
{
    m_timer.start(0);
}

void PracticeScriptRunner::run()
{
    m_waitingFor.reset();
    while (m_next < m_steps.size()) {
        switch (runStep(m_steps[m_next])) {
        case Progress::Done:
            ++m_next;
            break;
        case Progress::Waiting:
            return;
        case Progress::Ended:
            m_next = m_steps.size();
            return;
        }
    }
    Q_EMIT finished();
}

PracticeScriptRunner::Progress PracticeScriptRunner::runStep(const ScriptStep &step)
{
    switch (step.verb) {
    case ScriptVerb::Request:
    case ScriptVerb::RequestFor:
        request(step);
        return Progress::Done;
    case ScriptVerb::Sample:
        m_gateway.announce(sampleRequest(m_nextSample++, m_clock.nowMs()));
        return Progress::Done;
    case ScriptVerb::Resolve:
        m_gateway.resolveElsewhere(step.id);
        return Progress::Done;
    case ScriptVerb::Wait:
    case ScriptVerb::WaitClient:
    case ScriptVerb::WaitDecision:
        return runWait(step);
    case ScriptVerb::Listen:
        if (const auto listening = m_gateway.listen(); !listening) {
            Q_EMIT failed(
                u"line %1: %2"_s.arg(QString::number(step.line), listening.error().message));
            return Progress::Ended;
        }
        return Progress::Done;
    case ScriptVerb::Quit:
        Q_EMIT quitRequested();
        return Progress::Ended;
    default:
        runFault(step);
        return Progress::Done;
    }
}

PracticeScriptRunner::Progress PracticeScriptRunner::runWait(const ScriptStep &step)
{
    if (step.verb == ScriptVerb::Wait) {
        ++m_next; // where the timer goes on
        m_timer.start(step.number);
        return Progress::Waiting;
    }
    const bool hasCome = step.verb == ScriptVerb::WaitClient ? m_gateway.clientCount() > 0
                                                             : m_decidedIds.contains(step.id);
    if (hasCome) {
        return Progress::Done;
    }
    m_waitingFor = step.verb;
    return Progress::Waiting;
}

void PracticeScriptRunner::runFault(const ScriptStep &step)
{
    switch (step.verb) {
    case ScriptVerb::ResolvedFirst:
        m_gateway.setDecisionBehaviour({.fault = DecisionFault::ResolvedFirst});
        return;
    case ScriptVerb::Delay:
        m_gateway.setDecisionBehaviour({.fault = DecisionFault::Delay, .delayMs = step.number});
        return;
    case ScriptVerb::NeverAnswer:
        m_gateway.setDecisionBehaviour({.fault = DecisionFault::NeverAnswer});
        return;
    case ScriptVerb::DropAnswer:
        m_gateway.setDecisionBehaviour({.fault = DecisionFault::DropSocket});
        return;
    case ScriptVerb::AnswerError:
        m_gateway.setDecisionBehaviour({.fault = DecisionFault::AnswerError, .text = step.text});
        return;
    case ScriptVerb::Reject:
        m_gateway.rejectHandshakes(step.text);
        return;
    case ScriptVerb::Drop:
        m_gateway.dropClients();
        return;
    case ScriptVerb::Close:
        m_gateway.close();
        return;
    case ScriptVerb::Raw:
        m_gateway.sendRawText(step.text);
        return;
    case ScriptVerb::RawBinary:
        m_gateway.sendRawBinary(QByteArray::fromHex(step.text.toLatin1()));
        return;
    default:
        m_gateway.setDecisionBehaviour({});
    }
}

void PracticeScriptRunner::request(const ScriptStep &step)
{
    ApprovalItem item;
    item.approvalId = step.id;
    item.command = step.text;
    if (!step.agent.isEmpty()) {
        item.agentId = step.agent;
    }
    item.createdAtMs = m_clock.nowMs();
    if (step.verb == ScriptVerb::RequestFor) {
        item.expiresAtMs = item.createdAtMs + qint64 {1000} * step.number;
    }
    m_gateway.announce(item);
}

void PracticeScriptRunner::resumeIfWaitingFor(ScriptVerb verb)
{
    // Through the timer, so that the step runs outside the gateway's own signal.
    if (m_waitingFor == verb) {
        m_timer.start(0);
    }
}

} // namespace bram
