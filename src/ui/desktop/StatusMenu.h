// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ui/desktop/AgentMenu.h"
#include "ui/desktop/HistoryMenu.h"
#include "ui/desktop/PendingMenu.h"
#include "ui/desktop/RecordMenu.h"
#include "ui/desktop/StatusTexts.h"

#include <QMenu>
#include <QObject>
#include <QTimer>

#include <array>
#include <memory>

namespace bram
{

class DesktopActions;
class LanguageChoice;

/// Whether the menu offers to exercise the program with made-up requests, for those who ask for it.
enum class SimulationEntry {
    Hidden,
    Shown,
};

/// What the status menu shows.
struct StatusMenuContent {
    QList<StatusLine> status;
    QList<ApprovalItem> pending;
    QList<ApprovalHistoryEntry> history;
    AgentChoices agents {};
};

/// The menu that opens from the tray icon. Its rows never change in number while it is open and its lists
/// follow by the rules of their submenus, so that nothing moves under the pointer. Main thread.
class StatusMenu final : public QObject
{
    Q_OBJECT

public:
    /// Gateway, token, notifications, Telegram, the lock on remote approvals, and two about the audit log.
    static constexpr qsizetype statusRowCount = 7;

    StatusMenu(DesktopActions &actions, const LanguageChoice &language, MenuDrawing drawing,
               SimulationEntry simulationEntry = SimulationEntry::Hidden);

    QMenu &menu() { return m_menu; }

    void update(const StatusMenuContent &content);

    /// Writes every text anew, after a change of the language.
    void retranslate();
    /// The same when somebody else draws the menu than was thought.
    void setDrawing(MenuDrawing drawing);

Q_SIGNALS:
    /// The last moment to bring everything up to date.
    void aboutToOpen();

private:
    void build();
    void buildBulkMenu();
    void buildLanguageMenu();
    void labelRows();
    void showStatus();
    void showPendingCount();
    void takeBulkItems();
    void labelBulkRows();
    /// The rows about all requests, with the set of them that they name: whoever clicks on an older row, in a
    /// panel that has not heard of the newer one, decides nothing.
    struct BulkRows {
        QList<ApprovalItem> items;
        QAction approve;
        QAction alwaysAllow;
        QAction deny;

        QList<QAction *> actions() { return {&approve, &alwaysAllow, &deny}; }
    };
    void onOpened();
    void countAsClosed();

    DesktopActions &m_actions;
    const LanguageChoice &m_language;
    MenuDrawing m_drawing;
    StatusMenuContent m_content;
    MenuState m_state = MenuState::Closed;
    QTimer m_closing; ///< from when the menu was closed until it counts as closed
    QTimer m_forgottenOpen; ///< a panel may fail to say that it has closed the menu

    QMenu m_menu;
    QAction m_practice; ///< says that nothing is real
    std::array<QAction, statusRowCount> m_statusRows;
    QAction m_reconnect;
    QAction m_reload;
    PendingMenu m_pending;
    QMenu m_bulk;
    std::shared_ptr<BulkRows> m_bulkRows;
    QAction m_copyAll;
    HistoryMenu m_history;
    QAction m_window;
    QAction m_approvalList;
    QAction m_controlUi;
    QAction m_clearPending;
    QAction m_practiceChat;
    QAction m_simulation;
    AgentMenu m_agents;
    RecordMenu m_record;
    QAction m_selfTest;
    QMenu m_languages;
    QAction m_english;
    QAction m_korean;
    QAction m_settings;
    QAction m_about;
    QAction m_quit;
};

} // namespace bram
