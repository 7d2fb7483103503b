// SPDX-License-Identifier: Apache-2.0
#include "app/DesktopSession.h"

#include "app/Core.h"

namespace bram
{

DesktopSession::DesktopSession(const Clock &clock, SystemLog &log)
    : m_clock(clock)
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
    m_frontEnd = std::make_unique<DesktopFrontEnd>(DesktopFrontEnd::Collaborators {
        .monitor = core.monitor(),
        .notifications = m_notifications,
        .popup = m_popup,
        .language = core.language(),
        .environment = core.environment(),
        .clock = m_clock,
    });
    connect(m_frontEnd.get(), &DesktopFrontEnd::quitRequested, this, &FrontEnd::quitRequested);
    m_frontEnd->start();
}

void DesktopSession::finish()
{
    m_notifications.stop();
    m_frontEnd.reset();
}

} // namespace bram
