// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/Error.h"

#include <QByteArray>
#include <QString>

#include <expected>
#include <optional>

namespace bram
{

/// The long-lived Ed25519 key pair that proves to the gateway which device connects.
struct DeviceIdentity {
    QString deviceId; ///< lower-case hexadecimal SHA-256 of the raw public key, 64 characters
    QString publicKeyBase64Url; ///< the 32 raw public-key bytes, base64url without padding
    QByteArray privateKeyRaw; ///< the 32-byte seed; never logged

    bool operator==(const DeviceIdentity &) const = default;

    /// Ed25519 signature of the payload's UTF-8 bytes, base64url without padding (86 characters).
    /// Fails when `privateKeyRaw` is not a key.
    std::expected<QString, Error> sign(const QString &payload) const;
};

/// Lower-case hexadecimal SHA-256 of the raw public key.
QString makeDeviceId(const QByteArray &publicKeyRaw);

/// A fresh random identity; fails when the system gives no randomness. Stores nothing.
std::expected<DeviceIdentity, Error> makeNewIdentity();

/// The identity made of these three values, if the public key and the id are exactly what the
/// private key yields; a stored identity is never trusted field by field.
std::optional<DeviceIdentity> validatedIdentity(const QString &deviceId, const QString &publicKey,
                                                const QByteArray &privateKeyRaw);

/// The stored form of a private key: standard base64 with padding.
QString privateKeyToText(const QByteArray &privateKeyRaw);

/// The bytes of a stored private key; nothing when `text` holds anything but standard base64 with
/// its padding, such as blanks or base64url characters.
std::optional<QByteArray> privateKeyFromText(const QString &text);

} // namespace bram
