// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>
#include <QUrl>

#include <optional>

namespace bram
{

/// What the gateway expects to be shown. Kept as stored; trimming is up to each use.
struct GatewayCredentials {
    std::optional<QString> token;
    std::optional<QString> password;

    bool operator==(const GatewayCredentials &) const = default;
};

/// Where and how to connect.
struct GatewayConfig {
    QUrl url;
    GatewayCredentials credentials;

    bool operator==(const GatewayConfig &) const = default;
};

} // namespace bram
