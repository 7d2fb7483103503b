// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

#include <chrono>
#include <optional>

namespace bram
{

/// Why a call of the Bot API did not succeed.
struct BridgeError {
    enum class Kind {
        InvalidResponse, ///< an answer that is no JSON object: an error page, half a text
        Api, ///< the Bot API refused; `message` is its own text, masked
        Transport, ///< there was no whole answer; `message` says why
        Stopped, ///< the bridge ended the call
    };

    Kind kind = Kind::InvalidResponse;
    QString message {};
    int code = 0; ///< of `Api`: the Bot API's own error code, 0 without one
    std::optional<std::chrono::seconds>
        retryAfter {}; ///< of `Api`: nothing of the kind before that

    bool operator==(const BridgeError &) const = default;

    /// One line for a log, without any part of the token.
    QString description() const
    {
        return kind == Kind::InvalidResponse ? QStringLiteral("Invalid Telegram response")
                                             : message;
    }

    /// Whether the same call would be refused again; any other failure may pass by itself.
    bool isLasting() const
    {
        constexpr int tooManyRequests = 429; // also when it does not say for how long
        return kind == Kind::Api && !retryAfter && code < 500 && code != tooManyRequests;
    }
};

} // namespace bram
