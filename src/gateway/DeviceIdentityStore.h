// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "gateway/DeviceIdentity.h"

#include <QCoro/QCoroTask>

namespace bram
{

class Preferences;
class SecretStore;
class SystemLog;

/// Keeps the device identity: in the keyring, or in the preferences where the keyring cannot be used.
/// Copies one that an earlier release left in the preferences to the keyring. The preferences are
/// cleared only after the keyring's copy was read back and validated. Main thread only.
class DeviceIdentityStore
{
public:
    DeviceIdentityStore(SecretStore &secrets, Preferences &preferences, SystemLog &log);

    /// The identity to use, made and stored when there is none. Called for every handshake, so that a
    /// keyring that becomes readable later is picked up. Fails only when no key can be made. The store
    /// must outlive the task.
    QCoro::Task<std::expected<DeviceIdentity, Error>> loadOrCreate();

private:
    QCoro::Task<std::optional<DeviceIdentity>> migrateLegacyDefaultsToKeychainIfNeeded();

    SecretStore &m_secrets;
    Preferences &m_preferences;
    SystemLog &m_log;
};

} // namespace bram
