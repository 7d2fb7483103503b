// SPDX-License-Identifier: Apache-2.0
#include "ui/terminal/PipeLineReader.h"

#include "ui/terminal/TerminalTr.h"

#include <QStringDecoder>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include <poll.h>
#include <unistd.h>

namespace bram
{

namespace
{
/// What is read in one go, so that an endless input leaves the event loop its turns.
constexpr qsizetype maxBytesAtOnce = 1024 * 1024;
} // namespace

PipeLineReader::PipeLineReader(int descriptor, LineStart lineStart)
    : m_descriptor(descriptor)
    , m_lineStart(lineStart)
    , m_notifier(QSocketNotifier::Read)
{
    connect(&m_notifier, &QSocketNotifier::activated, this, &PipeLineReader::readWaiting);
}

PipeLineReader::~PipeLineReader()
{
    hideInput(false);
}

void PipeLineReader::hideInput(bool isHidden)
{
    if (!isHidden) {
        if (const auto settings = std::exchange(m_settingsBefore, std::nullopt)) {
            tcsetattr(m_descriptor, TCSADRAIN, &*settings);
        }
        return;
    }
    termios settings {};
    if (!m_settingsBefore && tcgetattr(m_descriptor, &settings) == 0) {
        m_settingsBefore = settings;
        settings.c_lflag &= ~tcflag_t(ECHO);
        settings.c_lflag |= ECHONL; // the end of the line is no secret
        tcsetattr(m_descriptor, TCSADRAIN, &settings);
    }
}

void PipeLineReader::start()
{
    m_previousEnd = moment();
    m_notifier.setSocket(m_descriptor);
    m_notifier.setEnabled(true);
}

bool PipeLineReader::isReadable() const
{
    pollfd request {m_descriptor, POLLIN, 0};
    return poll(&request, 1, 0) > 0;
}

void PipeLineReader::readWaiting()
{
    std::array<char, 64 * 1024> buffer;
    // What did not fit into the last reading waited already then.
    const DialogueMoment readAt = m_backlogSince.value_or(moment());
    m_backlogSince.reset();
    qsizetype taken = 0;
    while (!m_ended && isReadable()) {
        if (taken >= maxBytesAtOnce) {
            m_backlogSince = readAt;
            return;
        }
        const ssize_t count = read(m_descriptor, buffer.data(), buffer.size());
        if (count > 0) {
            take(QByteArrayView(buffer.data(), count), readAt);
            taken += count;
        } else if (count == 0 || (errno != EINTR && errno != EAGAIN)) {
            finish(readAt);
        } else if (errno == EAGAIN) {
            return;
        }
    }
}

void PipeLineReader::take(QByteArrayView bytes, DialogueMoment readAt)
{
    while (!bytes.isEmpty()) {
        if (!m_begunAt) {
            m_begunAt = m_lineStart == LineStart::AtPreviousEnd ? m_previousEnd : readAt;
        }
        const qsizetype lineFeed = bytes.indexOf('\n');
        const QByteArrayView part = lineFeed < 0 ? bytes : bytes.first(lineFeed);
        if (!m_skipping && m_line.size() + part.size() > maxLineBytes) {
            deliverRefusal(TerminalTr::tr("A line of more than 64 KiB was refused."));
            m_skipping = true;
            m_line.clear();
        }
        if (!m_skipping) {
            m_line.append(part);
        }
        if (lineFeed < 0) {
            return;
        }
        endLine(readAt);
        bytes = bytes.sliced(lineFeed + 1);
    }
}

void PipeLineReader::endLine(DialogueMoment readAt)
{
    if (!m_skipping) {
        if (m_line.endsWith('\r')) {
            m_line.chop(1);
        }
        QStringDecoder decoder(QStringDecoder::Utf8);
        const QString text = decoder(m_line);
        if (decoder.hasError() || !m_line.isValidUtf8()) {
            deliverRefusal(TerminalTr::tr("A line that is not valid UTF-8 was refused."));
        } else {
            deliverLine(text, *m_begunAt);
        }
    }
    m_line.clear();
    m_begunAt.reset();
    m_skipping = false;
    m_previousEnd = readAt;
}

void PipeLineReader::finish(DialogueMoment readAt)
{
    m_ended = true;
    m_notifier.setEnabled(false);
    if (!m_line.isEmpty()) {
        endLine(readAt);
    }
    deliverEnd();
}

} // namespace bram
