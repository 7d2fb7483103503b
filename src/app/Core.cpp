// SPDX-License-Identifier: Apache-2.0
#include "app/Core.h"

#include "monitor/DiagnosticsSnapshot.h"
#include "system/SystemLog.h"

#include <QJsonArray>

#include <algorithm>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr AuditLogLimits auditLimits {
    .maxBytes = 10'485'760, .retentionDays = 30, .maxArchives = 24};
} // namespace

Core::Core(const World &world)
    : m_log(world.log)
    , m_places(world.places)
    , m_environment(world.places.environment)
    , m_config(world.places.environment, world.places.account)
    , m_tasks(world.log)
    , m_preferences(world.places.preferencesFile)
    , m_language(m_preferences)
    , m_sharedPolling(m_preferences)
    , m_allowPartlyShown(m_preferences, allowPartlyShownKey)
    , m_unencryptedGateway(m_preferences, unencryptedGatewayKey)
    , m_agents(m_config, m_preferences, world.log)
    , m_audit(world.places.dataFolder, auditLimits, world.log)
    , m_alwaysAllowList(m_preferences, world.places.account.homeFolder + u"/.brackwen"_s, world.log)
    , m_alwaysAllowAnswers(m_alwaysAllowList)
    , m_identities(world.secrets, m_preferences, world.log, m_tasks)
    , m_credentials(m_config, world.secrets, m_preferences, world.log)
    , m_client({.identities = m_identities,
                .clock = world.clock,
                .log = world.log,
                .tasks = m_tasks,
                .peerUsers = m_peerUsers})
    , m_session({.client = m_client,
                 .credentials = m_credentials,
                 .status = m_status,
                 .tasks = m_tasks,
                 .unencryptedGateway = m_unencryptedGateway},
                world.places.environment)
    , m_telegramTokens(world.places.environment, world.secrets)
    , m_telegramMirror(m_agents)
    , m_monitor({.client = m_client,
                 .session = m_session,
                 .status = m_status,
                 .agents = m_agents,
                 .audit = m_audit,
                 .tasks = m_tasks,
                 .clock = world.clock,
                 .log = world.log,
                 .ports = allPorts(world.ports),
                 .commandLine = world.commandLine})
    , m_remoteDecisions({.board = m_monitor.board(),
                         .decisions = m_monitor.decisions(),
                         .status = m_status,
                         .agents = m_agents,
                         .mirror = m_telegramMirror,
                         .log = world.log})
    , m_telegram({.config = m_config,
                  .tokens = m_telegramTokens,
                  .sharedPolling = m_sharedPolling,
                  .allowPartlyShown = m_allowPartlyShown,
                  .board = m_monitor.board(),
                  .mirror = m_telegramMirror,
                  .decisions = m_remoteDecisions,
                  .tasks = m_tasks,
                  .clock = world.clock,
                  .log = world.log})
    , m_record({.monitor = m_monitor,
                .audit = m_audit,
                .clock = world.clock,
                .log = world.log,
                .dataFolder = world.places.dataFolder,
                .settings = [this] { return settingsForDiagnostics(); }})
    , m_exercises({.monitor = m_monitor,
                   .audit = m_audit,
                   .tasks = m_tasks,
                   .clock = world.clock,
                   .log = world.log})
    , m_alwaysAllow({.list = m_alwaysAllowList,
                     .monitor = m_monitor,
                     .preferences = m_preferences,
                     .clock = world.clock,
                     .log = world.log,
                     .homeFolder = world.places.account.homeFolder})
    , m_bulkAllow({.monitor = m_monitor, .alwaysAllow = m_alwaysAllow})
{
    QObject::connect(&m_monitor, &ApprovalMonitor::started, &m_telegram,
                     &TelegramBridgeSupervisor::start);
}

MonitorPorts Core::allPorts(MonitorPorts ports)
{
    if (ports.agentFilter == nullptr) {
        ports.agentFilter = &m_agents;
    }
    if (ports.alwaysAllow == nullptr) {
        ports.alwaysAllow = &m_alwaysAllowAnswers;
    }
    if (ports.mirror == nullptr) {
        ports.mirror = &m_telegramMirror;
    }
    return ports;
}

/// By name, never all of them: the preferences can hold secrets.
QJsonObject Core::settingsForDiagnostics() const
{
    return {
        {u"language"_s, rawText(m_language.current())},
        {u"allowSharedBotPolling"_s, m_sharedPolling.allowSharedBotPollingOverride()},
        {u"telegram"_s, telegramForDiagnostics(m_telegram.status())},
        {u"agent"_s, m_agents.selectedAgentId()},
        {u"availableAgents"_s, QJsonArray::fromStringList(m_agents.availableAgentIds())},
        {u"gatewayAddress"_s,
         addressWithoutSecrets(
             m_environment.trimmed(u"BRACKWEN_GATEWAY_URL"_s).value_or(defaultGatewayUrl))},
        {u"configurationProblems"_s, m_config.problems().size()},
        {u"alwaysAllow"_s, alwaysAllowForDiagnostics()},
    };
}

/// How many, never which.
QJsonObject Core::alwaysAllowForDiagnostics() const
{
    const auto count = [this](auto member, auto value) {
        return qint64(std::ranges::count(m_alwaysAllowList.entries(), value, member));
    };
    using Source = AlwaysAllowSource;
    return {
        {u"app"_s, count(&AlwaysAllowEntry::source, Source::LocalOnly)},
        {u"brackwen"_s, count(&AlwaysAllowEntry::source, Source::BrackwenOnly)},
        {u"both"_s, count(&AlwaysAllowEntry::source, Source::Both)},
        {u"sensitive"_s, count(&AlwaysAllowEntry::isSecuritySensitive, true)},
        {u"askedOnceMore"_s,
         std::ranges::count_if(m_alwaysAllowList.entries(), &AlwaysAllowEntry::isAskedOnceMore)},
        {u"platformFiles"_s, m_alwaysAllowList.platformFileCount()},
    };
}

void Core::start()
{
    for (const QString &problem : m_config.problems() + m_config.exposures()) {
        m_log.write(QString(u"[Brackwen] "_s + problem));
    }
    // Does not wait for the credentials, which may wait for a locked keyring: no request comes before them.
    m_alwaysAllowList.start();
    m_monitor.start();
}

void Core::stop()
{
    m_exercises.stop();
    m_identities.stop();
    m_record.cancel();
    m_telegram.stop();
    m_monitor.stop();
}

} // namespace bram
