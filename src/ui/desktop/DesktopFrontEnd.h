// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalHistoryEntry.h"
#include "monitor/DecisionResolver.h"
#include "ui/desktop/AlwaysAllowWindowPresenter.h"
#include "ui/desktop/DesktopActions.h"
#include "ui/desktop/StatusMenu.h"
#include "ui/desktop/TrayIcon.h"
#include "ui/desktop/UtilityWindows.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <memory>

namespace bram
{

class ApprovalPopupPresenter;
class BulkAllow;
class ReliabilityExercises;
class RequestDetailsWindow;
class StatusWindow;

/// Joins the coordinator with everything on the desktop: tray icon and menu, popup, notifications and the
/// windows, which are made when first opened. Main thread.
///
/// Lists are brought up to date at once after a quiet time, and ten times a second in a burst.
class DesktopFrontEnd final : public QObject
{
    Q_OBJECT

public:
    struct Collaborators {
        ApprovalMonitor &monitor;
        BulkAllow &bulkAllow;
        ReliabilityExercises &exercises;
        RecordOperations &record;
        AlwaysAllowOperations &alwaysAllow;
        AuditLogStore &audit;
        OperatorPrompts &prompts;
        BackgroundTasks &tasks;
        NotificationService &notificationService;
        ApprovalNotifications &notifications;
        ApprovalPopupPresenter &popup;
        LanguageChoice &language;
        const Environment &environment;
        const Clock &clock;
        SystemLog &log;
        SettingsParts settings;
        OperatorChat *practiceChat = nullptr; ///< only in practice
        SimulationEntry simulationEntry = SimulationEntry::Hidden;
    };

    explicit DesktopFrontEnd(const Collaborators &collaborators);
    ~DesktopFrontEnd() override;

    /// Shows the tray icon as soon as there is a tray, and the status window as long as there is none.
    void start();

Q_SIGNALS:
    void quitRequested();

private:
    void followMonitor();
    void followWishes();
    void scheduleRefresh();
    void refresh();
    StatusMenuContent content() const;
    void onTrayHosted(bool hosted);
    void onLanguageChanged();
    void markPractice();
    void onRequestRemoved(const QString &approvalId, ApprovalHistoryState state);
    void onSettled(const QString &approvalId, ApprovalDecision decision,
                   const DecisionOutcome &outcome);
    void onChangedSinceShown(const QString &approvalId);
    void showWindow();
    void showDetails(const QString &approvalId);
    std::unique_ptr<RequestDetailsWindow> makeDetails();
    StatusWindow &window();

    Collaborators m_collaborators;
    DesktopActions m_actions;
    TrayIcon m_tray;
    StatusMenu m_menu;
    QTimer m_pause; ///< between two refreshes of a burst
    bool m_refreshScheduled = false;
    QElapsedTimer m_sinceFailure; ///< since the operator was last told of a failed decision
    std::unique_ptr<StatusWindow> m_window;
    std::unique_ptr<RequestDetailsWindow> m_details;
    UtilityWindows m_utilities;
    AlwaysAllowWindowPresenter m_approvalList;
};

} // namespace bram
