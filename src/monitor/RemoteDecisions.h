// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "telegram/TelegramBotConfig.h"
#include "telegram/TelegramDecision.h"

#include <QString>

namespace bram
{

class AgentSelection;
class ApprovalBoard;
class DecisionResolver;
class GatewayStatus;
class SystemLog;
class TelegramMirror;

/// The monitor's gate for decisions from chats: only what passes every check goes the way of all decisions.
/// What does not pass is refused with a log line and changes nothing. Main thread only.
class RemoteDecisions
{
public:
    struct Collaborators {
        const ApprovalBoard &board;
        DecisionResolver &decisions;
        const GatewayStatus &status;
        const AgentSelection &agents;
        const TelegramMirror &mirror;
        SystemLog &log;
    };

    explicit RemoteDecisions(const Collaborators &collaborators);

    /// Says whether the decision has been started, or why not; how it ends comes later. `config` is that of
    /// the bridge it came through.
    RemoteVerdict decide(const TelegramDecision &decision, const TelegramBotConfig &config);

private:
    RemoteVerdict deny(const TelegramDecision &decision, const QString &why,
                       const QString &facts = {},
                       RemoteVerdict verdict = RemoteVerdict::NotPending);

    Collaborators m_collaborators;
};

} // namespace bram
