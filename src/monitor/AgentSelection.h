// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "config/ConfiguredAgents.h"
#include "monitor/MonitorPorts.h"
#include "system/FileWatch.h"

#include <QCoro/QCoroTask>
#include <QObject>
#include <QPointer>
#include <QSet>
#include <QString>
#include <QStringList>

namespace bram
{

class OperatorPrompts;
class Preferences;
class SystemLog;

/// Which agent this application approves for: one of those that the platform's configuration names, or
/// `everyAgent`. Remembered in the preferences. Main thread.
///
/// The configuration is watched. A file that can no longer be read changes nothing, and what happens to
/// files never widens the choice from one agent to all: only the operator does that, or a start without
/// any agent configured.
class AgentSelection final : public QObject, public AgentFilter
{
    Q_OBJECT

public:
    AgentSelection(const BrackwenConfig &config, Preferences &preferences, SystemLog &log);

    /// The start: reads the agents and the remembered choice, and watches the configuration from now on.
    void start();

    const QStringList &availableAgentIds() const { return m_availableAgentIds; }
    const QString &selectedAgentId() const { return m_selectedAgentId; }
    bool isUnrestricted() const { return m_selectedAgentId == everyAgent; }

    /// The agent bound to the operator's chat if it is available, else the first one, else `everyAgent`.
    QString defaultSelectedAgentId() const;
    /// The id itself if it may be selected, else the default.
    QString normalizedSelectedAgentId(const QString &agentId) const;

    /// Reads the agents again, on the operator's wish. A selected agent that is gone is replaced.
    void refreshAvailableAgentIdsFromConfig();
    /// The same, as it happens by itself when a file changes.
    void followConfiguration();
    void loadSelectedAgentPreference();
    void setSelectedAgent(const QString &agentId);

    /// Selects as the operator wishes. The first time that this means every agent, it asks first;
    /// turning away leaves everything as it was.
    static QCoro::Task<> choose(QPointer<AgentSelection> self, OperatorPrompts &prompts,
                                QString agentId);

    bool matches(const ApprovalItem &item) const override;

Q_SIGNALS:
    void availableAgentIdsChanged();
    /// The selection has really changed.
    void selectedAgentChanged();

private:
    void takeAgents(const QList<BrackwenConfig::File> &files);
    void select(const QString &agentId, bool isExplicit);
    bool flag(const QString &key) const;
    void setFlag(const QString &key, bool value);
    void savePreferences();

    const BrackwenConfig &m_config;
    Preferences &m_preferences;
    SystemLog &m_log;
    FileWatch m_watch;
    QSet<QString> m_readFiles; ///< paths of the configuration files last taken
    QStringList m_availableAgentIds;
    std::optional<QString> m_pairedAgentId;
    QString m_selectedAgentId {everyAgent};
};

} // namespace bram
