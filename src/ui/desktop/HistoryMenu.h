// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalHistoryEntry.h"
#include "ui/desktop/MenuRows.h"
#include "ui/desktop/MenuText.h"

#include <QList>
#include <QMenu>

#include <memory>
#include <vector>

namespace bram
{

class DesktopActions;

/// The submenu of recent history: its newest rows, with what became of each request. The window has all.
/// While it is open its rows keep their places and follow what becomes of their requests; new ones come
/// when it is next opened.
class HistoryMenu final : public QObject
{
    Q_OBJECT

public:
    static constexpr qsizetype mostRows = 20;

    HistoryMenu(DesktopActions &actions, MenuDrawing drawing);
    ~HistoryMenu() override;

    QMenu &menu() { return m_menu; }

    void update(const QList<ApprovalHistoryEntry> &entries, MenuState state);
    /// Writes every text anew, after a change of the language or of who draws.
    void retranslate(MenuDrawing drawing);

private:
    void show(const QList<ApprovalHistoryEntry> &rows);
    void labelFixedRows();

    DesktopActions &m_actions;
    MenuDrawing m_drawing;
    QMenu m_menu;
    std::vector<std::unique_ptr<QAction>> m_rows;
    QList<ApprovalHistoryEntry> m_entries;
    QAction m_empty;
    QAction m_separator;
    QAction m_showAll;
    QAction m_clear;
};

} // namespace bram
