// SPDX-License-Identifier: Apache-2.0
#include "ui/terminal/TerminalVoice.h"

#include "ui/terminal/LineSource.h"
#include "ui/terminal/TerminalOutput.h"
#include "ui/terminal/TerminalText.h"

namespace bram
{

TerminalVoice::TerminalVoice(LineSource &input, TerminalOutput &output)
    : m_input(input)
    , m_output(output)
{
}

bool TerminalVoice::print(const TerminalLines &lines)
{
    if (isBehind()) {
        return m_output.write(lines); // left out, and the line being typed need not be drawn again
    }
    bool isPrinted = false;
    m_input.printAbove([&] { isPrinted = m_output.write(lines); });
    return isPrinted;
}

void TerminalVoice::printQuestion(const TerminalLines &lines)
{
    m_input.printAbove([&] { m_output.write(lines, TerminalOutput::WhenBehind::Keep); });
}

bool TerminalVoice::isBehind() const
{
    return m_output.isBehind();
}

void TerminalVoice::say(const QString &message, LineStyle style)
{
    print(messageLines(message, columns(), style));
}

int TerminalVoice::columns() const
{
    return m_output.columns();
}

DialogueMoment TerminalVoice::given() const
{
    return m_output.given();
}

void TerminalVoice::readWaiting()
{
    m_input.readWaiting();
}

void TerminalVoice::hideInput(bool isHidden)
{
    m_input.hideInput(isHidden);
}

} // namespace bram
