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
class BulkAllow;
class Clock;
class Environment;
class OperatorChat;
class StoredSwitch;

/// What the operator can do from the menu and the windows, once for all of them. Main thread.
///
/// Decisions name the request as it was read: one that has changed or ended since is not decided.
class DesktopActions final : public QObject
{
    Q_OBJECT

public:
    struct Collaborators {
        ApprovalMonitor &monitor;
        BulkAllow &bulkAllow;
        const StoredSwitch &allowPartlyShown;
        RecordOperations &record;
        OperatorPrompts &prompts;
        BackgroundTasks &tasks;
        LanguageChoice &language;
        const Environment &environment;
        const Clock &clock;
        std::function<SurfaceFacts()> surface;
        OperatorChat *practiceChat = nullptr; ///< only in practice
    };

    explicit DesktopActions(const Collaborators &collaborators);

    /// Whether the request is still pending and asks what was shown.
    bool isAsShown(const ApprovalItem &shown) const;
    void decide(const ApprovalItem &shown, ApprovalDecision decision);
    /// Asks, allows those of the requests that are still as they were shown, and leaves later ones alone.
    void allowAll(const QList<ApprovalItem> &shown, ApprovalDecision decision);
    /// Denies the requests. Where no other is pending, this takes the popup off the screen.
    void denyAll(const QList<ApprovalItem> &shown);
    /// The request has been before the operator's eyes whole.
    void markRead(const ApprovalItem &item);
    /// Whether *allow* is offered also where a command is not shown whole.
    const StoredSwitch &allowPartlyShown() const { return m_collaborators.allowPartlyShown; }
    void clearPending();
    void clearHistory();

    void copyDetails(const ApprovalItem &item);
    void copyId(const QString &approvalId);
    /// What can be taken out of the program.
    RecordActions &record() { return m_record; }

    /// The chat of the practice mode; null otherwise.
    const Clock &clock() const { return m_collaborators.clock; }
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
    /// Tells what was always-allowed in bulk, and takes it back when that is wished.
    static QCoro::Task<> offeringToTakeBack(QPointer<DesktopActions> self, QStringList commands);

    Collaborators m_collaborators;
    RecordActions m_record;
    bool m_isChoosingAllAgents = false;
};

} // namespace bram
