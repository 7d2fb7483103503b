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
/// The configuration is watched. A file that cannot be read changes nothing, at the start neither, and what happens
/// to files never widens the choice from one agent to all: only the operator does that.
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

    /// Whether the configuration could not be read, or names no agent, when it was last looked at: then the agents
    /// and the choice are those from before.
    bool isFromBefore() const { return m_isFromBefore; }

    /// Reads the agents again, on the operator's wish or because a file has changed. A selected agent that is gone
    /// is replaced.
    void refreshAvailableAgentIdsFromConfig();
    void loadSelectedAgentPreference();
    void setSelectedAgent(const QString &agentId);

    /// Selects as the operator wishes. The first time that this means every agent, it asks first;
    /// turning away leaves everything as it was.
    static QCoro::Task<> choose(QPointer<AgentSelection> self, OperatorPrompts &prompts,
                                QString agentId);

    bool matches(const ApprovalItem &item) const override;

Q_SIGNALS:
    /// The agents, or whether they are those from before.
    void availableAgentIdsChanged();
    /// The selection has really changed.
    void selectedAgentChanged();

private:
    /// Whether the files say which agents there are, as far as the choice depends on it.
    bool isUsable(const QList<BrackwenConfig::File> &files) const;
    void takeAgents(const QList<BrackwenConfig::File> &files);
    void keepAgents();
    std::optional<QString> storedAgentId() const;
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
    bool m_isFromBefore = false;
    std::optional<QString> m_pairedAgentId;
    QString m_selectedAgentId {everyAgent};
};

} // namespace bram
