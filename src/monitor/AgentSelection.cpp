// SPDX-License-Identifier: Apache-2.0
#include "monitor/AgentSelection.h"

#include "config/ValueParsers.h"
#include "model/TextRules.h"
#include "monitor/OperatorPrompts.h"
#include "system/Preferences.h"
#include "system/SystemLog.h"

#include <utility>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
const QString selectedAgentDefaultsKey = u"approvals.selected-agent-id"_s;
const QString selectedAgentUnrestrictedExplicitDefaultsKey
    = u"approvals.selected-agent-unrestricted-explicit"_s;
const QString selectedAgentUnrestrictedConfirmedDefaultsKey
    = u"approvals.selected-agent-unrestricted-confirmed"_s;

Question unrestrictedQuestion()
{
    return {
        .title = AgentSelection::tr("Confirm Unrestricted Mode"),
        .text = AgentSelection::tr("Selecting All agents (unrestricted) expands approval surface. "
                                   "Do you want to continue?"),
        .buttons = {AgentSelection::tr("Apply Unrestricted"), AgentSelection::tr("Cancel")},
        .harmless = 1,
    };
}
} // namespace

AgentSelection::AgentSelection(const BrackwenConfig &config, Preferences &preferences,
                               SystemLog &log)
    : m_config(config)
    , m_preferences(preferences)
    , m_log(log)
    , m_watch(config.candidatePaths())
{
    connect(&m_watch, &FileWatch::changed, this,
            &AgentSelection::refreshAvailableAgentIdsFromConfig);
}

void AgentSelection::start()
{
    m_watch.start();
    takeAgents(m_config.loadFiles());
    const auto stored = storedAgentId();
    if (stored && stored != everyAgent && !m_availableAgentIds.contains(*stored)
        && (m_availableAgentIds.isEmpty() || !m_config.problems().isEmpty())) {
        m_availableAgentIds.append(*stored);
        keepAgents();
    }
    loadSelectedAgentPreference();
}

QString AgentSelection::defaultSelectedAgentId() const
{
    if (m_pairedAgentId && m_availableAgentIds.contains(*m_pairedAgentId)) {
        return *m_pairedAgentId;
    }
    return m_availableAgentIds.value(0, everyAgent);
}

QString AgentSelection::normalizedSelectedAgentId(const QString &agentId) const
{
    return agentId == everyAgent || m_availableAgentIds.contains(agentId)
        ? agentId
        : defaultSelectedAgentId();
}

void AgentSelection::refreshAvailableAgentIdsFromConfig()
{
    const auto files = m_config.loadFiles();
    if (isUsable(files)) {
        takeAgents(files);
    } else {
        keepAgents(); // a file is perhaps in the middle of being written: then there will be another change
    }
}

bool AgentSelection::isUsable(const QList<BrackwenConfig::File> &files) const
{
    QSet<QString> readable;
    for (const auto &file : files) {
        readable.insert(file.path);
    }
    if (!readable.contains(m_readFiles)) {
        return false;
    }
    const QStringList agents = loadAvailableAgentIdsFromBrackwenConfig(files);
    if (agents.isEmpty()) {
        return m_availableAgentIds.isEmpty();
    }
    return isUnrestricted() || agents.contains(m_selectedAgentId) || m_config.problems().isEmpty();
}

void AgentSelection::keepAgents()
{
    m_log.write(
        u"[Brackwen] the configuration cannot be read or names no agent any more; the agents "
        "stay as they were"_s);
    if (!std::exchange(m_isFromBefore, true)) {
        Q_EMIT availableAgentIdsChanged();
    }
}

void AgentSelection::takeAgents(const QList<BrackwenConfig::File> &files)
{
    m_readFiles.clear();
    for (const auto &file : files) {
        m_readFiles.insert(file.path);
    }
    m_pairedAgentId = loadPairedAgentIdFromBrackwenConfig(files);
    const QStringList before
        = std::exchange(m_availableAgentIds, loadAvailableAgentIdsFromBrackwenConfig(files));
    const bool wasFromBefore = std::exchange(m_isFromBefore, false);
    const QString normalized = normalizedSelectedAgentId(m_selectedAgentId);
    if (normalized != m_selectedAgentId) {
        select(normalized, flag(selectedAgentUnrestrictedExplicitDefaultsKey));
    }
    if (m_availableAgentIds != before || wasFromBefore) {
        Q_EMIT availableAgentIdsChanged();
    }
}

void AgentSelection::loadSelectedAgentPreference()
{
    const auto stored = storedAgentId();
    const bool isExplicit = flag(selectedAgentUnrestrictedExplicitDefaultsKey);
    QString candidate = defaultSelectedAgentId();
    if (stored && (stored != everyAgent || isExplicit)) {
        candidate = *stored;
    }
    select(normalizedSelectedAgentId(candidate), isExplicit);
}

void AgentSelection::setSelectedAgent(const QString &agentId)
{
    const QString normalized = normalizedSelectedAgentId(agentId);
    const bool isAll = normalized == everyAgent;
    if (normalized == m_selectedAgentId
        && isAll == flag(selectedAgentUnrestrictedExplicitDefaultsKey)) {
        return;
    }
    select(normalized, isAll);
}

void AgentSelection::select(const QString &agentId, bool isExplicit)
{
    const bool isChanged = std::exchange(m_selectedAgentId, agentId) != agentId;
    m_preferences.setText(selectedAgentDefaultsKey, agentId);
    setFlag(selectedAgentUnrestrictedExplicitDefaultsKey, isExplicit && isUnrestricted());
    savePreferences();
    if (isChanged) {
        Q_EMIT selectedAgentChanged();
    }
}

QCoro::Task<> AgentSelection::choose(QPointer<AgentSelection> self, OperatorPrompts &prompts,
                                     QString agentId)
{
    if (agentId != everyAgent || self->flag(selectedAgentUnrestrictedConfirmedDefaultsKey)) {
        self->setSelectedAgent(agentId);
        co_return;
    }
    const qsizetype answer = co_await prompts.ask(unrestrictedQuestion());
    if (!self || answer != 0) {
        co_return;
    }
    self->setFlag(selectedAgentUnrestrictedConfirmedDefaultsKey, true);
    self->savePreferences();
    self->setSelectedAgent(agentId);
}

bool AgentSelection::matches(const ApprovalItem &item) const
{
    return isUnrestricted() || item.agentId == m_selectedAgentId;
}

std::optional<QString> AgentSelection::storedAgentId() const
{
    return trimmedOrAbsent(m_preferences.text(selectedAgentDefaultsKey));
}

bool AgentSelection::flag(const QString &key) const
{
    return parseBool(m_preferences.text(key).value_or(QString())).value_or(false);
}

void AgentSelection::setFlag(const QString &key, bool value)
{
    m_preferences.setText(key, value ? u"true"_s : u"false"_s);
}

void AgentSelection::savePreferences()
{
    if (!m_preferences.save()) {
        m_log.write(u"[Brackwen] Agent selection: the preferences could not be written; the change "
                    "lasts until the program ends"_s);
    }
}

} // namespace bram
