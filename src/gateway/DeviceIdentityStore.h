// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "gateway/DeviceIdentity.h"
#include "system/Reply.h"

#include <QCoro/QCoroTask>

#include <vector>

namespace bram
{

class BackgroundTasks;
class Preferences;
class SecretStore;
class SystemLog;
struct KeychainError;

/// Keeps the device identity: in the keyring, or in the preferences where there is no keyring that can be
/// used. Copies one that an earlier release left in the preferences to the keyring. The preferences are
/// cleared only after the keyring's copy was read back and validated.
///
/// A locked keyring is no missing one: no identity is made while one may be in it, and none is put into the
/// preferences for it. A first one is used at once and saved meanwhile; until the keyring takes it, it lasts
/// as long as the program. Main thread only.
class DeviceIdentityStore
{
public:
    DeviceIdentityStore(SecretStore &secrets, Preferences &preferences, SystemLog &log,
                        BackgroundTasks &tasks);

    /// The identity to use, made when there is none; what is to be stored is stored in the background.
    /// Called for every handshake, so that a keyring that becomes readable later is picked up. A call made
    /// while another is still waiting for the keyring shares its result: two at once would each make an
    /// identity and mix them in the keyring. Fails while a locked keyring holds the identity back, when no
    /// key can be made, and after `stop`. The store must outlive the task.
    QCoro::Task<std::expected<DeviceIdentity, Error>> loadOrCreate();

    /// To be called before the keyring is given up: from here on nothing is made or written, because
    /// a keyring that answers no more must not be taken for an empty one.
    void stop() { m_isStopped = true; }

private:
    using Result = std::expected<DeviceIdentity, Error>;

    Reply<Result> joinRunning();
    QCoro::Task<Result> loadOrCreateAlone();
    Result identityWithoutKeychain();
    QCoro::Task<> save(DeviceIdentity identity, bool isLegacy);
    QCoro::Task<bool> migrateLegacy(DeviceIdentity legacy);
    QCoro::Task<> storeNew(DeviceIdentity made);
    /// Nothing when there is none that is valid.
    QCoro::Task<std::expected<std::optional<DeviceIdentity>, KeychainError>> readKeychain();
    QCoro::Task<std::expected<void, KeychainError>> writeKeychain(DeviceIdentity identity);
    std::optional<DeviceIdentity> readDefaults() const;
    void writeDefaults(const DeviceIdentity &identity);
    /// Both tell whether the change is on the disk; if not, the log says so.
    bool clearDefaults();
    bool savePreferences();

    SecretStore &m_secrets;
    Preferences &m_preferences;
    SystemLog &m_log;
    BackgroundTasks &m_tasks;
    std::optional<DeviceIdentity> m_unsaved; ///< made in this run, and stored nowhere yet
    std::optional<DeviceIdentity>
        m_saving; ///< on its way to the keyring, which answers nothing else now
    bool m_isLoading = false;
    bool m_isStopped = false;
    std::vector<ReplySource<Result>> m_waiting; ///< calls that share the running one's result
};

} // namespace bram
