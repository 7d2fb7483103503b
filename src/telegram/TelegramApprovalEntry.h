// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

#include <optional>

namespace bram
{

/// One pending request as a chat lists it.
struct TelegramApprovalEntry {
    QString approvalId;
    QString command; ///< whole, as it was asked for
    std::optional<QString> agentId {};
    bool isHighRisk = false;

    bool operator==(const TelegramApprovalEntry &) const = default;
};

} // namespace bram
