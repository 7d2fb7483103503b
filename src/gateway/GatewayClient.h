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
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QHash>
#include <QObject>
#include <QQueue>
#include <QTimer>

#include <chrono>
#include <expected>
#include <memory>
#include <optional>

namespace bram
{

/// How long the gateway has to answer a decision.
inline constexpr std::chrono::milliseconds decisionTimeLimit {30'000};

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
/// time: that is what lets refusals be counted. Whether the gateway is ours and takes us is known only with
/// `handshakeCompleted`.
///
/// A peer on this machine that belongs to another user than root and ourselves is told nothing: anybody can
/// listen on a port while the gateway does not. An encrypted connection is not asked that, as its certificate
/// says who the peer is.
class GatewayClient final : public QObject
{
    Q_OBJECT

public:
    struct Collaborators {
        DeviceIdentityStore &identities;
        const Clock &clock;
        SystemLog &log;
        BackgroundTasks &tasks;
        const PeerUsers &peerUsers;
    };

    explicit GatewayClient(const Collaborators &collaborators);
    ~GatewayClient() override;
    Q_DISABLE_COPY_MOVE(GatewayClient)

    /// When a start opens its socket.
    enum class FirstAttempt {
        AtOnce,
        AfterBackOff, ///< for restarts nobody asked for: when the next try is due anyhow
    };

    /// Connects with `config`, ending a running connection first. Returns at once.
    void start(const GatewayConfig &config, FirstAttempt firstAttempt = FirstAttempt::AtOnce);

    /// Ends everything, calls in flight with `NotConnected`. Reports no state.
    void stop();

    /// What a call came to: the response's payload or why there is none.
    using CallResult = std::expected<QJsonValue, GatewayClientError>;

    /// Tells the gateway the decision; the message has left when this returns, the reply ends with the
    /// gateway's answer, with the connection or after `decisionTimeLimit`.
    Reply<CallResult> resolveApproval(const QString &approvalId, ApprovalDecision decision);

    /// Whether the gateway has accepted the handshake of the present socket.
    bool isHandshakeCompleted() const { return m_connectSent; }

    /// For tests, which cannot wait that long.
    void setDecisionTimeLimit(std::chrono::milliseconds limit) { m_decisionTimeLimit = limit; }

Q_SIGNALS:
    void eventReceived(const bram::GatewayEvent &event);
    void stateChanged(const bram::GatewayConnectionState &state);
    /// The gateway has accepted the handshake of this socket.
    void handshakeCompleted();
    /// The handshake waits for the keyring, which holds the device's identity.
    void waitingForKeyring();
    /// The gateway has taken a decision whose time was over.
    void decisionConfirmedLate(const QString &approvalId);
    /// The gateway sent something that is too large to be read; the connection stays.
    void messageRefused(qint64 bytes);

private:
    /// A call that has no answer yet.
    struct Call {
        ReplySource<CallResult> source;
        QString approvalId {}; ///< of a decision
    };
    struct Deadline {
        QString callId;
        QDeadlineTimer until;
    };

    void openSocket();
    void closeSocket();
    void onMessage(const QByteArray &utf8);
    void onFrame(const IncomingFrame &frame);
    void onResponse(const ResponseFrame &response);
    void onSocketEnded(const QString &reason, GatewaySocket::Ending ending);
    void onLateResponse(const ResponseFrame &response);
    void endRun(const QString &reason);
    void endRunAfter(const QString &reason, std::chrono::nanoseconds wait);
    void endOverdueCalls();
    void reportConnectedOnce();
    void sendConnectIfNeeded();
    std::optional<QString> reasonToDistrustPeer() const;
    static QCoro::Task<> performHandshake(QPointer<GatewayClient> self, quint64 socketSerial);
    void onHandshakeFailed(const GatewayClientError &error);
    Reply<CallResult> send(const QString &id, const QString &request,
                           const QString &approvalId = {});

    Collaborators m_collaborators;
    std::optional<GatewayConfig> m_config;
    std::unique_ptr<GatewaySocket> m_socket;
    quint64 m_socketSerial = 0; ///< tells a coroutine whether its socket is still the current one
    UsualFrameReader m_usualFrames;
    QHash<QString, Call> m_pending;
    QQueue<Deadline>
        m_deadlines; ///< of decisions, also of answered ones; in the order of their times
    QHash<QString, QString>
        m_overdue; ///< decisions whose time was over: what they were about, by call
    std::optional<QString> m_connectNonce;
    bool m_connectSent = false;
    bool m_connectInFlight = false;
    bool m_connectedStateReported = false;
    QTimer m_connectKicker; ///< tries the handshake again; silent while one is in flight or done
    QTimer m_keyringNotice;
    QTimer m_overdueTimer; ///< silent while no decision is under way
    QTimer m_reconnectTimer;
    QElapsedTimer m_sinceHandshake;
    std::chrono::nanoseconds m_reconnectDelay;
    std::chrono::nanoseconds m_lastWait {};
    std::chrono::milliseconds m_decisionTimeLimit = decisionTimeLimit;
};

/// The wait before the first reconnect.
inline constexpr std::chrono::nanoseconds firstReconnectDelay {800'000'000};

/// The wait that follows `delay`: 1.7 times as long, at most 15 s.
std::chrono::nanoseconds nextReconnectDelay(std::chrono::nanoseconds delay);

} // namespace bram
