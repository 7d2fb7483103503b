// SPDX-License-Identifier: Apache-2.0
#include "system/linux/SyslogLog.h"

#include "system/PlainText.h"

#include <QByteArray>
#include <QChar>
#include <QList>
#include <QString>

#include <syslog.h>
#include <unistd.h>

namespace bram
{

namespace
{
constexpr qint64 lookAgainMs = 1000;

constexpr bool isPlain(char16_t unit)
{
    return (unit >= u' ') & (unit <= u'~');
}

/// Characters that could break the line or turn around how it reads.
bool misleads(char32_t character)
{
    switch (QChar::category(character)) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    default:
        return false;
    }
}

QString withoutMisleadingCharacters(QStringView line)
{
    QString result;
    result.reserve(line.size());
    for (const char32_t character : line.toUcs4()) {
        result += QChar::fromUcs4(misleads(character) ? U' ' : character);
    }
    return result;
}

/// UTF-8 with a line feed at the end, and a blank for every character that misleads: a reason or an id
/// from outside must not be able to start a log line of its own.
QByteArray toLogBytes(QStringView line)
{
    QByteArray bytes(line.size() + 1, Qt::Uninitialized);
    const qsizetype copied = copyPlainUnits(line, bytes.data(), isPlain);
    if (copied < line.size()) {
        return withoutMisleadingCharacters(line).toUtf8() + '\n';
    }
    bytes[copied] = '\n';
    return bytes;
}
} // namespace

/// Where nobody listens, syslog(3) would try to connect anew for every line, at ten times the cost of the
/// line itself. So its socket is looked for first, and once a second while it is missing.
bool SyslogLog::hasListener()
{
    if (m_missing.isValid() && m_missing.elapsed() < lookAgainMs) {
        return false;
    }
    if (::access(_PATH_LOG, F_OK) == 0) {
        m_missing.invalidate();
        return true;
    }
    m_missing.start();
    return false;
}

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
    if (m_targets.testFlag(Syslog) && hasListener()) {
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
