// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

#include <optional>

namespace bram
{

/// The decision a person takes on a request.
enum class ApprovalDecision {
    AllowOnce,
    AllowAlways,
    Deny,
};

/// The wire text: "allow-once", "allow-always" or "deny".
QString rawText(ApprovalDecision decision);

/// Accepts exactly the three wire texts; history states spell theirs differently on purpose.
std::optional<ApprovalDecision> approvalDecisionFromRawText(QStringView text);

} // namespace bram
