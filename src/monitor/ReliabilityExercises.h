// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "system/Reply.h"
#include "system/Worker.h"

#include <QCoro/QCoroTask>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>

#include <chrono>
#include <memory>

namespace bram
{

class ApprovalMonitor;
class AuditLogStore;
class BackgroundTasks;
class Clock;
class OperatorPrompts;
class SystemLog;

/// Exercises the whole approval path without an agent: made-up requests and a made-up refusal of the gateway
/// go in where real ones do, and are shown, recorded and decided like those. Main thread.
class ReliabilityExercises final : public QObject
{
    Q_OBJECT

public:
    struct Collaborators {
        ApprovalMonitor &monitor;
        AuditLogStore &audit;
        BackgroundTasks &tasks;
        const Clock &clock;
        SystemLog &log;
    };

    /// Whether a request with this id was made up here.
    static bool isMadeUp(const QString &approvalId);

    /// Where the result goes when nothing else was asked for.
    static const QString defaultResultPath;

    explicit ReliabilityExercises(const Collaborators &collaborators);

    /// A harmless request, one of high risk, and after a moment the end of the connection as if the
    /// token had been revoked. `prompts`, if it is not null, then tells the operator of it. After another moment the
    /// connection is as it was.
    void runProgramSimulation(OperatorPrompts *prompts);

    /// The same unattended: looks afterwards whether all of it was counted and put on record, and writes what
    /// it has found as a JSON object to `resultPath`. A result from before is removed at the start, so
    /// that an absent file means failure; what is no file there, as "/dev/stdout", is written to and stays.
    void runReliabilitySelfTest(const QString &resultPath);

    /// The same for an operator who is there, while the program goes on: tells how it ended instead of
    /// `selfTestFinished`.
    void runSelfTestForOperator(OperatorPrompts &prompts, const QString &resultPath);

    /// Ends what is under way, as failed.
    void stop();

Q_SIGNALS:
    /// `success` says that everything was as it should be and that the result is on the disk; `verdict` is a line for
    /// a person, in English, with what was not.
    void selfTestFinished(bool success, const QString &verdict);

private:
    /// What the audit log says about one run.
    struct AuditFindings {
        bool hasAuthFailure = false;
        bool hasLowRisk = false;
        bool hasHighRisk = false;
    };
    /// What a self-test has looked at, and what of it was not as it should be.
    struct Verdict {
        qsizetype checkCount = 0;
        QStringList failed {};

        void check(bool isRight, const QString &what);
        bool isSuccess() const { return checkCount > 0 && failed.isEmpty(); }
        QString text(const QString &resultPath) const;
    };

    static QCoro::Task<> simulateForOperator(QPointer<ReliabilityExercises> self,
                                             OperatorPrompts *prompts);
    static QCoro::Task<> testSelf(QPointer<ReliabilityExercises> self, QString resultPath);
    static QCoro::Task<> testSelfForOperator(QPointer<ReliabilityExercises> self,
                                             OperatorPrompts *prompts, QString resultPath);
    /// The ids of the requests; empty when the program ends meanwhile.
    static QCoro::Task<QStringList> simulate(QPointer<ReliabilityExercises> self);
    static QCoro::Task<Verdict> measure(QPointer<ReliabilityExercises> self, QString resultPath);
    static QCoro::Task<> recover(QPointer<ReliabilityExercises> self);
    QString simulateRequest(const QString &idBeginning, const QString &command);
    QByteArray resultJson(const AuditFindings &findings, bool success) const;

    /// False when the program ends before.
    Reply<bool> pause(std::chrono::milliseconds duration);
    Reply<AuditFindings> lookIntoAudit(qint64 sinceMs, const QStringList &approvalIds);

    Collaborators m_collaborators;
    std::unique_ptr<QObject> m_running; ///< parent of the timers; gone after the stop
    Worker m_worker;
};

} // namespace bram
