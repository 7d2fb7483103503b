// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/Error.h"

#include <QJsonObject>
#include <QString>

#include <expected>
#include <optional>

namespace bram
{

/// What the gateway side knows when a client asks to be let in.
struct HandshakeExpectations {
    std::optional<QString>
        token {}; ///< as configured, blanks included; absent or blank: none needed
    std::optional<QString> password {}; ///< the same
    QString issuedNonce {}; ///< the nonce of this socket's challenge; empty when none was sent
    bool requireNonce = false; ///< refuse a signature that does not cover the nonce
};

/// Checks the parameters of a client's `connect` request: the shape of every field, the device id and
/// its public key, the Ed25519 signature over the text that follows from the other fields, then the
/// token or password. Shares no code with the client, so that a fault there is found here. The error
/// is one line that names what is wrong; only those about the token or the password begin with
/// "unauthorized: ".
std::expected<void, Error> verifyHandshake(const QJsonObject &params,
                                           const HandshakeExpectations &expected);

} // namespace bram
