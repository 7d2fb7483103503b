// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalDecision.h"
#include "model/ApprovalItem.h"
#include "model/MenuLanguage.h"
#include "ui/desktop/RecordActions.h"

#include <QCoro/QCoroTask>
#include <QList>
#include <QObject>
#include <QPointer>

namespace bram
{

class ApprovalMonitor;
class Environment;
class OperatorChat;

/// What the operator can do from the menu and the windows, once for all of them. Main thread.
///
/// Decisions name the request as it was read: one that has changed or ended since is not decided.
class DesktopActions final : public QObject
{
    Q_OBJECT

public:
    struct Collaborators {
        ApprovalMonitor &monitor;
        RecordOperations &record;
        OperatorPrompts &prompts;
        BackgroundTasks &tasks;
        LanguageChoice &language;
        const Environment &environment;
        std::function<SurfaceFacts()> surface;
        OperatorChat *practiceChat = nullptr; ///< only in practice
    };

    explicit DesktopActions(const Collaborators &collaborators);

    void decide(const ApprovalItem &shown, ApprovalDecision decision);
    /// Decides those of the requests that are still as they were shown, and leaves later ones alone.
    void decideAll(const QList<ApprovalItem> &shown, ApprovalDecision decision);
    /// Denies everything that is pending now and takes the popup off the screen.
    void denyAll();
    void clearPending();
    void clearHistory();

    void copyDetails(const ApprovalItem &item);
    void copyId(const QString &approvalId);
    /// What can be taken out of the program.
    RecordActions &record() { return m_record; }

    /// The chat of the practice mode; null otherwise.
    OperatorChat *practiceChat() const { return m_collaborators.practiceChat; }

    void reconnectGateway();
    void reloadGatewayToken();
    void openControlUI();
    void chooseLanguage(MenuLanguage language);
    /// The first time that this means every agent, it is asked about; a second wish for that meanwhile is
    /// the same one.
    void chooseAgent(const QString &agentId);

Q_SIGNALS:
    /// A decision was not taken because the request is no longer the one that was read.
    void changedSinceShown(const QString &approvalId);
    void detailsRequested(const QString &approvalId);
    void windowRequested();
    void approvalListRequested();
    void settingsRequested();
    void practiceChatRequested();
    void aboutRequested();
    void simulationRequested();
    void selfTestRequested();
    void quitRequested();

private:
    static QCoro::Task<> choosingAllAgents(QPointer<DesktopActions> self);
    bool isAsShown(const ApprovalItem &shown) const;

    Collaborators m_collaborators;
    RecordActions m_record;
    bool m_isChoosingAllAgents = false;
};

} // namespace bram
