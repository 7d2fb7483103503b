// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalDecision.h"
#include "model/ApprovalHistoryEntry.h"
#include "monitor/DecisionResolver.h"
#include "ui/terminal/CommandLine.h"
#include "ui/terminal/RequestNumbers.h"
#include "ui/terminal/TerminalText.h"

#include <QObject>
#include <QSet>
#include <QStringList>

namespace bram
{

class ApprovalMonitor;
class Clock;
class LineSource;
class TerminalOutput;

/// The operator's dialogue in a terminal or over a pipe: shows requests as they arrive and carries out
/// what is typed.
///
/// A line decides only requests that the operator had been shown, exactly as they are, when the line was
/// begun. Main thread.
class TerminalFrontEnd final : public QObject
{
    Q_OBJECT

public:
    /// More requests than this in one turn of the event loop are summarised.
    static constexpr qsizetype mostShownAtOnce = 20;

    TerminalFrontEnd(ApprovalMonitor &monitor, LineSource &input, TerminalOutput &output,
                     const Clock &clock);

    /// Greets and begins to read.
    void start();

Q_SIGNALS:
    /// By command, at the end of the input, or because nobody reads the output any more.
    void quitRequested();

private:
    struct Leaving {
        QString approvalId;
        int number = 0;
        ApprovalHistoryState state = ApprovalHistoryState::Pending;
    };

    void onLine(const QString &text, DialogueMoment begunAt);
    void run(PlainCommand command);
    void show(const QString &target, DialogueMoment begunAt);
    void decide(const DecideCommand &command, DialogueMoment begunAt);
    void decideAll(ApprovalDecision decision, DialogueMoment begunAt);
    void list();
    void clearPending();
    void quit();

    std::optional<ApprovalItem> find(const QString &target, DialogueMoment begunAt);
    void announce();
    void forgetVanished();
    void onRemoved(const QString &approvalId, ApprovalHistoryState state);
    void onSettled(const QString &approvalId, ApprovalDecision decision,
                   const DecisionOutcome &outcome);
    void explainLeaving();
    void onStatusChanged();

    void showRequests(const QList<ApprovalItem> &items, RequestOccasion occasion);
    void print(const TerminalLines &lines);
    void say(const QString &message, LineStyle style = LineStyle::Plain);
    QList<ApprovalItem> notShown() const;

    ApprovalMonitor &m_monitor;
    LineSource &m_input;
    TerminalOutput &m_output;
    const Clock &m_clock;
    RequestNumbers m_numbers;
    QSet<QString> m_summarised; ///< ids that were counted in one line instead of being shown
    QList<Leaving> m_leaving; ///< removed, and not yet said why
    QStringList
        m_statusSaid; ///< since the last working connection: a gateway that stays away is not news
    bool m_quitting = false;
};

} // namespace bram
