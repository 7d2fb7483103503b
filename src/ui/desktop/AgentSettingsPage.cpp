// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/AgentSettingsPage.h"

#include "monitor/AgentSelection.h"
#include "ui/desktop/AgentMenu.h"
#include "ui/desktop/ChoiceBox.h"
#include "ui/desktop/DesktopActions.h"

#include <QBoxLayout>

namespace bram
{

namespace
{
constexpr int widestChoice = 320;
} // namespace

AgentSettingsPage::AgentSettingsPage(DesktopActions &actions, AgentSelection &agents)
    : m_agents(agents)
    , m_choice(new ChoiceBox(this))
    , m_readAgain(new QPushButton(this))
{
    m_choice->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_choice->setMinimumContentsLength(20);
    m_readAgain->setAutoDefault(false);
    auto *choice = new QWidget(this);
    auto *row = new QHBoxLayout(choice);
    row->setContentsMargins({});
    row->addWidget(m_choice, 1);
    row->addWidget(m_readAgain);
    m_choice->setMaximumWidth(widestChoice);
    row->addStretch();
    addRow(choice, m_choice);
    m_meaning = addNote();
    m_emptyNote = addNote();

    connect(m_choice, &ChoiceBox::chosen, this,
            [&actions](const QVariant &agentId) { actions.chooseAgent(agentId.toString()); });
    connect(m_choice, &ChoiceBox::listClosed, this, &AgentSettingsPage::showAgents);
    connect(m_readAgain, &QPushButton::clicked, &agents,
            &AgentSelection::refreshAvailableAgentIdsFromConfig);
    connect(&agents, &AgentSelection::availableAgentIdsChanged, this,
            &AgentSettingsPage::showAgents);
    connect(&agents, &AgentSelection::selectedAgentChanged, this, &AgentSettingsPage::showAgents);
    retranslate();
}

QString AgentSettingsPage::title() const
{
    return tr("&Agents");
}

void AgentSettingsPage::refresh()
{
    showAgents();
}

void AgentSettingsPage::retranslate()
{
    setRowLabel(m_choice->parentWidget(), tr("Show requests &of:"));
    m_choice->setAccessibleName(tr("Agent"));
    m_readAgain->setText(tr("&Refresh"));
    m_readAgain->setToolTip(tr("Reads the agents from the platform's configuration again"));
    showAgents();
}

void AgentSettingsPage::showAgents()
{
    if (m_choice->isListOpen()) { // the one under the pointer is the one that is meant
        return;
    }
    m_choice->clear();
    for (const QString &agentId : m_agents.availableAgentIds()) {
        m_choice->addItem(agentName(agentId), agentId);
    }
    if (m_choice->count() > 0) {
        m_choice->insertSeparator(m_choice->count());
    }
    m_choice->addItem(agentName(everyAgent), everyAgent);
    m_choice->setChosen(m_agents.selectedAgentId());
    setNote(
        m_meaning,
        m_agents.isUnrestricted()
            ? tr("The requests of every agent are shown, asked about and notified of.")
            : tr("Only the requests of this agent are shown, asked about and notified of. Those "
                 "of the others wait at the gateway."));
    setNote(m_emptyNote,
            m_agents.isFromBefore() ? tr("The platform's configuration cannot be read or names no "
                                         "agent: these are the agents and the "
                                         "choice from before. Its file is watched.")
                : m_agents.availableAgentIds().isEmpty()
                ? tr("The platform's configuration names no agent. Once it does, choose Refresh, "
                     "or wait: "
                     "its file is watched.")
                : QString());
}

} // namespace bram
