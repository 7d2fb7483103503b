// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ui/desktop/SettingsPage.h"

#include <QPushButton>

namespace bram
{

class AgentSelection;
class ChoiceBox;
class DesktopActions;

/// Whose requests are shown: one agent's, or everybody's.
class AgentSettingsPage final : public SettingsPage
{
    Q_OBJECT

public:
    AgentSettingsPage(DesktopActions &actions, AgentSelection &agents);

    QString title() const override;
    void refresh() override;

protected:
    void retranslate() override;

private:
    void showAgents();

    AgentSelection &m_agents;
    ChoiceBox *m_choice;
    QPushButton *m_readAgain;
    QLabel *m_meaning;
    QLabel *m_emptyNote;
};

} // namespace bram
