// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/StatusMenu.h"

#include "config/StoredSwitch.h"
#include "system/NextTurn.h"
#include "ui/desktop/DesktopActions.h"
#include "ui/desktop/RecordActions.h"
#include "ui/desktop/StatusDot.h"
#include "ui/language/LanguageChoice.h"
#include "ui/language/Words.h"

#include <chrono>

namespace bram
{

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{
constexpr auto longestOpen = 2min;
/// A panel may tell of the click after it has told that the menu is closed.
constexpr auto clickMayFollowFor = 1s;
} // namespace

StatusMenu::StatusMenu(DesktopActions &actions, const LanguageChoice &language, MenuDrawing drawing,
                       SimulationEntry simulationEntry)
    : m_actions(actions)
    , m_language(language)
    , m_drawing(drawing)
    , m_pending(actions, drawing)
    , m_history(actions, drawing)
    , m_agents(actions, drawing)
    , m_record(actions.record())
{
    build();
    takeBulkItems();
    labelRows();
    m_simulation.setVisible(simulationEntry == SimulationEntry::Shown);
    m_practiceChat.setVisible(actions.practiceChat() != nullptr);
    m_practice.setVisible(actions.practiceChat() != nullptr);
    m_practice.setEnabled(false);
    m_selfTest.setVisible(simulationEntry == SimulationEntry::Shown);
    m_forgottenOpen.setSingleShot(true);
    m_forgottenOpen.setInterval(longestOpen);
    connect(&m_forgottenOpen, &QTimer::timeout, this, &StatusMenu::countAsClosed);
    m_closing.setSingleShot(true);
    m_closing.setInterval(clickMayFollowFor);
    connect(&m_closing, &QTimer::timeout, this, &StatusMenu::countAsClosed);
    connect(&m_menu, &QMenu::aboutToShow, this, &StatusMenu::onOpened);
    connect(&actions.allowPartlyShown(), &StoredSwitch::changed, this,
            [this] { m_pending.retranslate(m_drawing); });
    connect(&m_menu, &QMenu::aboutToHide, this, [this] { m_closing.start(); });
    update({});
}

void StatusMenu::build()
{
    m_menu.addAction(&m_practice);
    for (QAction &row : m_statusRows) {
        m_menu.addAction(&row);
        connect(&row, &QAction::triggered, &m_actions, &DesktopActions::windowRequested);
    }
    m_menu.addActions({&m_reconnect, &m_reload});
    m_menu.addSeparator();
    m_menu.addMenu(&m_pending.menu());
    buildBulkMenu();
    m_menu.addSeparator();
    m_menu.addMenu(&m_history.menu());
    m_menu.addSeparator();
    m_menu.addActions({&m_window, &m_approvalList, &m_practiceChat, &m_controlUi, &m_clearPending,
                       &m_simulation});
    m_menu.addSeparator();
    m_menu.addMenu(&m_agents.menu());
    m_menu.addMenu(&m_record.menu());
    m_record.append(m_selfTest);
    buildLanguageMenu();
    m_menu.addActions({&m_settings, &m_about, &m_quit});

    connect(&m_reconnect, &QAction::triggered, &m_actions, &DesktopActions::reconnectGateway);
    connect(&m_reload, &QAction::triggered, &m_actions, &DesktopActions::reloadGatewayToken);
    connect(&m_window, &QAction::triggered, &m_actions, &DesktopActions::windowRequested);
    connect(&m_approvalList, &QAction::triggered, &m_actions,
            &DesktopActions::approvalListRequested);
    connect(&m_controlUi, &QAction::triggered, &m_actions, &DesktopActions::openControlUI);
    connect(&m_clearPending, &QAction::triggered, &m_actions, &DesktopActions::clearPending);
    connect(&m_simulation, &QAction::triggered, &m_actions, &DesktopActions::simulationRequested);
    connect(&m_practiceChat, &QAction::triggered, &m_actions,
            &DesktopActions::practiceChatRequested);
    connect(&m_selfTest, &QAction::triggered, &m_actions, &DesktopActions::selfTestRequested);
    connect(&m_settings, &QAction::triggered, &m_actions, &DesktopActions::settingsRequested);
    connect(&m_about, &QAction::triggered, &m_actions, &DesktopActions::aboutRequested);
    connect(&m_quit, &QAction::triggered, &m_actions, &DesktopActions::quitRequested);
}

/// A submenu of their own keeps these one deliberate step away from a slip of the hand.
void StatusMenu::buildBulkMenu()
{
    m_bulk.addSeparator(); // the rows that decide come above it
    m_bulk.addAction(&m_copyAll);
    m_menu.addMenu(&m_bulk);
    connect(&m_copyAll, &QAction::triggered, &m_actions.record(),
            &RecordActions::copyOrSaveAllPending);
}

void StatusMenu::buildLanguageMenu()
{
    // Each in its own language, so that who does not read the present one finds the way back.
    m_english.setText(u"English"_s);
    m_korean.setText(u"한국어"_s);
    const auto addLanguage = [this](QAction &action, MenuLanguage language) {
        action.setCheckable(true);
        m_languages.addAction(&action);
        connect(&action, &QAction::triggered, this,
                [this, language] { m_actions.chooseLanguage(language); });
    };
    addLanguage(m_english, MenuLanguage::English);
    addLanguage(m_korean, MenuLanguage::Korean);
    m_menu.addMenu(&m_languages);
}

void StatusMenu::update(const StatusMenuContent &content)
{
    m_content = content;
    if (m_state == MenuState::Closed) {
        takeBulkItems();
    }
    showStatus();
    m_pending.update(content.pending, m_state);
    m_history.update(content.history, m_state);
    m_agents.update(content.agents, m_state);
    showPendingCount();
}

void StatusMenu::retranslate()
{
    labelRows();
    labelBulkRows();
    m_pending.retranslate(m_drawing);
    m_history.retranslate(m_drawing);
    m_agents.retranslate(m_drawing);
    m_record.retranslate();
    update(StatusMenuContent(m_content));
}

void StatusMenu::setDrawing(MenuDrawing drawing)
{
    if (drawing != m_drawing) {
        m_drawing = drawing;
        retranslate();
    }
}

void StatusMenu::takeBulkItems()
{
    if (m_bulkRows && m_bulkRows->items == m_content.pending) {
        return;
    }
    if (m_bulkRows) {
        for (QAction *action : m_bulkRows->actions()) {
            m_bulk.removeAction(action);
        }
        inNextTurn(this, [old = m_bulkRows] { }); // one of them may be what calls this
    }
    m_bulkRows = std::make_shared<BulkRows>();
    m_bulkRows->items = m_content.pending;
    m_bulk.insertActions(m_bulk.actions().constFirst(), m_bulkRows->actions());
    const QList<ApprovalItem> &items = m_bulkRows->items;
    for (const auto &[action, decision] :
         {std::pair(&m_bulkRows->approve, ApprovalDecision::AllowOnce),
          std::pair(&m_bulkRows->alwaysAllow, ApprovalDecision::AllowAlways)}) {
        connect(action, &QAction::triggered, this,
                [this, items, decision] { m_actions.allowAll(items, decision); });
    }
    connect(&m_bulkRows->deny, &QAction::triggered, this,
            [this, items] { m_actions.denyAll(items); });
    labelBulkRows();
}

void StatusMenu::labelBulkRows()
{
    const qsizetype count = m_bulkRows->items.size();
    const auto label = [count](QAction &row, const QString &none, const QString &some) {
        row.setText(count == 0 ? none : some.arg(count));
    };
    label(m_bulkRows->approve, tr("Approve All Pending"), tr("Approve All Pending (%1)"));
    label(m_bulkRows->alwaysAllow, tr("Always Allow All Pending"),
          tr("Always Allow All Pending (%1)"));
    label(m_bulkRows->deny, tr("Deny All pending"), tr("Deny All pending (%1)"));
}

void StatusMenu::labelRows()
{
    m_practice.setText(practiceSentence());
    m_reconnect.setText(tr("Reconnect Gateway"));
    m_reload.setText(tr("Reload Gateway Token"));
    m_bulk.setTitle(tr("All Pending Approvals"));
    m_copyAll.setText(tr("Copy all approval IDs and details"));
    m_history.menu().setTitle(tr("Recent History"));
    m_window.setText(tr("Open Window…"));
    m_approvalList.setText(tr("Manage Approval List"));
    m_practiceChat.setText(tr("Open Practice Chat…"));
    m_controlUi.setText(tr("Open Control UI"));
    m_clearPending.setText(tr("Clear Pending Approvals"));
    m_simulation.setText(tr("Run Program Simulation"));
    m_selfTest.setText(tr("Run Self-Test"));
    m_settings.setText(tr("Settings…"));
    m_languages.setTitle(tr("Language (언어)"));
    m_about.setText(tr("About BRAM"));
    m_quit.setText(tr("Quit BRAM"));
    m_english.setChecked(m_language.current() == MenuLanguage::English);
    m_korean.setChecked(m_language.current() == MenuLanguage::Korean);
}

void StatusMenu::showStatus()
{
    for (qsizetype i = 0; i < statusRowCount; ++i) {
        QAction &row = m_statusRows.at(static_cast<std::size_t>(i));
        const bool isUsed = i < m_content.status.size();
        row.setVisible(isUsed);
        if (isUsed) {
            const StatusLine &line = m_content.status.at(i);
            row.setText(menuLabel(statusRowText(line.text), m_drawing));
            row.setIcon(statusDot(line.indicator));
            row.setIconVisibleInMenu(true);
        }
    }
}

void StatusMenu::showPendingCount()
{
    const qsizetype count = m_content.pending.size();
    m_pending.menu().setTitle(count == 0 ? tr("Pending approvals")
                                         : tr("Pending approvals (%1)").arg(count));
    for (QAction *action : m_bulkRows->actions() + QList {&m_clearPending}) {
        action->setEnabled(count > 0);
    }
}

/// Also when it counts as open already: then nobody has said that it was closed in between.
void StatusMenu::onOpened()
{
    countAsClosed();
    Q_EMIT aboutToOpen();
    m_state = MenuState::Open;
    m_forgottenOpen.start();
}

void StatusMenu::countAsClosed()
{
    m_closing.stop();
    m_forgottenOpen.stop();
    m_state = MenuState::Closed;
    update(StatusMenuContent(m_content));
}

} // namespace bram
