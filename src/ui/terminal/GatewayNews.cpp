// SPDX-License-Identifier: Apache-2.0
#include "ui/terminal/GatewayNews.h"

#include "gateway/GatewayStatus.h"
#include "ui/terminal/TerminalVoice.h"

namespace bram
{

namespace
{
constexpr qsizetype mostRemembered = 100;
} // namespace

GatewayNews::GatewayNews(const GatewayStatus &status, TerminalVoice &voice)
    : m_status(status)
    , m_voice(voice)
    , m_said {GatewayStatus::Lines().connectionStatus} // that all begins so goes without saying
{
}

void GatewayNews::start()
{
    connect(&m_status, &GatewayStatus::statusLinesChanged, this, &GatewayNews::tell);
    tell();
}

void GatewayNews::tell()
{
    const GatewayStatus::Lines &status = m_status.lines();
    const QString &text = status.connectionStatus;
    if (status.isAboutDecision || m_said.value(m_said.size() - 1) == text) {
        return;
    }
    if (status.connectionIndicator == IndicatorState::Green || m_said.size() == mostRemembered) {
        m_said.clear();
    }
    if (!m_said.contains(text)) {
        m_said.append(text);
        m_voice.say(status.connectionLine());
    }
}

} // namespace bram
