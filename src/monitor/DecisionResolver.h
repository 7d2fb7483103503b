// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "gateway/GatewayClient.h"
#include "model/ApprovalDecision.h"
#include "model/DecisionMaker.h"
#include "monitor/ApprovalRecorder.h"
#include "monitor/CommandLineTool.h"

#include <QCoro/QCoroTask>
#include <QHash>
#include <QObject>
#include <QPointer>
#include <QQueue>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QTimer>

namespace bram
{

class AlwaysAllowRules;
class ApprovalBoard;
class BackgroundTasks;
class Clock;
class GatewayStatus;

/// Who decided, in the texts that audit records carry.
struct DecisionOrigin {
    QString source;
    QString actor;
    DecisionMaker maker = DecisionMaker::Person;
    /// More about who it was, for the note of a record; masked and fit to be shown.
    QString detail {};

    /// A person at one of this application's own surfaces.
    static DecisionOrigin local();
    /// The always-allow list, which stands for a person here.
    static DecisionOrigin automatic();

    bool operator==(const DecisionOrigin &) const = default;
};

/// Whether a decision gets a row of its own in the activity feed; bulk actions have one for all.
enum class ActivityTracking {
    Record,
    Skip,
};

/// What came of a decision.
struct DecisionOutcome {
    enum class Kind {
        Confirmed, ///< the gateway has taken it
        ResolvedElsewhere, ///< somebody else was first
        Expired, ///< never sent; the request's time was over
        Failed, ///< the request is still pending and can be decided again
        IgnoredDuplicate, ///< another decision for the request is on its way
    };

    Kind kind = Kind::Confirmed;
    QString message; ///< of `Failed`: why

    bool operator==(const DecisionOutcome &) const = default;
};

/// Whether a decision may go by the platform's command-line tool when the gateway connection fails it.
enum class CommandLineUse {
    Allowed,
    Never, ///< practice: the tool would reach the operator's real gateway
};

/// The words in this refusal that say that the request no longer exists on the gateway; empty when it says something
/// else.
QString unknownApprovalPhrase(const QString &description);

/// True when this refusal says that the request no longer exists on the gateway.
bool isUnknownApprovalError(const QString &description);

/// The one road of every decision, whoever takes it: to the gateway, or by the command-line tool when the
/// gateway cannot be reached, and onto the record. At most one decision for a request is under way; the
/// first wins. Main thread only.
class DecisionResolver final : public QObject
{
    Q_OBJECT

public:
    struct Collaborators {
        ApprovalBoard &board;
        ApprovalRecorder &recorder;
        GatewayClient &client;
        GatewayStatus &status;
        BackgroundTasks &tasks;
        const Clock &clock;
        AlwaysAllowRules *alwaysAllow; ///< may be null
        CommandLineUse commandLine;
    };

    explicit DecisionResolver(const Collaborators &collaborators);

    /// Starts the decision and returns at once; `decisionSettled` tells how it ended. False when it was not
    /// even started: another one is under way, or it is too late.
    bool resolve(const QString &approvalId, ApprovalDecision decision, const DecisionOrigin &origin,
                 ActivityTracking tracking);

    /// Allows once what the always-allow list lets through. A request for which that fails is shown like
    /// any other: a person may try again.
    void allowAutomatically(const ApprovalItem &item);

    /// Decides those of the listed requests that are displayed, with one activity row for all. Many take a while:
    /// one that has changed before its turn comes is not allowed.
    void resolveListed(const QStringList &approvalIds, ApprovalDecision decision);

    /// Denies everything displayed and takes the popup off the screen.
    void denyAllPendingAndDismissPopups();

    /// The gateway has taken a decision after all, which was given up before.
    void confirmLate(const QString &approvalId);

    bool isResolving(const QString &approvalId) const
    {
        return m_resolvingIds.contains(approvalId);
    }
    bool isIdle() const { return m_resolvingIds.isEmpty() && m_bulk.isEmpty(); }

    /// From here on nothing new is started, and a decision that the command-line tool has ends as failed.
    void stop();

Q_SIGNALS:
    void decisionSettled(const QString &approvalId, bram::ApprovalDecision decision,
                         const bram::DecisionOutcome &outcome);

private:
    /// The request as it was when the decision was taken: it may change or go while that is on its way.
    struct Attempt {
        ApprovalItem item;
        ApprovalDecision decision;
        DecisionOrigin origin;
        ActivityTracking tracking;
    };

    static QCoro::Task<> travel(QPointer<DecisionResolver> self, Attempt attempt);
    void onConfirmed(const Attempt &attempt, const QString &transport);
    void onUnknown(const Attempt &attempt, const QString &transport);
    /// `shown` is what the operator reads, who may want more than the last error.
    void onFailed(const Attempt &attempt, const QString &failure, const QString &shown);
    /// False when the request has ended while its decision was on its way.
    bool isUndecided(const QString &approvalId) const;
    void settle(const Attempt &attempt, const DecisionOutcome &outcome);
    bool begin(const Attempt &attempt);
    void beginOfBulk(const Attempt &attempt);
    void resolveEach(const QList<ApprovalItem> &items, ApprovalDecision decision);
    void continueBulk();
    void report(const Attempt &attempt, const DecisionOutcome &outcome);

    Collaborators m_collaborators;
    CommandLineTool m_commandLineTool;
    QSet<QString> m_resolvingIds;
    QHash<QString, Attempt> m_unanswered; ///< given up; the gateway may still take them
    QQueue<Attempt> m_bulk; ///< not begun yet
    bool m_stopped = false;
    qsizetype m_settledCount = 0; ///< since memory was last given back
    QTimer m_afterBurst;
};

} // namespace bram
