// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "config/Environment.h"
#include "gateway/GatewayClient.h"
#include "gateway/GatewayConfig.h"

#include <QCoro/QCoroTask>
#include <QObject>
#include <QPointer>

namespace bram
{

class BackgroundTasks;
class GatewayCredentialStore;
class GatewayStatus;

/// Where a gateway is expected when the environment names none.
inline constexpr QLatin1StringView defaultGatewayUrl("ws://127.0.0.1:18789");

/// Starts the gateway client with the address and the credentials that hold now, and keeps the token's
/// status line. Main thread only.
class GatewaySession final : public QObject
{
    Q_OBJECT

public:
    struct Collaborators {
        GatewayClient &client;
        GatewayCredentialStore &credentials;
        GatewayStatus &status;
        BackgroundTasks &tasks;
    };

    GatewaySession(const Collaborators &collaborators, const Environment &environment);

    /// Once, before the first connection: moves credentials an earlier release left in the preferences.
    QCoro::Task<> migrateLegacyCredentials();

    /// Connects (again) with freshly resolved address and credentials. Returns at once: the keyring may
    /// have to be unlocked first. An address that is no WebSocket URL becomes a status line.
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
        std::optional<GatewayCredentials> toSave {}; ///< taken from the configuration file just now
        GatewayClient::FirstAttempt firstAttempt = GatewayClient::FirstAttempt::AtOnce;
        bool updatesTokenLine = true; ///< not when the line says something newer
    };
    void beginStart(Start start);
    static QCoro::Task<> resolveAndStart(QPointer<GatewaySession> self, Start start);

    Collaborators m_collaborators;
    Environment m_environment;
    quint64 m_startSerial = 0; ///< the newest start wins
    bool m_isStopped = false;
};

} // namespace bram
