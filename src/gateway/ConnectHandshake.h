// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "gateway/DeviceIdentity.h"
#include "gateway/GatewayConfig.h"

#include <QJsonObject>
#include <QString>

#include <expected>
#include <optional>

namespace bram
{

/// What one handshake is made of.
struct HandshakeInput {
    DeviceIdentity identity;
    GatewayCredentials credentials;
    std::optional<QString> nonce; ///< of the last challenge on this socket
    qint64 signedAtMs = 0;
    QString locale; ///< e.g. "ko_KR"
};

/// Sent as a header and inside the handshake.
inline constexpr QLatin1StringView userAgent("BrackwenApprovalsMenu/1.0");

/// The text that the device key signs: "v2|…|nonce" when a nonce is held, else "v1|…".
QString signedPayload(const HandshakeInput &input);

/// The `auth` object, or nothing when neither token nor password is usable. A token goes out trimmed
/// with the password untrimmed beside it ("" for none); a password alone goes out trimmed.
std::optional<QJsonObject> authParams(const GatewayCredentials &credentials);

/// The parameters of the "connect" request. Fails when the payload cannot be signed.
std::expected<QJsonObject, Error> connectParams(const HandshakeInput &input);

/// The "Origin" header for a gateway URL; nothing for a URL without a host. Only "wss" is "https".
std::optional<QString> gatewayOrigin(const QUrl &url);

} // namespace bram
