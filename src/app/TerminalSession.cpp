// SPDX-License-Identifier: Apache-2.0
#include "app/TerminalSession.h"

#include "app/Core.h"
#include "ui/terminal/TerminalInput.h"

#include <unistd.h>

namespace bram
{

namespace
{
constexpr int outputLimitMs = 500;
} // namespace

TerminalSession::TerminalSession(const Clock &clock)
    : m_clock(clock)
    , m_output(STDOUT_FILENO)
    , m_input(makeLineSource(STDIN_FILENO, m_output))
{
}

void TerminalSession::start(Core &core, OperatorChat *practiceChat)
{
    m_dialogue = std::make_unique<TerminalFrontEnd>(
        TerminalFrontEnd::Collaborators {.monitor = core.monitor(),
                                         .bulkAllow = core.bulkAllow(),
                                         .exercises = core.exercises(),
                                         .record = core.record(),
                                         .alwaysAllow = core.alwaysAllow(),
                                         .telegram = core.telegram(),
                                         .practiceChat = practiceChat,
                                         .language = core.language(),
                                         .allowPartlyShown = core.allowPartlyShown(),
                                         .unencryptedGateway = core.unencryptedGateway(),
                                         .sharedPolling = core.sharedPolling(),
                                         .tasks = core.tasks(),
                                         .clock = m_clock,
                                         .input = *m_input,
                                         .output = m_output});
    connect(m_dialogue.get(), &TerminalFrontEnd::quitRequested, this, &FrontEnd::quitRequested);
    m_dialogue->start();
}

void TerminalSession::finish()
{
    m_output.flush(outputLimitMs);
}

} // namespace bram
