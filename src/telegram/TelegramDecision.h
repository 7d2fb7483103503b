// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalDecision.h"
#include "model/DecisionInputSource.h"

#include <QString>

#include <functional>

namespace bram
{

/// A decision that somebody took in a configured chat. It has passed the bridge's gate, not yet the monitor's.
struct TelegramDecision {
    QString approvalId; ///< as it was sent; perhaps of no request at all
    ApprovalDecision decision = ApprovalDecision::Deny;
    qint64 chatId = 0;
    DecisionInputSource source = DecisionInputSource::CallbackButton;
    /// Who sent it, by their own account, fit to be shown: "id 77, @mina, Mina Kim". Empty when Telegram
    /// does not say.
    QString sender;

    bool operator==(const TelegramDecision &) const = default;
};

/// Carries a decision out. True when it is on its way to the gateway; false when it was refused, for whatever
/// reason: the chat is only told that the request is not pending. Called on the main thread, in a turn of its
/// own.
using TelegramDecisionCallback = std::function<bool(const TelegramDecision &)>;

} // namespace bram
