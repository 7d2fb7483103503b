// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "app/FrontEnd.h"
#include "monitor/ApprovalNotifications.h"
#include "system/linux/AutostartEntry.h"
#include "system/linux/DesktopNotifications.h"
#include "system/linux/XdgFileOpener.h"
#include "ui/desktop/ApprovalPopupPresenter.h"
#include "ui/desktop/DesktopFrontEnd.h"
#include "ui/desktop/DesktopPrompts.h"

#include <memory>
#include <optional>

namespace bram
{

class Clock;
class SystemLog;

/// The front-end on a desktop: tray icon, menu, popup, notifications, windows.
class DesktopSession final : public FrontEnd
{
    Q_OBJECT

public:
    DesktopSession(const Clock &clock, SystemLog &log, SimulationEntry simulationEntry);

    MonitorPorts ports() override;
    void start(Core &core, OperatorChat *practiceChat) override;
    OperatorPrompts &prompts() override { return *m_prompts; }
    void stopAsking() override;
    void finish() override;

private:
    const Clock &m_clock;
    SystemLog &m_log;
    SimulationEntry m_simulationEntry;
    DesktopNotifications m_notificationService;
    ApprovalNotifications m_notifications;
    ApprovalPopupPresenter m_popup;
    XdgFileOpener m_opener;
    std::optional<AutostartEntry> m_loginStart;
    std::unique_ptr<DesktopPrompts> m_prompts;
    std::unique_ptr<DesktopFrontEnd> m_frontEnd;
};

} // namespace bram
