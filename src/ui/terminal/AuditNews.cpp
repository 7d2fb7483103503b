// SPDX-License-Identifier: Apache-2.0
#include "ui/terminal/AuditNews.h"

#include "ui/terminal/TerminalText.h"
#include "ui/terminal/TerminalVoice.h"

#include <utility>

namespace bram
{

namespace
{
LineStyle styleOf(const AuditNotice &notice)
{
    return notice.indicator == IndicatorState::Red ? LineStyle::Danger : LineStyle::Warning;
}
} // namespace

AuditNews::AuditNews(const AuditLogHealth &health, TerminalVoice &voice)
    : m_health(health)
    , m_voice(voice)
{
}

void AuditNews::start()
{
    connect(&m_health, &AuditLogHealth::changed, this, &AuditNews::tell);
    tell();
}

TerminalLines AuditNews::lines(int columns) const
{
    TerminalLines lines;
    for (const AuditNotice &notice : auditNotices(m_health.condition())) {
        lines.append(messageLines(notice.text, columns, styleOf(notice)));
    }
    return lines;
}

void AuditNews::tell()
{
    const QList<AuditNotice> said = std::exchange(m_said, auditNotices(m_health.condition()));
    for (const AuditNotice &notice : std::as_const(m_said)) {
        if (!said.contains(notice)) {
            m_voice.say(notice.text, styleOf(notice));
        }
    }
}

} // namespace bram
