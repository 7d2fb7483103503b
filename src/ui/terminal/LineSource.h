// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ui/terminal/RequestNumbers.h"

#include <QList>
#include <QObject>
#include <QString>

#include <functional>

namespace bram
{

/// Where the operator's lines come from. Implemented by `TerminalLineEditor` for a person at a terminal
/// and by `PipeLineReader` for everything else. Main thread; nothing blocks.
///
/// Every line carries the moment at which it was begun, so that what was typed before a request appeared
/// is never taken for an answer to it. Lines are delivered in later turns of the event loop, in order.
class LineSource : public QObject
{
    Q_OBJECT

public:
    /// Tells how much the operator has been shown by now. To be set before `start()`.
    void setMomentSource(std::function<DialogueMoment()> momentSource);

    /// Begins to read.
    virtual void start() = 0;

    /// Takes over what waits to be read, so that it counts as typed by now. To be called before anything
    /// is shown that a line could answer.
    virtual void readWaiting() = 0;

    /// Runs `print`, which writes whole lines to the output, so that a line being typed is not torn.
    virtual void printAbove(const std::function<void()> &print);

    /// While set, what is typed is a secret: neither shown on the terminal nor remembered for later lines.
    virtual void hideInput(bool isHidden);

Q_SIGNALS:
    void lineEntered(const QString &text, bram::DialogueMoment begunAt);
    /// A line that cannot be taken: why, in one line for the operator.
    void lineRefused(const QString &reason);
    /// The input has ended, or the operator pressed a key that says so. Nothing follows.
    void endOfInput();

protected:
    DialogueMoment moment() const;
    void deliverLine(const QString &text, DialogueMoment begunAt);
    void deliverRefusal(const QString &reason);
    void deliverEnd();

private:
    void deliver(std::function<void()> delivery);

    std::function<DialogueMoment()> m_momentSource;
    QList<std::function<void()>> m_deliveries;
};

} // namespace bram
