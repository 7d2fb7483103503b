// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/GatewayConnectionState.h"

#include <QString>

#include <optional>

namespace bram
{

class AuditLogStore;
class Clock;
class GatewaySession;
class GatewayStatus;
class SystemLog;

/// Turns the client's reports into status lines and audit records, and watches for refused
/// authentication: the first one after a good connection locks remote approvals and takes the token from
/// the configuration file once; from the third within five minutes of each other on, the operator is
/// told that the token may be revoked.
class ConnectionSupervision
{
public:
    struct Collaborators {
        GatewaySession &session;
        GatewayStatus &status;
        AuditLogStore &audit;
        const Clock &clock;
        SystemLog &log;
    };

    explicit ConnectionSupervision(const Collaborators &collaborators);

    void handleConnectionState(const GatewayConnectionState &state);

    /// The gateway accepts our credentials: only now is the connection a good one, and a series of refusals
    /// over. "connected" alone does not say so, as it comes before the handshake is answered.
    void handleHandshakeCompleted();

    /// Takes back what a made-up refusal has locked, but not what the gateway itself has.
    void endExercise();

    /// The gateway sent something too large to be read, perhaps a request, which then stays undecided.
    void handleRefusedMessage(qint64 bytes);

    /// A reload by hand allows another automatic one.
    void allowAutomaticTokenResync() { m_autoTokenResyncAttempted = false; }

    /// Refused authentications in the current series.
    int unauthorizedDisconnectCount() const { return m_unauthorizedDisconnectCount; }

private:
    void onConnecting();
    void onConnected();
    void onDisconnected(const GatewayDisconnected &lost);
    void onAuthenticationFailure(const QString &masked);
    void registerUnauthorizedDisconnect(const QString &masked);

    Collaborators m_collaborators;
    bool m_isLockMadeUp = false; ///< remote decisions are locked by an exercise only
    bool m_autoTokenResyncAttempted = false; ///< since the last good connection
    int m_unauthorizedDisconnectCount = 0;
    std::optional<qint64> m_lastUnauthorizedDisconnectMs;
    QString m_auditSource; ///< who told of the disconnect that is taken in
};

} // namespace bram
