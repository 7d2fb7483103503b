// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "gateway/GatewayClientError.h"
#include "model/ApprovalDecision.h"

#include <QCoro/QCoroTask>
#include <QString>

#include <expected>

namespace bram
{

/// The parameters of the tool's call: {"id":"…","decision":"…"} without blanks, escaped as JSON.
QString commandLineParams(const QString &approvalId, ApprovalDecision decision);

/// Hands a decision to the platform's command-line tool, the second road when the gateway connection
/// does not take it: "brackwen gateway call exec.approval.resolve --json --params …". The tool inherits
/// the environment but no open file and no input. Success is exit status 0; another status fails with the
/// tool's output, and a tool that has not ended within 60 s is ended and counts as failed.
QCoro::Task<std::expected<void, GatewayClientError>> resolveViaCommandLine(QString approvalId,
                                                                           ApprovalDecision decision);

} // namespace bram
