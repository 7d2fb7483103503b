// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalDecision.h"
#include "ui/desktop/MenuRows.h"
#include "ui/desktop/MenuText.h"

#include <QMenu>
#include <QPointer>

#include <memory>
#include <vector>

namespace bram
{

class DesktopActions;

/// The submenu of pending requests: a submenu for each, with its command and what can be done about it.
/// While it is open nothing moves; see `rowsOfOpenMenu`. Only the first 50 requests have rows, and 50 more
/// while it is open, because ended ones keep theirs; a last row leads to the window that lists the others.
class PendingMenu final : public QObject
{
    Q_OBJECT

public:
    static constexpr qsizetype mostRows = 50;
    static constexpr qsizetype mostRowsWhileOpen = 100;

    PendingMenu(DesktopActions &actions, MenuDrawing drawing);
    ~PendingMenu() override;

    QMenu &menu() { return m_menu; }

    void update(const QList<ApprovalItem> &items, MenuState state);
    /// Writes every text anew, after a change of the language or of who draws.
    void retranslate(MenuDrawing drawing);

private:
    struct Row {
        MenuRow content;
        std::unique_ptr<QMenu> menu;
    };

    Row makeRow(const MenuRow &content);
    void fill(QMenu &menu, const ApprovalItem &item);
    void addDecision(QMenu &menu, const QString &text, const ApprovalItem &item,
                     ApprovalDecision decision);
    void label(const Row &row) const;
    void labelLastRow(qsizetype notListed);

    DesktopActions &m_actions;
    MenuDrawing m_drawing;
    QMenu m_menu;
    QAction m_lastRow; ///< "No pending approvals", or how many more there are
    std::vector<Row> m_rows;
    qsizetype m_notListed = 0;
};

} // namespace bram
