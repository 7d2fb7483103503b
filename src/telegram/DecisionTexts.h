// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalDecision.h"

#include <QString>

#include <optional>

namespace bram
{

// How a decision is written in a chat: as the data of a button and as a command.

/// A decision as it was written; nothing says that there is such a request.
struct WrittenDecision {
    QString approvalId;
    ApprovalDecision decision = ApprovalDecision::Deny;

    bool operator==(const WrittenDecision &) const = default;
};

/// "allow:ID", "deny:ID" or "allow-always:ID".
QString callbackData(ApprovalDecision decision, const QString &approvalId);
std::optional<WrittenDecision> parseCallbackData(const QString &data);

/// "/approve ID allow-once" and the like.
QString approvalCommand(const QString &approvalId, ApprovalDecision decision);

/// The command, an approval id and a decision, with blanks, tabs or line breaks in between; what follows them
/// is ignored, and so are upper case and the name of a bot after an at-sign.
std::optional<WrittenDecision> parseApprovalCommand(const QString &text);

// How it is written that the command of a request shall be shown whole.

/// "show:ID".
QString showData(const QString &approvalId);
std::optional<QString> parseShowData(const QString &data);

/// "/show ID".
QString showCommand(const QString &approvalId);
/// The id, or its beginning; read like an approval command.
std::optional<QString> parseShowCommand(const QString &text);

} // namespace bram
