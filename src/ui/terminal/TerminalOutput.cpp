// SPDX-License-Identifier: Apache-2.0
#include "ui/terminal/TerminalOutput.h"

#include <QDeadlineTimer>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
/// What a pipe that has room at all takes without blocking.
constexpr qsizetype chunkBytes = 4096;
/// Of a reader who is farther behind nobody can say when it will read on; what it misses must not fill the memory.
constexpr qsizetype behindBytes = 4 * 1024 * 1024;
/// What is written to any reader, however far behind, ends here: a question, the line being typed.
constexpr qsizetype maxWaitingBytes = 64 * 1024 * 1024;

QLatin1StringView escapeOf(LineStyle style)
{
    switch (style) {
    case LineStyle::Plain:
        return {};
    case LineStyle::Strong:
        return "\033[1m"_L1;
    case LineStyle::Danger:
        return "\033[1;31m"_L1;
    case LineStyle::Warning:
        return "\033[33m"_L1;
    case LineStyle::Quiet:
        return "\033[2m"_L1;
    }
    Q_UNREACHABLE();
}

constexpr QLatin1StringView normal("\033[0m");

/// Texts from outside are shown honestly long before; this is the last door.
QString withoutControls(QString text)
{
    std::ranges::replace_if(
        text, [](QChar c) { return c.category() == QChar::Other_Control; },
        QChar::ReplacementCharacter);
    return text;
}

QString styled(const TerminalLine &line)
{
    const QLatin1StringView escape = escapeOf(line.style);
    if (!escape.isEmpty()) {
        return escape + withoutControls(line.text) + normal;
    }
    if (line.faintBegin < line.faintEnd) {
        const QStringView text = line.text;
        return withoutControls(text.first(line.faintBegin).toString()) + escapeOf(LineStyle::Quiet)
            + withoutControls(
                   text.sliced(line.faintBegin, line.faintEnd - line.faintBegin).toString())
            + normal + withoutControls(text.sliced(line.faintEnd).toString());
    }
    return withoutControls(line.text);
}

bool hasRoom(int descriptor, int timeoutMs)
{
    pollfd request {descriptor, POLLOUT, 0};
    return poll(&request, 1, timeoutMs) > 0;
}
} // namespace

TerminalOutput::TerminalOutput(int descriptor)
    : m_descriptor(descriptor)
    , m_isTerminal(isatty(descriptor) == 1)
    , m_hasColours(m_isTerminal && qEnvironmentVariableIsEmpty("NO_COLOR")
                   && qgetenv("TERM") != "dumb")
    , m_notifier(QSocketNotifier::Write)
{
    // A reader that goes away is an error of the write, not the end of the program.
    std::signal(SIGPIPE, SIG_IGN); // NOLINT(cert-err33-c)
    if (m_isTerminal) {
        // The flags of the given descriptor may be shared with the shell and stay as they are.
        if (const char *path = ttyname(descriptor)) {
            m_ownDescriptor = open(path, O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
        }
        m_descriptor = m_ownDescriptor >= 0 ? m_ownDescriptor : descriptor;
    }
    connect(&m_notifier, &QSocketNotifier::activated, this, &TerminalOutput::writeWaiting);
}

TerminalOutput::~TerminalOutput()
{
    m_notifier.setEnabled(false);
    if (m_ownDescriptor >= 0) {
        ::close(m_ownDescriptor);
    }
}

int TerminalOutput::columns() const
{
    winsize size {};
    const bool isKnown = m_isTerminal && ioctl(m_descriptor, TIOCGWINSZ, &size) == 0;
    return !m_isTerminal ? 0 : isKnown && size.ws_col > 0 ? size.ws_col : 80;
}

bool TerminalOutput::isBehind() const
{
    return m_waiting.size() > behindBytes;
}

bool TerminalOutput::write(const TerminalLines &lines, WhenBehind whenBehind)
{
    if (isBehind() && whenBehind == WhenBehind::LeaveOut) {
        m_linesLeftOut += lines.size();
        return false;
    }
    QString text;
    for (const TerminalLine &line : lines) {
        text += (m_hasColours ? styled(line) : withoutControls(line.text)) + u'\n';
    }
    writeRaw(text.toUtf8());
    return true;
}

void TerminalOutput::writeRaw(QByteArrayView bytes)
{
    if (m_closed || m_waiting.size() > maxWaitingBytes) {
        return;
    }
    m_waiting.append(bytes);
    m_wasBehind = m_wasBehind || isBehind();
    writeWaiting();
}

void TerminalOutput::writeWaiting()
{
    qsizetype done = 0;
    while (!m_closed && done < m_waiting.size() && hasRoom(m_descriptor, 0)) {
        const qsizetype size = std::min(chunkBytes, m_waiting.size() - done);
        const ssize_t count = ::write(m_descriptor, m_waiting.constData() + done, size_t(size));
        if (count >= 0) {
            done += count;
        } else if (errno == EAGAIN) {
            break;
        } else if (errno != EINTR) {
            close();
        }
    }
    m_written += done;
    m_waiting.remove(0, done);
    if (!m_closed && m_waiting.isEmpty() && std::exchange(m_wasBehind, false)) {
        QMetaObject::invokeMethod(
            this, [this, count = std::exchange(m_linesLeftOut, 0)] { Q_EMIT caughtUp(count); },
            Qt::QueuedConnection);
    }
    const bool mustWait = !m_closed && !m_waiting.isEmpty();
    if (mustWait && m_notifier.socket() < 0) {
        m_notifier.setSocket(m_descriptor);
    }
    if (m_notifier.isValid()) {
        m_notifier.setEnabled(mustWait);
    }
}

void TerminalOutput::flush(int timeoutMs)
{
    const QDeadlineTimer deadline(timeoutMs);
    while (!m_closed && !m_waiting.isEmpty() && !deadline.hasExpired()) {
        hasRoom(m_descriptor, int(deadline.remainingTime()));
        writeWaiting();
    }
}

void TerminalOutput::close()
{
    if (!m_closed) {
        m_closed = true;
        QMetaObject::invokeMethod(this, &TerminalOutput::closed, Qt::QueuedConnection);
    }
}

} // namespace bram
