// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QHashFunctions>
#include <QString>

#include <optional>

namespace bram
{

/// One request for approval of a command, as the gateway gave it.
struct ApprovalItem {
    QString approvalId; ///< the gateway's identifier; the key under which everything refers to it
    QString command; ///< the full command line, as received
    std::optional<QString> agentId; ///< absent when the gateway did not say
    qint64 createdAtMs = 0; ///< since the Unix epoch; 0 or negative: the gateway gave no time
    qint64 expiresAtMs = 0; ///< since the Unix epoch; 0 or negative: no expiry is known

    bool operator==(const ApprovalItem &) const = default;

    /// Id, agent (when there is one) and command, a line each, for the clipboard. A plain command stands as it is; one
    /// that holds what a terminal would act on, or what could mislead, stands with marks, and a line says so.
    QString pretty() const;
};

size_t qHash(const ApprovalItem &item, size_t seed = 0) noexcept;

/// Whether both ask a person the same: about this request, this command, by this agent. What was read of the one was
/// read of the other, whatever their times are.
bool isSameQuestion(const ApprovalItem &a, const ApprovalItem &b);

/// True once the expiry time has come; an item without a known expiry never expires.
bool isApprovalExpired(const ApprovalItem &item, qint64 nowMs);

} // namespace bram
