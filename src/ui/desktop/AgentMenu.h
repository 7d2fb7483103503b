// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ui/desktop/MenuRows.h"
#include "ui/desktop/MenuText.h"

#include <QAction>
#include <QMenu>
#include <QObject>
#include <QStringList>

#include <memory>
#include <vector>

namespace bram
{

class DesktopActions;

/// The agents that there are to choose from, and the one chosen.
struct AgentChoices {
    QStringList available;
    QString selected;

    bool operator==(const AgentChoices &) const = default;
};

/// An agent as people read it; every agent together have a name of their own.
QString agentName(const QString &agentId);

/// The submenu in which one agent, or all of them, is chosen; its title names the one chosen. While it is open
/// its rows stay as they are, and only their marks follow. Main thread.
class AgentMenu final : public QObject
{
    Q_OBJECT

public:
    /// More agents than these are in the settings.
    static constexpr qsizetype mostAgents = 20;

    AgentMenu(DesktopActions &actions, MenuDrawing drawing);
    ~AgentMenu() override;

    QMenu &menu() { return m_menu; }

    void update(const AgentChoices &choices, MenuState state);
    /// Writes every text anew, after a change of the language or of who draws.
    void retranslate(MenuDrawing drawing);

private:
    struct Row {
        QString agentId;
        std::unique_ptr<QAction> action;
    };

    void makeRows();
    void addRow(const QString &agentId);
    void label();
    void showSelected();

    DesktopActions &m_actions;
    MenuDrawing m_drawing;
    AgentChoices m_choices;
    QStringList m_listed; ///< what the rows were made from
    QMenu m_menu;
    std::vector<Row> m_rows; ///< the last one is for every agent
    QAction m_separator;
    QAction m_more;
};

} // namespace bram
