// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ui/terminal/RequestNumbers.h"
#include "ui/terminal/TerminalLine.h"

#include <QString>

namespace bram
{

class LineSource;
class TerminalOutput;

/// How the parts of the terminal front-end speak: whole lines, above the line that is being typed.
class TerminalVoice
{
public:
    TerminalVoice(LineSource &input, TerminalOutput &output);

    /// False when a reader who is far behind misses the lines.
    bool print(const TerminalLines &lines);
    void say(const QString &message, LineStyle style = LineStyle::Plain);
    /// For what the next line answers: nobody misses it.
    void printQuestion(const TerminalLines &lines);
    /// More lines would be missed by the reader.
    bool isBehind() const;

    /// Width of the terminal; 0 when it is not known.
    int columns() const;
    /// How far the operator will have read once everything said so far is out.
    DialogueMoment given() const;
    /// To be called before something is shown that a line could answer: what has been typed by now
    /// was typed before it.
    void readWaiting();
    /// What is typed from now on is, or is no longer, a secret.
    void hideInput(bool isHidden);

private:
    LineSource &m_input;
    TerminalOutput &m_output;
};

} // namespace bram
