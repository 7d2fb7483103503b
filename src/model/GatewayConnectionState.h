// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

#include <variant>

namespace bram
{

struct GatewayDisconnected {
    QString reason; ///< readable, e.g. an error text
    bool isExercise = false; ///< made up by a self-test or a simulation
    QString address {}; ///< of the gateway, without anything secret
    qint64 nextTryAtMs = 0; ///< when it is tried again; 0: not known

    bool operator==(const GatewayDisconnected &) const = default;
};
struct GatewayConnecting {
    bool operator==(const GatewayConnecting &) const = default;
};
struct GatewayConnected {
    bool operator==(const GatewayConnected &) const = default;
};

/// State of the connection to the gateway, as the gateway client reports it.
using GatewayConnectionState
    = std::variant<GatewayDisconnected, GatewayConnecting, GatewayConnected>;

} // namespace bram
