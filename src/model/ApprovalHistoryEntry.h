// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/DecisionMaker.h"

#include <QDateTime>
#include <QHashFunctions>
#include <QString>

#include <optional>

namespace bram
{

/// What became of a request. Its raw texts are camel-case words, unlike those of the decisions.
enum class ApprovalHistoryState {
    Pending, ///< seen and not yet decided
    AllowOnce, ///< allowed once from here
    AllowAlways, ///< allowed always from here
    Deny, ///< denied from here
    Canceled, ///< withdrawn without a decision here: expired, or gone from the gateway
    Resolved, ///< decided elsewhere
};

QString rawText(ApprovalHistoryState state);
std::optional<ApprovalHistoryState> approvalHistoryStateFromRawText(QStringView text);

/// Whether a request has ended by a decision taken here.
bool isOwnDecision(ApprovalHistoryState state);

/// One row of the history.
struct ApprovalHistoryEntry {
    QString id; ///< approvalId + "-" + the row's creation time in ms; never changes
    QString approvalId;
    QString command; ///< empty when the row was made for a request whose command was never seen
    ApprovalHistoryState state = ApprovalHistoryState::Pending;
    QDateTime updatedAt; ///< when the state last changed
    DecisionMaker maker = DecisionMaker::Person; ///< of a decision taken here
    bool isCut = false; ///< only the beginning of the command is kept

    bool operator==(const ApprovalHistoryEntry &) const = default;

    /// `updatedAt` as "MM-dd HH:mm:ss" in local time, whatever the language of the menu.
    QString timestampText() const;
};

size_t qHash(const ApprovalHistoryEntry &entry, size_t seed = 0) noexcept;

} // namespace bram
