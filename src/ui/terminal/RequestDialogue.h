// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalDecision.h"
#include "model/ApprovalHistoryEntry.h"
#include "monitor/DecisionResolver.h"
#include "system/Worker.h"
#include "ui/terminal/CommandLine.h"
#include "ui/terminal/RequestNumbers.h"
#include "ui/terminal/TerminalText.h"

#include <QCoro/QCoroTask>
#include <QObject>
#include <QPointer>
#include <QSet>

namespace bram
{

class ApprovalMonitor;
class BackgroundTasks;
class BulkAllow;
class Clock;
class StoredSwitch;
class TerminalPrompts;
class TerminalVoice;

/// What is said about requests, and the commands about them: shows them as they arrive, decides them, and
/// tells what became of them.
///
/// A line decides only requests that the operator had been shown, exactly as they are, when the line was
/// begun, and allows only those of which all had been shown. Main thread.
class RequestDialogue final : public QObject
{
    Q_OBJECT

public:
    /// More requests than this in one turn of the event loop are summarised.
    static constexpr qsizetype mostShownAtOnce = 20;

    struct Collaborators {
        ApprovalMonitor &monitor;
        BulkAllow &bulkAllow;
        TerminalPrompts &prompts;
        BackgroundTasks &tasks;
        TerminalVoice &voice;
        const StoredSwitch &allowPartlyShown;
        const Clock &clock;
    };

    explicit RequestDialogue(const Collaborators &collaborators);

    /// Follows the monitor from now on.
    void start();
    /// Announces nothing any more.
    void end() { m_isEnded = true; }

    /// Shows what has arrived since the last time.
    void announce();

    /// Says how much a reader who was far behind has missed, and shows what still waits.
    void goOnAfterGap(qint64 linesLeftOut);

    void show(const QString &target, DialogueMoment begunAt);
    /// Writes the command of a request into a file, as it is shown here.
    void save(const SaveCommand &command, DialogueMoment begunAt);
    void decide(const DecideCommand &command, DialogueMoment begunAt);
    /// To allow asks first.
    void decideAll(ApprovalDecision decision, DialogueMoment begunAt);
    /// Takes out of the own list what the last `allow-always all` has added.
    void undo();
    void list();
    void clearPending();

    /// The displayed requests that the operator has not been shown as they are.
    QList<ApprovalItem> notShown() const;

private:
    struct Leaving {
        QString approvalId;
        int number = 0;
        ApprovalHistoryState state = ApprovalHistoryState::Pending;
    };

    static QCoro::Task<> write(QPointer<RequestDialogue> self, ApprovalItem item, QString path);
    Answerability answerability(const ApprovalItem &item, ApprovalDecision decision,
                                DialogueMoment begunAt) const;
    void onCommandsAdded(const QStringList &commands);
    std::optional<ApprovalItem> find(const QString &target, DialogueMoment begunAt);
    void forgetVanished();
    void onRemoved(const QString &approvalId, ApprovalHistoryState state);
    void onSettled(const QString &approvalId, ApprovalDecision decision,
                   const DecisionOutcome &outcome);
    void explainLeaving();
    void showRequests(const QList<ApprovalItem> &items, RequestOccasion occasion);

    ApprovalMonitor &m_monitor;
    BulkAllow &m_bulkAllow;
    TerminalPrompts &m_prompts;
    BackgroundTasks &m_tasks;
    TerminalVoice &m_voice;
    const StoredSwitch &m_allowPartlyShown;
    const Clock &m_clock;
    Worker m_worker;
    QStringList m_added; ///< commands that can be taken back
    RequestNumbers m_numbers;
    QSet<QString> m_summarised; ///< ids that were counted in one line instead of being shown
    QList<Leaving> m_leaving; ///< removed, and not yet said why
    bool m_isEnded = false;
};

} // namespace bram
