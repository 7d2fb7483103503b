// SPDX-License-Identifier: Apache-2.0
#include "ui/terminal/SettingsCommands.h"

#include "config/SharedPollingSetting.h"
#include "config/StoredSwitch.h"
#include "monitor/AgentSelection.h"
#include "system/BackgroundTasks.h"
#include "ui/language/LanguageChoice.h"
#include "ui/terminal/CommandLine.h"
#include "ui/terminal/TerminalText.h"
#include "ui/terminal/TerminalTr.h"
#include "ui/terminal/TerminalVoice.h"

namespace bram
{

using namespace Qt::StringLiterals;

SettingsCommands::SettingsCommands(const Collaborators &collaborators)
    : m_collaborators(collaborators)
{
}

void SettingsCommands::listAgents()
{
    AgentSelection &agents = m_collaborators.agents;
    agents.refreshAvailableAgentIdsFromConfig();
    TerminalVoice &voice = m_collaborators.voice;
    voice.print(agentLines(agents.availableAgentIds(), agents.selectedAgentId(), voice.columns()));
    if (agents.isFromBefore()) {
        voice.say(
            TerminalTr::tr(
                "The platform's configuration cannot be read or names no agent: these are the "
                "agents and the choice from before."),
            LineStyle::Warning);
    }
}

void SettingsCommands::chooseAgent(const QString &agentId)
{
    const AgentSelection &agents = m_collaborators.agents;
    if (agents.normalizedSelectedAgentId(agentId) != agentId) {
        m_collaborators.voice.say(TerminalTr::tr("No agent has this name (`agents` lists them): ")
                                      + beginningOfTyped(agentId),
                                  LineStyle::Warning);
        return;
    }
    m_collaborators.tasks.spawn(choose(this, agentId), u"choice of agent"_s);
}

QCoro::Task<> SettingsCommands::choose(QPointer<SettingsCommands> self, QString agentId)
{
    co_await AgentSelection::choose(&self->m_collaborators.agents, self->m_collaborators.prompts,
                                    agentId);
    if (self) {
        self->sayAgent();
    }
}

void SettingsCommands::sayAgent()
{
    const AgentSelection &agents = m_collaborators.agents;
    m_collaborators.voice.say(agents.isUnrestricted()
                                  ? TerminalTr::tr("Requests of every agent are shown.")
                                  : TerminalTr::tr("Only requests of this agent are shown: ")
                                      + agents.selectedAgentId());
}

void SettingsCommands::chooseLanguage(MenuLanguage language)
{
    const bool isKept = m_collaborators.language.choose(language);
    m_collaborators.voice.say(TerminalTr::tr("The texts are in English now."));
    sayUnlessKept(isKept);
}

void SettingsCommands::setSharedPolling(bool isAllowed)
{
    const bool isKept = m_collaborators.sharedPolling.setAllowSharedBotPollingOverride(isAllowed);
    m_collaborators.voice.say(
        isAllowed ? TerminalTr::tr(
                        "Messages of a Telegram bot that the platform uses too may be fetched.")
                  : TerminalTr::tr(
                        "Messages of a Telegram bot that the platform uses too are left to it."));
    sayUnlessKept(isKept);
}

QList<SettingsCommands::NamedSwitch> SettingsCommands::switches() const
{
    return {{u"allow-partly-shown"_s, m_collaborators.allowPartlyShown,
             TerminalTr::tr("offers allow also where a command is not shown whole")},
            {u"unencrypted-gateway"_s, m_collaborators.unencryptedGateway,
             TerminalTr::tr("allows an unencrypted gateway (ws://) on another machine")}};
}

void SettingsCommands::list()
{
    for (const auto &[name, setting, meaning] : switches()) {
        m_collaborators.voice.say(u"%1 %2  %3"_s.arg(name, -20)
                                      .arg(setting.isOn() ? u"on"_s : u"off"_s, -3)
                                      .arg(meaning));
    }
}

void SettingsCommands::set(const QString &name, bool isOn)
{
    for (const auto &[known, setting, meaning] : switches()) {
        if (known == name) {
            const bool isKept = setting.setOn(isOn);
            m_collaborators.voice.say(u"%1 %2"_s.arg(name, isOn ? u"on"_s : u"off"_s));
            sayUnlessKept(isKept);
            return;
        }
    }
    m_collaborators.voice.say(TerminalTr::tr("No setting has this name (`settings` lists them): ")
                                  + beginningOfTyped(name),
                              LineStyle::Warning);
}

void SettingsCommands::sayUnlessKept(bool isKept)
{
    if (!isKept) {
        m_collaborators.voice.say(
            TerminalTr::tr("This could not be remembered; it lasts until the program ends."),
            LineStyle::Warning);
    }
}

} // namespace bram
