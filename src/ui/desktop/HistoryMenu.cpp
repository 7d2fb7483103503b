// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/HistoryMenu.h"

#include "ui/desktop/DesktopActions.h"

#include <algorithm>
#include <utility>

namespace bram
{

HistoryMenu::HistoryMenu(DesktopActions &actions, MenuDrawing drawing)
    : m_actions(actions)
    , m_drawing(drawing)
{
    m_empty.setEnabled(false);
    m_separator.setSeparator(true);
    m_menu.addActions({&m_empty, &m_separator, &m_showAll, &m_clear});
    connect(&m_showAll, &QAction::triggered, &m_actions, &DesktopActions::windowRequested);
    connect(&m_clear, &QAction::triggered, &m_actions, &DesktopActions::clearHistory);
    labelFixedRows();
}

HistoryMenu::~HistoryMenu() = default;

void HistoryMenu::update(const QList<ApprovalHistoryEntry> &entries, MenuState state)
{
    if (state == MenuState::Closed) {
        show(entries.first(std::min(mostRows, entries.size())));
        return;
    }
    QList<ApprovalHistoryEntry> rows = m_entries;
    for (ApprovalHistoryEntry &row : rows) {
        const auto now = std::ranges::find(entries, row.id, &ApprovalHistoryEntry::id);
        if (now != entries.end()) {
            row = *now;
        }
    }
    show(rows);
}

void HistoryMenu::show(const QList<ApprovalHistoryEntry> &rows)
{
    const auto count = static_cast<std::size_t>(rows.size());
    while (m_rows.size() > count) {
        m_rows.pop_back();
    }
    while (m_rows.size() < count) {
        auto row = std::make_unique<QAction>();
        const auto index = static_cast<qsizetype>(m_rows.size());
        connect(row.get(), &QAction::triggered, this, [this, index] {
            Q_EMIT m_actions.detailsRequested(m_entries.at(index).approvalId);
        });
        m_menu.insertAction(&m_empty, row.get());
        m_rows.push_back(std::move(row));
    }
    for (qsizetype i = 0; i < rows.size(); ++i) {
        if (m_entries.value(i) != rows.at(i)) {
            m_rows.at(static_cast<std::size_t>(i))
                ->setText(menuLabel(historyRowText(rows.at(i)), m_drawing));
        }
    }
    m_entries = rows;
    m_empty.setVisible(m_entries.isEmpty());
    m_showAll.setEnabled(!m_entries.isEmpty());
    m_clear.setEnabled(!m_entries.isEmpty());
}

void HistoryMenu::retranslate(MenuDrawing drawing)
{
    m_drawing = drawing;
    labelFixedRows();
    const auto entries = std::exchange(m_entries, {});
    show(entries);
}

void HistoryMenu::labelFixedRows()
{
    m_empty.setText(tr("Nothing has happened yet"));
    m_showAll.setText(tr("Show All in the Window…"));
    m_clear.setText(tr("Clear History"));
}

} // namespace bram
