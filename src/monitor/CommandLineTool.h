// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "gateway/GatewayClientError.h"
#include "model/ApprovalDecision.h"
#include "system/Reply.h"

#include <QObject>
#include <QQueue>
#include <QString>

#include <chrono>
#include <expected>

class QProcess;

namespace bram
{

/// The parameters of the tool's call: {"id":"…","decision":"…"} without blanks, escaped as JSON.
QString commandLineParams(const QString &approvalId, ApprovalDecision decision);

/// The platform's command-line tool, the second road of a decision that the gateway connection does not
/// take: "brackwen gateway call exec.approval.resolve --json --params …". It inherits the environment
/// without secrets other than the gateway's, but no open file and no input. Main thread; nothing waits for a process.
class CommandLineTool final : public QObject
{
    Q_OBJECT

public:
    explicit CommandLineTool(std::chrono::milliseconds timeLimit = std::chrono::seconds(60));
    ~CommandLineTool() override;
    Q_DISABLE_COPY_MOVE(CommandLineTool)

    /// A few at a time; the others wait. Nothing on success, which is exit status 0; else the tool's output, or what else went wrong. One
    /// that has not ended within the time limit is ended and counts as failed.
    using Result = std::expected<void, GatewayClientError>;
    Reply<Result> resolve(const QString &approvalId, ApprovalDecision decision);

    /// Ends what is running and forgets what waits; those calls fail.
    void stop();

Q_SIGNALS:
    void stopping();

private:
    /// A gateway that dies can send many decisions this way at once.
    static constexpr int mostAtOnce = 4;

    struct Call {
        QString approvalId;
        ApprovalDecision decision;
        ReplySource<Result> source;
    };

    void startWaiting();
    void start(const Call &call);
    void onEnded(QProcess *tool);

    std::chrono::milliseconds m_timeLimit;
    QQueue<Call> m_waiting;
    int m_runningCount = 0;
};

} // namespace bram
