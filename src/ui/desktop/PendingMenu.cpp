// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/PendingMenu.h"

#include "config/StoredSwitch.h"
#include "model/HonestDisplay.h"
#include "ui/desktop/DesktopActions.h"

#include <algorithm>

namespace bram
{

PendingMenu::PendingMenu(DesktopActions &actions, MenuDrawing drawing)
    : m_actions(actions)
    , m_drawing(drawing)
{
    m_menu.addAction(&m_lastRow);
    connect(&m_lastRow, &QAction::triggered, &m_actions, &DesktopActions::windowRequested);
    labelLastRow(0);
}

PendingMenu::~PendingMenu() = default;

void PendingMenu::update(const QList<ApprovalItem> &items, MenuState state)
{
    QList<MenuRow> shown;
    for (const Row &row : m_rows) {
        shown.append(row.content);
    }
    const QList<MenuRow> wanted = state == MenuState::Open
        ? rowsOfOpenMenu(shown, items, mostRowsWhileOpen)
        : rowsOfClosedMenu(items.first(std::min(mostRows, items.size())));
    std::vector<Row> rows;
    for (const MenuRow &content : wanted) {
        const auto same = std::ranges::find_if(m_rows, [&](const Row &row) {
            return row.menu != nullptr && row.content.item == content.item;
        });
        if (same == m_rows.end()) {
            rows.push_back(makeRow(content));
            continue;
        }
        rows.push_back(std::move(*same));
        if (rows.back().content != content) {
            rows.back().content = content;
            label(rows.back());
        }
    }
    m_rows = std::move(rows); // those that are not wanted any more go, with their actions
    // From the last to the first, each before its successor, and only where it stands elsewhere now.
    QAction *successor = &m_lastRow;
    for (auto row = m_rows.rbegin(); row != m_rows.rend(); ++row) {
        QAction *action = row->menu->menuAction();
        const QList<QAction *> present = m_menu.actions();
        const qsizetype at = present.indexOf(successor);
        if (at == 0 || present.at(at - 1) != action) {
            m_menu.insertAction(successor, action);
        }
        successor = action;
    }
    labelLastRow(items.size() - std::ranges::count_if(m_rows, [](const Row &row) {
                     return row.content.isPending;
                 }));
}

void PendingMenu::retranslate(MenuDrawing drawing)
{
    m_drawing = drawing;
    for (Row &row : m_rows) {
        row.menu->clear();
        fill(*row.menu, row.content.item);
        label(row);
    }
    labelLastRow(m_notListed);
}

PendingMenu::Row PendingMenu::makeRow(const MenuRow &content)
{
    Row row {content, std::make_unique<QMenu>()};
    fill(*row.menu, content.item);
    label(row);
    return row;
}

void PendingMenu::fill(QMenu &menu, const ApprovalItem &item)
{
    const MenuCommandRows command = commandRows(item.command);
    for (const QString &text : command.rows) {
        menu.addAction(menuLabel(text, m_drawing), this,
                       [this, id = item.approvalId] { Q_EMIT m_actions.detailsRequested(id); });
    }
    if (!command.isWhole) {
        menu.addAction(tr("… the command goes on: show it whole"), this,
                       [this, id = item.approvalId] { Q_EMIT m_actions.detailsRequested(id); });
    }
    menu.addSeparator();
    // A row that was broken for want of room looks like a line that ends.
    const bool isShownAsItIs = command.isWhole && !item.command.contains(u'\n');
    if (isShownAsItIs || m_actions.allowPartlyShown().isOn()) {
        addDecision(menu, tr("Allow Once"), item, ApprovalDecision::AllowOnce);
        addDecision(menu, tr("Always Allow"), item, ApprovalDecision::AllowAlways);
    } else {
        menu.addAction(tr("To Allow It, Show It Whole…"), this,
                       [this, id = item.approvalId] { Q_EMIT m_actions.detailsRequested(id); });
    }
    addDecision(menu, tr("Deny"), item, ApprovalDecision::Deny);
    menu.addSeparator();
    menu.addAction(tr("Show Details…"), this,
                   [this, id = item.approvalId] { Q_EMIT m_actions.detailsRequested(id); });
    menu.addAction(tr("Copy Details"), this, [this, item] { m_actions.copyDetails(item); });
    menu.addAction(tr("Copy Approval ID"), this,
                   [this, id = item.approvalId] { m_actions.copyId(id); });
}

void PendingMenu::addDecision(QMenu &menu, const QString &text, const ApprovalItem &item,
                              ApprovalDecision decision)
{
    menu.addAction(text, this, [this, item, decision] { m_actions.decide(item, decision); });
}

void PendingMenu::label(const Row &row) const
{
    const QString text = pendingRowText(row.content.item);
    row.menu->setTitle(
        menuLabel(row.content.isPending ? text : tr("(ended) %1").arg(text), m_drawing));
    row.menu->menuAction()->setEnabled(row.content.isPending);
}

void PendingMenu::labelLastRow(qsizetype notListed)
{
    m_notListed = notListed;
    m_lastRow.setVisible(m_rows.empty() || notListed > 0);
    m_lastRow.setEnabled(notListed > 0);
    m_lastRow.setText(notListed > 0 ? tr("%1 more in the window…").arg(notListed)
                                    : tr("No pending approvals"));
}

} // namespace bram
