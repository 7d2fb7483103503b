// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

namespace bram
{

/// Why a call to the gateway did not succeed.
struct GatewayClientError {
    enum class Kind {
        Server, ///< the gateway refused; `message` is its own text
        NotConnected,
        InvalidResponse,
        TimedOut, ///< the gateway was asked and has not answered; it may have done what it was asked
    };

    Kind kind = Kind::NotConnected;
    QString message; ///< of `Server` only

    bool operator==(const GatewayClientError &) const = default;

    static GatewayClientError server(const QString &message) { return {Kind::Server, message}; }
    static GatewayClientError notConnected() { return {Kind::NotConnected, {}}; }
    static GatewayClientError timedOut() { return {Kind::TimedOut, {}}; }

    /// The text an operator sees.
    QString description() const;
};

} // namespace bram
