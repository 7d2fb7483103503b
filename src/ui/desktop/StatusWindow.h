// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ui/desktop/HistoryModel.h"
#include "ui/desktop/StatusMenu.h"

#include <QLabel>
#include <QPushButton>
#include <QTableView>
#include <QWidget>

#include <vector>

namespace bram
{

class PendingPane;

/// The window with all that the status menu shows and offers: for lists that are too long for a menu, and
/// in place of the tray icon where the desktop has no tray.
class StatusWindow final : public QWidget
{
    Q_OBJECT

public:
    /// Whether the operator can do without the window.
    enum class Role {
        Optional, ///< closing hides it
        OnlySurface, ///< there is no tray icon: closing minimises it
    };

    StatusWindow(DesktopActions &actions, const LanguageChoice &language,
                 SimulationEntry simulationEntry);
    ~StatusWindow() override;

    void setRole(Role role);
    void update(const StatusMenuContent &content);

protected:
    void changeEvent(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    /// A status line: dot and text.
    struct StatusRow {
        QLabel *dot;
        QLabel *text;
    };

    void build();
    QLayout *makeStatusArea();
    QWidget *makeHistory();
    void retranslate();
    void showStatus();
    void leave();
    void fitHistoryColumns();

    DesktopActions &m_actions;
    Role m_role = Role::Optional;
    StatusMenuContent m_content;
    StatusMenu m_menu;
    HistoryModel m_historyModel;
    std::vector<StatusRow> m_statusRows;
    QLabel *m_notice;
    QPushButton *m_reconnect;
    QPushButton *m_reload;
    PendingPane *m_pending;
    QLabel *m_historyTitle;
    QTableView *m_history;
    QPushButton *m_clearHistory;
    QPushButton *m_menuButton;
    QPushButton *m_hide;
};

} // namespace bram
