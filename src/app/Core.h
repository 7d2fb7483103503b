// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "allowlist/AlwaysAllowList.h"
#include "app/Places.h"
#include "audit/AuditLogStore.h"
#include "config/SharedPollingSetting.h"
#include "config/StoredSwitch.h"
#include "gateway/DeviceIdentityStore.h"
#include "gateway/GatewayClient.h"
#include "gateway/GatewayCredentialStore.h"
#include "gateway/GatewaySession.h"
#include "gateway/GatewayStatus.h"
#include "monitor/AlwaysAllowAnswers.h"
#include "monitor/AlwaysAllowOperations.h"
#include "monitor/ApprovalMonitor.h"
#include "monitor/BulkAllow.h"
#include "monitor/RecordOperations.h"
#include "monitor/ReliabilityExercises.h"
#include "monitor/RemoteDecisions.h"
#include "monitor/TelegramBridgeSupervisor.h"
#include "monitor/TelegramMirror.h"
#include "monitor/TelegramTokens.h"
#include "system/BackgroundTasks.h"
#include "system/Preferences.h"
#include "system/linux/ProcPeerUsers.h"
#include "ui/language/LanguageChoice.h"

namespace bram
{

class Clock;
class SecretStore;
class SystemLog;

/// All objects below the front-ends, made once and in order. They go in the opposite order; the audit store
/// writes what it was given before it is gone.
class Core
{
public:
    struct World {
        Places places;
        SecretStore &secrets;
        const Clock &clock;
        SystemLog &log;
        MonitorPorts ports {}; ///< one left out is made here, where there is a part for it
        CommandLineUse commandLine = CommandLineUse::Allowed;
    };

    explicit Core(const World &world);

    /// Says in the log what is wrong with the platform's configuration, and starts the monitor.
    void start();

    /// Ends everything that is under way. Before the keyring stops: it still tells "no answer" from
    /// "no such secret" then.
    void stop();

    ApprovalMonitor &monitor() { return m_monitor; }
    AlwaysAllowOperations &alwaysAllow() { return m_alwaysAllow; }
    BulkAllow &bulkAllow() { return m_bulkAllow; }
    BackgroundTasks &tasks() { return m_tasks; }
    AuditLogStore &audit() { return m_audit; }
    RecordOperations &record() { return m_record; }
    GatewayClient &client() { return m_client; }
    GatewaySession &session() { return m_session; }
    GatewayStatus &status() { return m_status; }
    AgentSelection &agents() { return m_agents; }
    ReliabilityExercises &exercises() { return m_exercises; }
    Preferences &preferences() { return m_preferences; }
    LanguageChoice &language() { return m_language; }
    SharedPollingSetting &sharedPolling() { return m_sharedPolling; }
    StoredSwitch &allowPartlyShown() { return m_allowPartlyShown; }
    StoredSwitch &unencryptedGateway() { return m_unencryptedGateway; }
    TelegramBridgeSupervisor &telegram() { return m_telegram; }
    const Environment &environment() const { return m_environment; }
    const BrackwenConfig &config() const { return m_config; }
    const Places &places() const { return m_places; }

private:
    QJsonObject settingsForDiagnostics() const;
    QJsonObject alwaysAllowForDiagnostics() const;
    MonitorPorts allPorts(MonitorPorts ports);

    SystemLog &m_log;
    Places m_places;
    Environment m_environment;
    BrackwenConfig m_config;
    BackgroundTasks m_tasks;
    Preferences m_preferences;
    LanguageChoice m_language;
    SharedPollingSetting m_sharedPolling;
    StoredSwitch m_allowPartlyShown;
    StoredSwitch m_unencryptedGateway;
    AgentSelection m_agents;
    AuditLogStore m_audit;
    AlwaysAllowList m_alwaysAllowList;
    AlwaysAllowAnswers m_alwaysAllowAnswers;
    DeviceIdentityStore m_identities;
    GatewayCredentialStore m_credentials;
    GatewayStatus m_status;
    ProcPeerUsers m_peerUsers;
    GatewayClient m_client;
    GatewaySession m_session;
    TelegramTokens m_telegramTokens;
    TelegramMirror m_telegramMirror;
    ApprovalMonitor m_monitor;
    RemoteDecisions m_remoteDecisions;
    TelegramBridgeSupervisor m_telegram;
    RecordOperations m_record;
    ReliabilityExercises m_exercises;
    AlwaysAllowOperations m_alwaysAllow;
    BulkAllow m_bulkAllow;
};

} // namespace bram
