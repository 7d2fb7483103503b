// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "app/FrontEnd.h"
#include "ui/terminal/LineSource.h"
#include "ui/terminal/TerminalFrontEnd.h"
#include "ui/terminal/TerminalOutput.h"

#include <memory>

namespace bram
{

class Clock;

/// The front-end on this process's standard input and output.
class TerminalSession final : public FrontEnd
{
    Q_OBJECT

public:
    explicit TerminalSession(const Clock &clock);

    void start(Core &core, OperatorChat *practiceChat) override;
    OperatorPrompts &prompts() override { return m_dialogue->prompts(); }
    void stopAsking() override { m_dialogue->prompts().stop(); }
    void finish() override;

private:
    const Clock &m_clock;
    TerminalOutput m_output;
    std::unique_ptr<LineSource> m_input;
    std::unique_ptr<TerminalFrontEnd> m_dialogue;
};

} // namespace bram
