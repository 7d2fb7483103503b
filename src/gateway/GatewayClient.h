// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "gateway/GatewayClientError.h"
#include "gateway/GatewayConfig.h"
#include "gateway/GatewayFrames.h"
#include "gateway/GatewaySocket.h"
#include "gateway/UsualFrames.h"
#include "model/ApprovalDecision.h"
#include "model/GatewayConnectionState.h"
#include "system/Reply.h"

#include <QCoro/QCoroTask>
#include <QHash>
#include <QObject>
#include <QTimer>

#include <chrono>
#include <expected>
#include <memory>
#include <optional>

namespace bram
{

class BackgroundTasks;
class Clock;
class DeviceIdentityStore;
class SystemLog;

/// The one connection to the agent platform's gateway: opens it, performs the signed handshake, turns
/// its events into `GatewayEvent` values, carries calls, and connects anew with growing waits until it is
/// stopped. It reports; what a report means is the supervision's business. Main thread only.
///
/// `connected` is reported with the first well-formed message of a socket, before the handshake has been
/// answered. A gateway that refuses the handshake is therefore seen as connected, then disconnected, each
/// time: that is what lets refusals be counted.
class GatewayClient final : public QObject
{
    Q_OBJECT

public:
    struct Collaborators {
        DeviceIdentityStore &identities;
        const Clock &clock;
        SystemLog &log;
        BackgroundTasks &tasks;
    };

    explicit GatewayClient(const Collaborators &collaborators);
    ~GatewayClient() override;
    Q_DISABLE_COPY_MOVE(GatewayClient)

    /// When a start opens its socket.
    enum class FirstAttempt {
        AtOnce,
        AfterBackOff, ///< for restarts nobody asked for: the waits go on growing
    };

    /// Connects with `config`, ending a running connection first. Returns at once.
    void start(const GatewayConfig &config, FirstAttempt firstAttempt = FirstAttempt::AtOnce);

    /// Ends everything, calls in flight with `NotConnected`. Reports no state.
    void stop();

    /// What a call came to: the response's payload or why there is none.
    using CallResult = std::expected<QJsonValue, GatewayClientError>;

    /// Tells the gateway the decision; the message has left when this returns, the reply ends with the
    /// gateway's answer or with the connection. There is no time limit of its own.
    Reply<CallResult> resolveApproval(const QString &approvalId, ApprovalDecision decision);

Q_SIGNALS:
    void eventReceived(const bram::GatewayEvent &event);
    void stateChanged(const bram::GatewayConnectionState &state);
    /// The gateway has accepted the handshake of this socket.
    void handshakeCompleted();

private:
    void openSocket();
    void closeSocket();
    void onMessage(const QByteArray &utf8);
    void onFrame(const IncomingFrame &frame);
    void onResponse(const ResponseFrame &response);
    void onSocketEnded(const QString &reason, GatewaySocket::Ending ending);
    void endRun(const QString &reason);
    void scheduleReconnect();
    void reportConnectedOnce();
    void onSocketOpened();
    void sendConnectIfNeeded();
    static QCoro::Task<> performHandshake(QPointer<GatewayClient> self, quint64 socketSerial);
    void onHandshakeFailed(const GatewayClientError &error);
    Reply<CallResult> send(const QString &id, const QString &request);

    Collaborators m_collaborators;
    std::optional<GatewayConfig> m_config;
    std::unique_ptr<GatewaySocket> m_socket;
    quint64 m_socketSerial = 0; ///< tells a coroutine whether its socket is still the current one
    UsualFrameReader m_usualFrames;
    QHash<QString, ReplySource<CallResult>> m_pending;
    std::optional<QString> m_connectNonce;
    bool m_connectSent = false;
    bool m_connectInFlight = false;
    bool m_connectedStateReported = false;
    bool m_handshakeRefused = false; ///< on the socket before this one
    QTimer m_connectKicker; ///< tries the handshake again; silent while one is in flight or done
    QTimer m_reconnectTimer;
    std::chrono::nanoseconds m_reconnectDelay;
};

/// The wait before the first reconnect.
inline constexpr std::chrono::nanoseconds firstReconnectDelay {800'000'000};

/// The wait that follows `delay`: 1.7 times as long, at most 15 s.
std::chrono::nanoseconds nextReconnectDelay(std::chrono::nanoseconds delay);

} // namespace bram
