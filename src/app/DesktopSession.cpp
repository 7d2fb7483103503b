// SPDX-License-Identifier: Apache-2.0
#include "app/DesktopSession.h"

#include "app/Core.h"

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
/// What the settings window says of where files live.
QList<FilePlace> filePlaces(const Core &core)
{
    using Kind = FilePlace::Kind;
    const Places &places = core.places();
    QList<FilePlace> result {{Kind::Preferences, places.preferencesFile},
                             {Kind::Data, places.dataFolder}};
    for (const BrackwenConfig::File &file : core.config().loadFiles()) {
        result.append({Kind::Configuration, file.path});
    }
    if (result.constLast().kind != Kind::Configuration) {
        result.append({Kind::Configuration, core.config().candidatePaths().value(0)});
    }
    result.append({Kind::ExecApprovals, places.account.homeFolder + u"/.brackwen"_s});
    if (!places.lockFile.isEmpty()) {
        result.append({Kind::Lock, places.lockFile});
    }
    return result;
}
} // namespace

DesktopSession::DesktopSession(const Clock &clock, SystemLog &log, SimulationEntry simulationEntry)
    : m_clock(clock)
    , m_log(log)
    , m_simulationEntry(simulationEntry)
    , m_notifications(m_notificationService, clock, log)
    , m_popup(clock)
{
}

MonitorPorts DesktopSession::ports()
{
    return {.popup = &m_popup, .notifier = &m_notifications};
}

void DesktopSession::start(Core &core, OperatorChat *practiceChat)
{
    m_popup.followAllowPartlyShown(core.allowPartlyShown());
    m_prompts = std::make_unique<DesktopPrompts>(core.preferences(), m_opener);
    if (core.places().autostart) {
        m_loginStart.emplace(*core.places().autostart);
    }
    m_frontEnd = std::make_unique<DesktopFrontEnd>(DesktopFrontEnd::Collaborators {
        .monitor = core.monitor(),
        .bulkAllow = core.bulkAllow(),
        .exercises = core.exercises(),
        .record = core.record(),
        .alwaysAllow = core.alwaysAllow(),
        .audit = core.audit(),
        .prompts = *m_prompts,
        .tasks = core.tasks(),
        .notificationService = m_notificationService,
        .notifications = m_notifications,
        .popup = m_popup,
        .language = core.language(),
        .environment = core.environment(),
        .clock = m_clock,
        .log = m_log,
        .settings = {.allowPartlyShown = core.allowPartlyShown(),
                     .unencryptedGateway = core.unencryptedGateway(),
                     .sharedPolling = core.sharedPolling(),
                     .telegram = core.telegram(),
                     .loginStart = m_loginStart ? &*m_loginStart : nullptr,
                     .opener = m_opener,
                     .places = [&core] { return filePlaces(core); }},
        .practiceChat = practiceChat,
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
