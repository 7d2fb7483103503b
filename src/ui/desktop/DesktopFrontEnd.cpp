// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/DesktopFrontEnd.h"

#include "model/TextRules.h"
#include "monitor/ApprovalMonitor.h"
#include "monitor/ApprovalNotifications.h"
#include "monitor/OperatorPrompts.h"
#include "monitor/ReliabilityExercises.h"
#include "monitor/TelegramBridgeSupervisor.h"
#include "system/BackgroundTasks.h"
#include "system/NextTurn.h"
#include "ui/desktop/ApprovalPopupPresenter.h"
#include "ui/desktop/BringToFront.h"
#include "ui/desktop/CrestIcon.h"
#include "ui/desktop/DesktopSurface.h"
#include "ui/desktop/MenuText.h"
#include "ui/desktop/RequestDetailsWindow.h"
#include "ui/desktop/StatusWindow.h"
#include "ui/language/AuditWords.h"
#include "ui/language/LanguageChoice.h"
#include "ui/language/Words.h"

#include <QApplication>
#include <QWindow>

#include <algorithm>
#include <chrono>

namespace bram
{

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{
constexpr auto pauseBetweenRefreshes = 100ms;
constexpr qint64 manyAtOnceMs = 5000;

/// As it is: the dialog marks what could mislead, and would mark the marks.
QString beginningOf(const QString &command)
{
    constexpr qsizetype most = 60;
    const QString beginning = firstCharacters(command.section(u'\n', 0, 0), most);
    return beginning.size() < command.size() ? beginning + u'…' : beginning;
}
} // namespace

DesktopFrontEnd::DesktopFrontEnd(const Collaborators &collaborators)
    : m_collaborators(collaborators)
    , m_actions({.monitor = collaborators.monitor,
                 .bulkAllow = collaborators.bulkAllow,
                 .allowPartlyShown = collaborators.settings.allowPartlyShown,
                 .record = collaborators.record,
                 .prompts = collaborators.prompts,
                 .tasks = collaborators.tasks,
                 .language = collaborators.language,
                 .environment = collaborators.environment,
                 .clock = collaborators.clock,
                 .surface =
                     [this] {
                         return desktopSurface(m_tray.host(),
                                               m_collaborators.notificationService.state());
                     },
                 .practiceChat = collaborators.practiceChat})
    , m_menu(m_actions, collaborators.language, MenuDrawing::TrayHost,
             collaborators.simulationEntry)
    , m_utilities({.actions = m_actions,
                   .agents = collaborators.monitor.agents(),
                   .language = collaborators.language,
                   .tasks = collaborators.tasks,
                   .notificationService = collaborators.notificationService,
                   .notifications = collaborators.notifications,
                   .settings = collaborators.settings})
    , m_approvalList({.operations = collaborators.alwaysAllow,
                      .record = m_actions.record(),
                      .board = collaborators.monitor.board(),
                      .audit = collaborators.audit,
                      .prompts = collaborators.prompts,
                      .tasks = collaborators.tasks,
                      .clock = collaborators.clock,
                      .log = collaborators.log})
{
    m_pause.setSingleShot(true);
    m_pause.setInterval(pauseBetweenRefreshes);
    connect(&m_pause, &QTimer::timeout, this, [this] {
        if (std::exchange(m_refreshScheduled, false)) {
            refresh();
        }
    });
    followMonitor();
    followWishes();
}

DesktopFrontEnd::~DesktopFrontEnd() = default;

void DesktopFrontEnd::followMonitor()
{
    const ApprovalBoard &board = m_collaborators.monitor.board();
    m_collaborators.popup.setAskReasons(
        [&board](const QString &approvalId) { return board.askReason(approvalId); });
    connect(&board, &ApprovalBoard::displayItemsChanged, this, &DesktopFrontEnd::scheduleRefresh);
    connect(&board, &ApprovalBoard::historyChanged, this, &DesktopFrontEnd::scheduleRefresh);
    connect(&board, &ApprovalBoard::requestRemoved, this, &DesktopFrontEnd::onRequestRemoved);
    connect(&m_collaborators.monitor.gatewayStatus(), &GatewayStatus::statusLinesChanged, this,
            &DesktopFrontEnd::scheduleRefresh);
    connect(&m_collaborators.notifications, &ApprovalNotifications::statusLinesChanged, this,
            &DesktopFrontEnd::scheduleRefresh);
    connect(&m_collaborators.monitor.auditHealth(), &AuditLogHealth::changed, this,
            &DesktopFrontEnd::scheduleRefresh);
    connect(&m_collaborators.notifications, &ApprovalNotifications::decisionChosen, this,
            [this](const QString &approvalId, ApprovalDecision decision) {
                m_collaborators.monitor.decisions().resolve(
                    approvalId, decision, DecisionOrigin::local(), ActivityTracking::Record);
            });
    connect(&m_collaborators.notifications, &ApprovalNotifications::showRequested, this,
            &DesktopFrontEnd::showDetails);
    m_collaborators.notifications.setAllowPartlyShown(m_collaborators.settings.allowPartlyShown);
    connect(&m_collaborators.monitor.decisions(), &DecisionResolver::decisionSettled, this,
            &DesktopFrontEnd::onSettled);
    connect(&m_collaborators.settings.telegram, &TelegramBridgeSupervisor::statusChanged, this,
            &DesktopFrontEnd::scheduleRefresh);
    const AgentSelection &agents = m_collaborators.monitor.agents();
    connect(&agents, &AgentSelection::availableAgentIdsChanged, this,
            &DesktopFrontEnd::scheduleRefresh);
    connect(&agents, &AgentSelection::selectedAgentChanged, this,
            &DesktopFrontEnd::scheduleRefresh);
    connect(&m_collaborators.language, &LanguageChoice::languageChanged, this,
            &DesktopFrontEnd::onLanguageChanged);
}

void DesktopFrontEnd::followWishes()
{
    connect(&m_menu, &StatusMenu::aboutToOpen, this, &DesktopFrontEnd::refresh);
    connect(&m_tray, &TrayIcon::hostedChanged, this, &DesktopFrontEnd::onTrayHosted);
    connect(&m_tray, &TrayIcon::activated, this, &DesktopFrontEnd::showWindow);
    connect(&m_collaborators.popup, &ApprovalPopupPresenter::read, &m_actions,
            &DesktopActions::markRead);
    connect(&m_actions, &DesktopActions::windowRequested, this, &DesktopFrontEnd::showWindow);
    connect(&m_actions, &DesktopActions::detailsRequested, this, &DesktopFrontEnd::showDetails);
    connect(&m_actions, &DesktopActions::changedSinceShown, this,
            &DesktopFrontEnd::onChangedSinceShown);
    connect(&m_actions, &DesktopActions::approvalListRequested, &m_approvalList,
            &AlwaysAllowWindowPresenter::show);
    connect(&m_actions, &DesktopActions::settingsRequested, this,
            [this] { m_utilities.showSettings(); });
    connect(&m_actions, &DesktopActions::practiceChatRequested, this,
            [this] { m_utilities.showPracticeChat(); });
    connect(&m_actions, &DesktopActions::aboutRequested, this, [this] { m_utilities.showAbout(); });
    connect(&m_actions, &DesktopActions::simulationRequested, this,
            [this] { m_collaborators.exercises.runProgramSimulation(&m_collaborators.prompts); });
    connect(&m_actions, &DesktopActions::selfTestRequested, this, [this] {
        m_collaborators.exercises.runSelfTestForOperator(m_collaborators.prompts,
                                                         ReliabilityExercises::defaultResultPath);
    });
    connect(&m_actions, &DesktopActions::quitRequested, this, &DesktopFrontEnd::quitRequested);
}

void DesktopFrontEnd::start()
{
    markPractice();
    refresh();
    m_tray.setMenu(&m_menu.menu());
    m_tray.start();
    m_collaborators.notifications.start();
}

void DesktopFrontEnd::scheduleRefresh()
{
    if (m_refreshScheduled) {
        return;
    }
    m_refreshScheduled = true;
    if (!m_pause.isActive()) {
        inNextTurn(this, [this] {
            if (std::exchange(m_refreshScheduled, false)) {
                refresh();
                m_pause.start();
            }
        });
    }
}

StatusMenuContent DesktopFrontEnd::content() const
{
    const ApprovalBoard &board = m_collaborators.monitor.board();
    const NotificationLine &notifications = m_collaborators.notifications.line();
    return {
        .status = statusLines(
            m_collaborators.monitor.gatewayStatus().lines(),
            {notifications.notificationStatus, notifications.notificationIndicator},
            m_collaborators.settings.telegram.status(),
            m_collaborators.monitor.auditHealth().condition(), m_collaborators.language.current()),
        .pending = board.displayItems(),
        .history = board.history(),
        .agents = {.available = m_collaborators.monitor.agents().availableAgentIds(),
                   .selected = m_collaborators.monitor.agents().selectedAgentId()},
    };
}

void DesktopFrontEnd::refresh()
{
    const ApprovalBoard &board = m_collaborators.monitor.board();
    const GatewayStatus::Lines &gateway = m_collaborators.monitor.gatewayStatus().lines();
    const auto &active = board.activePopupItem();
    const AuditLogCondition &audit = m_collaborators.monitor.auditHealth().condition();
    m_tray.setLook(
        {.connection = audit.isWritable ? gateway.connectionIndicator : IndicatorState::Red,
         .badgeCount = board.menuBadgeCount(),
         .activeApprovalId = active ? active->approvalId : QString(),
         .toolTip = trayToolTip(gateway, audit, board.menuBadgeCount(),
                                m_collaborators.practiceChat != nullptr),
         .alarm = audit.isWritable ? Alarm::Off : Alarm::On});
    m_collaborators.popup.setProblem(audit.isWritable ? QString()
                                                      : auditNotices(audit).constFirst().text);
    const qsizetype others = board.menuBadgeCount() - (active ? 1 : 0);
    m_collaborators.popup.setWaitingCount(std::max<qsizetype>(others, 0));
    const StatusMenuContent now = content();
    m_menu.update(now);
    if (m_window && m_window->isVisible()) {
        m_window->update(now);
    }
    if (m_details && m_details->isVisible()
        && m_details->details().state == ApprovalHistoryState::Pending
        && !m_actions.isAsShown(m_details->details().item)) {
        m_details->setOver();
    }
}

void DesktopFrontEnd::onRequestRemoved(const QString &approvalId, ApprovalHistoryState state)
{
    m_collaborators.popup.showOutcome(approvalId, state);
}

/// Whoever decided in the popup or a notification sees nothing of it any more and must be told. Many at once
/// have one reason, the gateway, and are told of once.
void DesktopFrontEnd::onSettled(const QString &approvalId,
                                [[maybe_unused]] ApprovalDecision decision,
                                const DecisionOutcome &outcome)
{
    if (outcome.kind != DecisionOutcome::Kind::Failed
        || (m_sinceFailure.isValid() && !m_sinceFailure.hasExpired(manyAtOnceMs))) {
        return;
    }
    m_sinceFailure.start();
    const ApprovalItem *item = m_collaborators.monitor.board().find(approvalId);
    const QString command = item != nullptr ? beginningOf(item->command) : QString();
    m_collaborators.tasks.spawn(
        m_collaborators.prompts.inform(
            {.title = tr("A decision was not confirmed"),
             .text = tr("%1\n\n%2\n\nThe request is still pending and can be decided again.")
                         .arg(command, outcome.message)}),
        u"alert"_s);
}

void DesktopFrontEnd::onChangedSinceShown(const QString &approvalId)
{
    m_collaborators.tasks.spawn(
        m_collaborators.prompts.inform(
            {.title = tr("Not decided"),
             .text = tr("The request has changed or ended since it was shown.")}),
        u"alert"_s);
    showDetails(approvalId);
}

void DesktopFrontEnd::onLanguageChanged()
{
    // Windows follow by themselves.
    markPractice();
    m_menu.retranslate();
    refresh();
}

/// Nobody shall take an exercise for the real thing, nor the reverse: every window and notification says it.
void DesktopFrontEnd::markPractice()
{
    if (m_collaborators.practiceChat != nullptr) {
        QGuiApplication::setApplicationDisplayName(practiceMark()); // ends every window's title
        for (QWindow *window : QGuiApplication::allWindows()) {
            window->setTitle(window->title());
        }
        m_collaborators.popup.setMark(practiceMark());
        m_collaborators.notifications.setMark(practiceMark());
    }
}

void DesktopFrontEnd::onTrayHosted(bool hosted)
{
    // Not earlier: to read it takes as long as a tenth of the whole start.
    QApplication::setWindowIcon(applicationIcon());
    m_menu.setDrawing(m_tray.drawsMenuItself() ? MenuDrawing::OwnWindow : MenuDrawing::TrayHost);
    if (hosted) {
        if (m_window) {
            m_window->setRole(StatusWindow::Role::Optional);
            if (!m_window->isActiveWindow()) { // else somebody is at work in it
                m_window->hide();
            }
        }
        return;
    }
    StatusWindow &shown = window();
    shown.setRole(StatusWindow::Role::OnlySurface);
    shown.update(content());
    // It must not take the keyboard from what the operator is doing.
    shown.setAttribute(Qt::WA_ShowWithoutActivating, true);
    shown.show();
    shown.setAttribute(Qt::WA_ShowWithoutActivating, false);
}

StatusWindow &DesktopFrontEnd::window()
{
    if (!m_window) {
        m_window = std::make_unique<StatusWindow>(m_actions, m_collaborators.language,
                                                  m_collaborators.simulationEntry);
    }
    return *m_window;
}

void DesktopFrontEnd::showWindow()
{
    window().update(content());
    bringToFront(window());
}

std::unique_ptr<RequestDetailsWindow> DesktopFrontEnd::makeDetails()
{
    auto details = std::make_unique<RequestDetailsWindow>(m_collaborators.clock);
    details->setAllowPartlyShown(m_collaborators.settings.allowPartlyShown);
    connect(details.get(), &RequestDetailsWindow::read, &m_actions, &DesktopActions::markRead);
    connect(details.get(), &RequestDetailsWindow::decisionChosen, this,
            [this](const ApprovalItem &item, ApprovalDecision decision) {
                m_details->close();
                m_actions.decide(item, decision);
            });
    return details;
}

void DesktopFrontEnd::showDetails(const QString &approvalId)
{
    const ApprovalBoard &board = m_collaborators.monitor.board();
    const auto row
        = std::ranges::find(board.history(), approvalId, &ApprovalHistoryEntry::approvalId);
    const ApprovalItem *pending = board.find(approvalId);
    if (pending == nullptr && row == board.history().end()) {
        return; // cleared meanwhile
    }
    const RequestDetails details = pending != nullptr
        ? RequestDetails::of(*pending, board.askReason(approvalId))
        : RequestDetails::of(*row);
    if (!m_details) {
        m_details = makeDetails();
    }
    m_details->open(details);
}

} // namespace bram
