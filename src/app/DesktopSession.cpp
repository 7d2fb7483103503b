// SPDX-License-Identifier: Apache-2.0
#include "app/DesktopSession.h"

#include "app/Core.h"

namespace bram
{

DesktopSession::DesktopSession(const Clock &clock, SystemLog &log, SimulationEntry simulationEntry)
    : m_clock(clock)
    , m_simulationEntry(simulationEntry)
    , m_notifications(m_notificationService, clock, log)
    , m_popup(clock)
{
}

MonitorPorts DesktopSession::ports()
{
    return {.popup = &m_popup, .notifier = &m_notifications};
}

void DesktopSession::start(Core &core)
{
    m_prompts = std::make_unique<DesktopPrompts>(core.preferences());
    m_frontEnd = std::make_unique<DesktopFrontEnd>(DesktopFrontEnd::Collaborators {
        .monitor = core.monitor(),
        .exercises = core.exercises(),
        .prompts = *m_prompts,
        .tasks = core.tasks(),
        .notifications = m_notifications,
        .popup = m_popup,
        .language = core.language(),
        .environment = core.environment(),
        .clock = m_clock,
        .simulationEntry = m_simulationEntry,
    });
    connect(m_frontEnd.get(), &DesktopFrontEnd::quitRequested, this, &FrontEnd::quitRequested);
    m_frontEnd->start();
}

void DesktopSession::stopAsking()
{
    m_popup.stop();
    m_prompts->stop();
}

void DesktopSession::finish()
{
    m_notifications.stop();
    m_frontEnd.reset();
}

} // namespace bram
