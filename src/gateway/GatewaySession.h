// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "config/Environment.h"
#include "gateway/GatewayClient.h"
#include "gateway/GatewayConfig.h"

#include <QCoro/QCoroTask>
#include <QObject>
#include <QPointer>
#include <QTimer>

namespace bram
{

class BackgroundTasks;
class GatewayCredentialStore;
class GatewayStatus;
class StoredSwitch;

/// Where a gateway is expected when the environment names none.
inline constexpr QLatin1StringView defaultGatewayUrl("ws://127.0.0.1:18789");

/// Starts the gateway client with the address and the credentials that hold now, and keeps the token's
/// status line. Main thread only.
///
/// Connects first and saves later: what is known without the keyring never waits for it, and its copy is made
/// once the first attempt has ended, well or badly. An address on another machine must be encrypted, unless
/// the operator has allowed the other.
class GatewaySession final : public QObject
{
    Q_OBJECT

public:
    struct Collaborators {
        GatewayClient &client;
        GatewayCredentialStore &credentials;
        GatewayStatus &status;
        BackgroundTasks &tasks;
        const StoredSwitch &unencryptedGateway;
    };

    GatewaySession(const Collaborators &collaborators, const Environment &environment);

    /// Once, before the first connection: moves credentials an earlier release left in the preferences.
    /// That is put off where the connection does not need them.
    QCoro::Task<> migrateLegacyCredentials();

    /// Connects (again) with freshly resolved address and credentials, and asks again for what the keyring
    /// has held back. Returns at once: the keyring may have to be unlocked first. An address that is no
    /// WebSocket URL, or is not used, becomes a status line.
    void connectGateway();

    /// Takes the token from the configuration file and connects anew. False, with a status line, when
    /// the file has none.
    bool reloadGatewayTokenFromConfig();

    /// What the supervision does after a refused connection: as a reload, with other words and without
    /// being asked. False when the file has no credentials; then nothing has changed.
    bool resynchroniseToken(GatewayClient::FirstAttempt firstAttempt);

    /// Ends the connection and every start under way. Nothing starts afterwards.
    void stop();

private:
    /// One connection attempt's start, while the keyring is asked.
    struct Start {
        QUrl url {};
        quint64 serial = 0;
        GatewayClient::FirstAttempt firstAttempt = GatewayClient::FirstAttempt::AtOnce;
    };
    QUrl address() const;
    void beginStart(Start start);
    static QCoro::Task<> readKeyringAndStart(QPointer<GatewaySession> self, Start start);
    void startClient(const Start &start, const GatewayCredentials &credentials);
    void saveWhatWaits();
    static QCoro::Task<> save(QPointer<GatewaySession> self, bool migratesFirst,
                              std::optional<GatewayCredentials> credentials);

    Collaborators m_collaborators;
    Environment m_environment;
    quint64 m_startSerial = 0; ///< the newest start wins
    bool m_migratesLater = false;
    std::optional<GatewayCredentials> m_unsaved; ///< of the configuration file
    QTimer m_keyringNotice;
    bool m_isStopped = false;
};

} // namespace bram
