// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/Error.h"

#include <QCoro/QCoroTask>
#include <QString>

#include <expected>
#include <optional>

namespace bram
{

/// When a stored secret may be read back. Platforms without such classes store it as the rest.
enum class SecretAccessibility {
    WhenUnlockedThisDeviceOnly,
    AfterFirstUnlock,
};

/// A failed keychain operation.
struct KeychainError {
    qint32 status = 0; ///< the platform's status code
    QString platformMessage; ///< the platform's own message; empty when it has none
    /// The keyring is there, and locked or waiting for its password: the secret may come yet.
    bool isLocked = false;

    bool operator==(const KeychainError &) const = default;

    /// The platform's message, or "Keychain error (status=N)".
    QString description() const;
};

/// Small UTF-8 texts kept secret by the platform, addressed by (service, account).
///
/// Implemented by `KeyringSecretStore` (the desktop's keyring) and `MemorySecretStore` (the practice
/// mode, which must not touch the operator's keyring). Called from the main thread; nothing blocks:
/// an operation on a locked keyring stays open while the operator unlocks it, and ends with an error
/// when that takes longer than the store's time limit. Parameters are values because they live on
/// in a coroutine.
class SecretStore
{
public:
    virtual ~SecretStore() = default;

    /// The secret, or nothing when there is none or it is not valid UTF-8.
    virtual QCoro::Task<std::expected<std::optional<QString>, KeychainError>> get(QString service,
                                                                                  QString account)
        = 0;

    /// Stores or replaces the secret.
    virtual QCoro::Task<std::expected<void, KeychainError>>
    set(QString service, QString account, QString value, SecretAccessibility accessibility) = 0;

    /// Deletes the secret; deleting what is not there succeeds.
    virtual QCoro::Task<std::expected<void, KeychainError>> remove(QString service, QString account)
        = 0;

    /// The operator wants to be asked once more to unlock what he has not unlocked before.
    virtual void askAgain() { }
};

} // namespace bram
