// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "gateway/DeviceIdentity.h"
#include "system/Reply.h"

#include <QCoro/QCoroTask>

#include <vector>

namespace bram
{

class Preferences;
class SecretStore;
class SystemLog;
struct KeychainError;

/// Keeps the device identity: in the keyring, or in the preferences where the keyring cannot be
/// used. Copies one that an earlier release left in the preferences to the keyring. The preferences
/// are cleared only after the keyring's copy was read back and validated. Main thread only.
class DeviceIdentityStore
{
public:
    DeviceIdentityStore(SecretStore &secrets, Preferences &preferences, SystemLog &log);

    /// The identity to use, made and stored when there is none. Called for every handshake, so that
    /// a keyring that becomes readable later is picked up. A call made while another is still
    /// waiting for the keyring shares its result: two at once would each make an identity and mix
    /// them in the keyring. Fails only when no key can be made, and after `stop`. The store must
    /// outlive the task.
    QCoro::Task<std::expected<DeviceIdentity, Error>> loadOrCreate();

    /// To be called before the keyring is given up: from here on nothing is made or written, because
    /// a keyring that answers no more must not be taken for an empty one.
    void stop() { m_isStopped = true; }

private:
    using Result = std::expected<DeviceIdentity, Error>;

    Reply<Result> joinRunning();
    QCoro::Task<Result> loadOrCreateAlone();
    QCoro::Task<std::optional<DeviceIdentity>> migrateLegacyDefaultsToKeychainIfNeeded();
    QCoro::Task<std::optional<DeviceIdentity>> readKeychain();
    QCoro::Task<std::expected<void, KeychainError>> writeKeychain(DeviceIdentity identity);
    std::optional<DeviceIdentity> readDefaults() const;
    void writeDefaults(const DeviceIdentity &identity);
    /// Both tell whether the change is on the disk; if not, the log says so.
    bool clearDefaults();
    bool savePreferences();

    SecretStore &m_secrets;
    Preferences &m_preferences;
    SystemLog &m_log;
    bool m_isLoading = false;
    bool m_isStopped = false;
    std::vector<ReplySource<Result>> m_waiting; ///< calls that share the running one's result
};

} // namespace bram
