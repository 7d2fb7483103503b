// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ui/terminal/RequestNumbers.h"
#include "ui/terminal/TerminalLine.h"

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>

namespace bram
{

/// Writes the operator's lines to standard output, in order and without ever waiting for the reader:
/// what the reader has no room for is kept until it has. A reader who is too far behind for that misses
/// lines, and is told how many. Main thread.
///
/// Colours are used on a terminal only, and neither on one that knows no escapes (TERM=dumb) nor when the
/// environment has NO_COLOR. Whatever a line holds,
/// no control character of it reaches the terminal.
class TerminalOutput final : public QObject
{
    Q_OBJECT

public:
    explicit TerminalOutput(int descriptor);
    ~TerminalOutput() override;
    Q_DISABLE_COPY_MOVE(TerminalOutput)

    /// For a reader who is far behind.
    enum class WhenBehind {
        LeaveOut,
        Keep, ///< for what has to be seen, as a question; there is never much of it
    };
    /// False when the lines were left out.
    bool write(const TerminalLines &lines, WhenBehind whenBehind = WhenBehind::LeaveOut);
    /// For the line editor, which controls the cursor.
    void writeRaw(QByteArrayView bytes);
    /// The reader has not taken what was written before; more lines would be left out.
    bool isBehind() const;

    bool isTerminal() const { return m_isTerminal; }
    /// Width of the terminal; 0 when the output is none.
    int columns() const;

    /// How far the operator will have read once everything given so far is out.
    DialogueMoment given() const { return m_written + m_waiting.size(); }
    /// How far the operator can have read by now.
    DialogueMoment written() const { return m_written; }

    /// Waits until everything is out, at most this long: for the end of the program.
    void flush(int timeoutMs);

Q_SIGNALS:
    /// Nobody reads any more; nothing can be shown from now on. Emitted once, in a turn of its own.
    void closed();
    /// A reader who was far behind has taken everything but the `linesLeftOut` lines that were left out. In a turn
    /// of its own.
    void caughtUp(qint64 linesLeftOut);

private:
    void writeWaiting();
    void close();

    int m_descriptor;
    int m_ownDescriptor = -1; ///< a terminal is opened anew, to write without blocking
    bool m_isTerminal;
    bool m_hasColours;
    bool m_closed = false;
    QByteArray m_waiting;
    DialogueMoment m_written = 0;
    bool m_wasBehind = false; ///< and has not caught up
    qint64 m_linesLeftOut = 0;
    QSocketNotifier m_notifier;
};

} // namespace bram
