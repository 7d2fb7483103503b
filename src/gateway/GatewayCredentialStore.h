// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "gateway/GatewayConfig.h"

#include "config/BrackwenConfig.h"
#include "config/Environment.h"
#include "system/SecretStore.h"

#include <QCoro/QCoroTask>

#include <optional>

namespace bram
{

class Preferences;
class SystemLog;

/// Trimmed token and password of the first configuration file that has either; nothing when none
/// has.
std::optional<GatewayCredentials>
loadGatewayCredentialsFromBrackwenConfig(const BrackwenConfig &config);

/// Where the gateway's token and password come from, and the keyring's copy of them. Failures of
/// the keyring are logged and stop nothing. Main thread only; the store must outlive its tasks.
class GatewayCredentialStore
{
public:
    GatewayCredentialStore(const BrackwenConfig &config, SecretStore &secrets,
                           Preferences &preferences, SystemLog &log);

    /// The credentials that can be had without the keyring: the environment's if it has either; else the
    /// configuration file's, of which the keyring is to get a copy.
    struct Known {
        GatewayCredentials credentials;
        bool isFromFile = false;
    };
    std::optional<Known> known(const Environment &environment) const;

    /// Those to connect with where none are known so.
    QCoro::Task<GatewayCredentials> inKeyring();

    /// Makes the keyring hold exactly these: what is absent or blank is deleted from it.
    QCoro::Task<> saveGatewayCredentials(GatewayCredentials credentials);

    /// Moves what an earlier release left in the preferences to the keyring. What is removed from
    /// the preferences has been read back from the keyring. Once, at start.
    QCoro::Task<> migrateLegacyGatewayCredentialsToKeychainIfNeeded();

    /// The operator wants to be asked once more to unlock the keyring.
    void askAgain() { m_secrets.askAgain(); }

    /// The configuration file's credentials as they are now.
    std::optional<GatewayCredentials> reference() const;

private:
    QCoro::Task<> saveItem(QString account, std::optional<QString> value);
    QCoro::Task<std::optional<QString>> readItem(QString account);
    QCoro::Task<bool> resolveLegacyItem(QString account, std::optional<QString> legacy);

    BrackwenConfig m_config;
    SecretStore &m_secrets;
    Preferences &m_preferences;
    SystemLog &m_log;
};

} // namespace bram
