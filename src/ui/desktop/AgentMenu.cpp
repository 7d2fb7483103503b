// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/AgentMenu.h"

#include "config/ConfiguredAgents.h"
#include "model/HonestDisplay.h"
#include "model/TextRules.h"
#include "ui/desktop/DesktopActions.h"

#include <algorithm>

namespace bram
{

namespace
{
constexpr qsizetype longestName = 60;

QString shortName(const QString &agentId)
{
    const QString name = agentName(agentId);
    const QString beginning = firstCharacters(name, longestName);
    return beginning.size() < name.size() ? beginning + u'…' : name;
}
} // namespace

QString agentName(const QString &agentId)
{
    return agentId == everyAgent ? AgentMenu::tr("All agents (unrestricted)")
                                 : honestLine(agentId).text;
}

AgentMenu::AgentMenu(DesktopActions &actions, MenuDrawing drawing)
    : m_actions(actions)
    , m_drawing(drawing)
{
    m_separator.setSeparator(true);
    m_menu.addActions({&m_separator, &m_more});
    connect(&m_more, &QAction::triggered, &m_actions, &DesktopActions::settingsRequested);
    makeRows();
}

AgentMenu::~AgentMenu() = default;

void AgentMenu::update(const AgentChoices &choices, MenuState state)
{
    if (choices != m_choices) {
        m_choices = choices;
        showSelected();
    }
    if (state == MenuState::Closed && m_listed != m_choices.available) {
        makeRows();
    }
}

void AgentMenu::retranslate(MenuDrawing drawing)
{
    m_drawing = drawing;
    label();
}

void AgentMenu::makeRows()
{
    m_listed = m_choices.available;
    m_rows.clear();
    for (const QString &agentId : m_listed.first(std::min(mostAgents, m_listed.size()))) {
        addRow(agentId);
    }
    addRow(everyAgent);
    label();
}

void AgentMenu::addRow(const QString &agentId)
{
    auto action = std::make_unique<QAction>();
    action->setCheckable(true);
    connect(action.get(), &QAction::triggered, this, [this, agentId] {
        m_actions.chooseAgent(agentId);
        showSelected(); // the mark has followed the click, the choice perhaps has not
    });
    m_menu.insertAction(&m_separator, action.get());
    m_rows.push_back({agentId, std::move(action)});
}

void AgentMenu::label()
{
    for (const Row &row : m_rows) {
        row.action->setText(menuLabel(shortName(row.agentId), m_drawing));
    }
    m_more.setText(m_listed.size() > mostAgents ? tr("All %1 in the Settings…").arg(m_listed.size())
                                                : tr("Settings…"));
    showSelected();
}

void AgentMenu::showSelected()
{
    m_menu.setTitle(menuLabel(tr("Agent: %1").arg(shortName(m_choices.selected)), m_drawing));
    for (const Row &row : m_rows) {
        row.action->setChecked(row.agentId == m_choices.selected);
    }
}

} // namespace bram
