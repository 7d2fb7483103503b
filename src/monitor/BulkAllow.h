// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalDecision.h"
#include "model/ApprovalItem.h"

#include <QCoro/QCoroTask>
#include <QHash>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QStringList>

namespace bram
{

class AlwaysAllowOperations;
class ApprovalMonitor;
class OperatorPrompts;
struct DecisionOutcome;
struct Question;

/// Allows several requests at once, for every surface: asks first, saying what they are, and leaves those of high
/// risk out unless they are meant too. What was always-allowed so can be taken back afterwards. Main thread.
class BulkAllow final : public QObject
{
    Q_OBJECT

public:
    struct Collaborators {
        ApprovalMonitor &monitor;
        AlwaysAllowOperations &alwaysAllow;
    };

    explicit BulkAllow(const Collaborators &collaborators);

    /// The request has been before the operator's eyes whole: in the popup, in a window, at the terminal.
    void markRead(const ApprovalItem &item);

    /// Asks, and allows those that are still the requests that were asked about. A second wish while the question
    /// is open is the same one. `prompts` lives until the task ends, which is when the decisions are on their way.
    QCoro::Task<> allow(OperatorPrompts &prompts, QList<ApprovalItem> shown,
                        ApprovalDecision decision);

    /// Takes out of the own list what `commandsAdded` has told of, as far as it is still there. Gives how many.
    qsizetype takeBack(const QStringList &commands);

Q_SIGNALS:
    /// All decisions to always allow have ended, and the own list did not answer for these commands before.
    void commandsAdded(const QStringList &commands);

private:
    using Self = QPointer<BulkAllow>;

    static QCoro::Task<> asking(Self self, OperatorPrompts *prompts, QList<ApprovalItem> shown,
                                ApprovalDecision decision);
    Question questionAbout(const QList<ApprovalItem> &items, ApprovalDecision decision) const;
    void begin(const QList<ApprovalItem> &items, ApprovalDecision decision);
    void onSettled(const QString &approvalId, ApprovalDecision decision,
                   const DecisionOutcome &outcome);
    bool isRead(const ApprovalItem &item) const;

    Collaborators m_collaborators;
    QHash<QString, size_t> m_read; ///< hashes of the commands that were read, by approval id
    bool m_isAsking = false;
    QHash<QString, QString> m_underWay; ///< commands that are being added, by approval id
    QStringList m_added; ///< commands
};

} // namespace bram
