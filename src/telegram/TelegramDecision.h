// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalDecision.h"
#include "model/DecisionInputSource.h"

#include <QString>

#include <functional>

namespace bram
{

/// What the chat had been given of a request when somebody decided it there.
enum class ShownInChat {
    Nothing, ///< the request is not listed there, or the order is older than it
    Part,
    Whole, ///< every character of the command, as it is now
};

/// A decision that somebody took in a configured chat. It has passed the bridge's gate, not yet the monitor's.
struct TelegramDecision {
    QString approvalId; ///< as it was sent; perhaps of no request at all
    ApprovalDecision decision = ApprovalDecision::Deny;
    qint64 chatId = 0;
    DecisionInputSource source = DecisionInputSource::CallbackButton;
    /// Who sent it, by their own account, fit to be shown: "id 77, @mina, Mina Kim". Empty when Telegram
    /// does not say.
    QString sender {};
    ShownInChat shown = ShownInChat::Nothing;

    bool operator==(const TelegramDecision &) const = default;
};

/// What becomes of a decision from a chat.
enum class RemoteVerdict {
    Started, ///< it is on its way to the gateway
    NotPending, ///< or refused for a reason that is not the chat's to know
    Expired, ///< the time to decide the request is over
    Locked, ///< nothing is decided in chats while the gateway refuses our token
    Changed, ///< the request is no longer what a chat was first given
    OlderThanRequest, ///< it was taken before the chat was given the request
    NotShownWhole, ///< to allow, the chat has to be shown all of the command
};

/// Carries a decision out, or refuses it. Called on the main thread, in a turn of its own.
using TelegramDecisionCallback = std::function<RemoteVerdict(const TelegramDecision &)>;

} // namespace bram
