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
    qint64 expiresAtMs = 0; ///< since the Unix epoch; 0 or negative: no expiry is known

    bool operator==(const TelegramApprovalEntry &) const = default;
};

} // namespace bram
