// SPDX-License-Identifier: Apache-2.0
#include "system/linux/SyslogLog.h"

#include <QByteArray>

#include <syslog.h>
#include <unistd.h>

namespace bram
{

namespace
{
/// UTF-8 with every control byte replaced by a blank and a line feed at the end: a reason or an id
/// from outside must not be able to start a log line of its own.
QByteArray toLogBytes(QStringView line)
{
    QByteArray bytes = line.toUtf8();
    for (char &byte : bytes) {
        if (static_cast<unsigned char>(byte) < 0x20 || byte == 0x7f) {
            byte = ' ';
        }
    }
    bytes.append('\n');
    return bytes;
}
} // namespace

SyslogLog::SyslogLog(Targets targets)
    : m_targets(targets)
{
    openlog("bram", LOG_PID, LOG_USER);
}

SyslogLog::~SyslogLog()
{
    closelog();
}

void SyslogLog::write(QStringView line)
{
    const QByteArray bytes = toLogBytes(line);
    const std::scoped_lock lock(m_mutex);
    if (m_targets.testFlag(Syslog)) {
        syslog(LOG_INFO, "%.*s", static_cast<int>(bytes.size() - 1), bytes.constData());
    }
    if (m_targets.testFlag(StandardError)) {
        // One call a line, so that lines of several writers do not mix. A closed or full standard
        // error is no reason to stop.
        [[maybe_unused]] const auto written
            = ::write(STDERR_FILENO, bytes.constData(), static_cast<size_t>(bytes.size()));
    }
}

} // namespace bram
