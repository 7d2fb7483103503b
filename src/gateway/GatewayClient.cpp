// SPDX-License-Identifier: Apache-2.0
#include "gateway/GatewayClient.h"

#include "gateway/ConnectHandshake.h"
#include "gateway/DeviceIdentityStore.h"
#include "gateway/MaskedReason.h"
#include "system/BackgroundTasks.h"
#include "system/Clock.h"
#include "system/RandomUuid.h"
#include "system/SystemLog.h"

#include <QLocale>
#include <QPointer>

#include <algorithm>
#include <utility>

namespace bram
{

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{
constexpr auto connectKickInterval = 300ms;
constexpr std::chrono::nanoseconds longestReconnectDelay = 15s;
/// A gateway that ends a connection in good order is expected back at once, unless it does so to every
/// connection as soon as that is made.
constexpr std::chrono::milliseconds shortestGoodConnection = 1s;
constexpr auto keyringNoticeDelay = 1s;

/// What names a gateway to the operator: neither user, password, path nor query, which may be secret.
QString shownAddress(const QUrl &url)
{
    return url.toString(QUrl::RemoveUserInfo | QUrl::RemovePath | QUrl::RemoveQuery
                        | QUrl::RemoveFragment);
}
} // namespace

std::chrono::nanoseconds nextReconnectDelay(std::chrono::nanoseconds delay)
{
    // 17 / 10 in integers: exact, and truncated as the schedule wants it.
    return std::min(delay * 17 / 10, longestReconnectDelay);
}

GatewayClient::GatewayClient(const Collaborators &collaborators)
    : m_collaborators(collaborators)
    , m_reconnectDelay(firstReconnectDelay)
{
    m_connectKicker.setSingleShot(true);
    connect(&m_connectKicker, &QTimer::timeout, this, &GatewayClient::sendConnectIfNeeded);
    m_reconnectTimer.setSingleShot(true);
    connect(&m_reconnectTimer, &QTimer::timeout, this, &GatewayClient::openSocket);
    m_keyringNotice.setSingleShot(true);
    m_keyringNotice.setInterval(keyringNoticeDelay);
    connect(&m_keyringNotice, &QTimer::timeout, this, &GatewayClient::waitingForKeyring);
    m_overdueTimer.setSingleShot(true);
    connect(&m_overdueTimer, &QTimer::timeout, this, &GatewayClient::endOverdueCalls);
}

GatewayClient::~GatewayClient()
{
    stop();
}

void GatewayClient::start(const GatewayConfig &config, FirstAttempt firstAttempt)
{
    const auto untilNextTry = m_reconnectTimer.isActive()
        ? m_reconnectTimer.remainingTimeAsDuration()
        : std::chrono::ceil<std::chrono::milliseconds>(m_lastWait);
    stop();
    m_config = config;
    if (firstAttempt == FirstAttempt::AfterBackOff) {
        // The wait was lengthened when it was set; once for each refusal is enough.
        m_reconnectTimer.start(untilNextTry);
        return;
    }
    m_reconnectDelay = firstReconnectDelay;
    // Later, so that a start from within a report does not run inside that report.
    m_reconnectTimer.start(0ms);
}

void GatewayClient::stop()
{
    m_reconnectTimer.stop();
    m_config.reset();
    closeSocket();
}

void GatewayClient::openSocket()
{
    if (!m_config) {
        return;
    }
    const auto serial = m_socketSerial;
    Q_EMIT stateChanged(GatewayConnecting {});
    if (serial != m_socketSerial || !m_config) {
        return; // whoever heard the report restarted or stopped us
    }
    closeSocket();
    m_socket = std::make_unique<GatewaySocket>(m_config->url);
    // Takes what has come with the opening, such as a challenge, but waits for nothing.
    connect(m_socket.get(), &GatewaySocket::opened, this, [this] { m_connectKicker.start(0ms); });
    connect(m_socket.get(), &GatewaySocket::messageReceived, this, &GatewayClient::onMessage);
    connect(m_socket.get(), &GatewaySocket::messageDropped, this, &GatewayClient::messageRefused);
    connect(m_socket.get(), &GatewaySocket::ended, this, &GatewayClient::onSocketEnded);
    m_socket->open();
}

void GatewayClient::closeSocket()
{
    ++m_socketSerial;
    m_connectKicker.stop();
    m_keyringNotice.stop();
    m_overdueTimer.stop();
    m_deadlines.clear();
    m_overdue.clear();
    m_connectNonce.reset();
    m_connectSent = false;
    m_connectInFlight = false;
    m_connectedStateReported = false;
    if (m_socket) {
        m_socket->disconnect(this);
        m_socket->closeSilently();
        // Perhaps we are inside one of its signals.
        m_socket.release()->deleteLater();
    }
    for (const auto &call : std::exchange(m_pending, {})) {
        call.source.answer(std::unexpected(GatewayClientError::notConnected()));
    }
}

void GatewayClient::onMessage(const QByteArray &utf8)
{
    if (const auto usual = m_usualFrames.read(utf8)) {
        onFrame(*usual);
    } else if (const auto frame = parseFrame(utf8)) {
        onFrame(*frame);
    } else {
        endRun(frame.error().message);
    }
}

void GatewayClient::onFrame(const IncomingFrame &frame)
{
    if (std::holds_alternative<UntypedFrame>(frame)) {
        return;
    }
    const auto serial = m_socketSerial;
    reportConnectedOnce();
    if (serial != m_socketSerial) {
        return;
    }
    if (const auto *response = std::get_if<ResponseFrame>(&frame)) {
        onResponse(*response);
    } else if (const auto *event = std::get_if<GatewayEvent>(&frame)) {
        Q_EMIT eventReceived(*event);
    } else if (const auto *challenge = std::get_if<ChallengeFrame>(&frame)) {
        m_connectNonce = challenge->nonce;
        sendConnectIfNeeded();
    }
}

void GatewayClient::onResponse(const ResponseFrame &response)
{
    const auto call = m_pending.find(response.id);
    if (call == m_pending.end()) {
        onLateResponse(response);
        return;
    }
    const auto source = call->source;
    m_pending.erase(call);
    if (response.result) {
        source.answer(*response.result);
    } else {
        source.answer(std::unexpected(GatewayClientError::server(response.result.error())));
    }
    // Who waited goes on in the next turn. An event that came behind the answer, such as the
    // announcement of that very decision, must find it done, and so queues up behind.
    m_socket->yieldTurn();
}

void GatewayClient::onLateResponse(const ResponseFrame &response)
{
    const auto approvalId = m_overdue.constFind(response.id);
    if (approvalId == m_overdue.constEnd()) {
        return;
    }
    const QString confirmed = *approvalId;
    m_overdue.erase(approvalId);
    if (response.result) {
        Q_EMIT decisionConfirmedLate(confirmed);
    }
}

void GatewayClient::onSocketEnded(const QString &reason, GatewaySocket::Ending ending)
{
    if (ending == GatewaySocket::Ending::Clean && m_connectSent) {
        m_reconnectDelay = firstReconnectDelay;
        if (m_sinceHandshake.hasExpired(shortestGoodConnection.count())) {
            endRunAfter(reason, 0ns);
            return;
        }
    }
    endRun(reason);
}

void GatewayClient::endRun(const QString &reason)
{
    const auto wait = m_reconnectDelay;
    m_reconnectDelay = nextReconnectDelay(wait);
    endRunAfter(reason, wait);
}

void GatewayClient::endRunAfter(const QString &reason, std::chrono::nanoseconds wait)
{
    closeSocket();
    m_lastWait = wait;
    const auto inMs = std::chrono::ceil<std::chrono::milliseconds>(wait);
    // Set up before the report: whoever hears it may start the client anew, which must win.
    m_reconnectTimer.start(inMs);
    Q_EMIT stateChanged(GatewayDisconnected {
        .reason = reason,
        .address = m_config ? shownAddress(m_config->url) : QString(),
        .nextTryAtMs = m_collaborators.clock.nowMs() + inMs.count(),
    });
}

void GatewayClient::reportConnectedOnce()
{
    if (!std::exchange(m_connectedStateReported, true)) {
        Q_EMIT stateChanged(GatewayConnected {});
    }
}

void GatewayClient::sendConnectIfNeeded()
{
    if (m_connectSent || m_connectInFlight || !m_config || !m_socket || !m_socket->isOpen()) {
        return;
    }
    m_connectKicker.stop();
    if (const auto reason = reasonToDistrustPeer()) {
        m_collaborators.log.write(QString(u"[Brackwen] connect not sent: "_s + *reason));
        endRun(*reason);
        return;
    }
    m_connectInFlight = true;
    m_keyringNotice.start();
    m_collaborators.tasks.spawn(performHandshake(this, m_socketSerial), u"gateway handshake"_s);
}

std::optional<QString> GatewayClient::reasonToDistrustPeer() const
{
    if (m_config->url.scheme().compare("wss"_L1, Qt::CaseInsensitive) == 0) {
        return std::nullopt;
    }
    const TcpEnds ends = m_socket->ends();
    const auto stranger = m_collaborators.peerUsers.strangerBehind(ends);
    if (!stranger) {
        return std::nullopt;
    }
    return u"port %1 of this machine belongs to another user (%2); it gets no credentials"_s.arg(
        QString::number(ends.peerPort), *stranger);
}

QCoro::Task<> GatewayClient::performHandshake(QPointer<GatewayClient> self, quint64 socketSerial)
{
    const auto identity = co_await self->m_collaborators.identities.loadOrCreate();
    if (!self || self->m_socketSerial != socketSerial) {
        co_return;
    }
    self->m_keyringNotice.stop();
    if (!identity) {
        self->onHandshakeFailed(GatewayClientError::server(identity.error().message));
        co_return;
    }
    const auto params = connectParams({
        .identity = *identity,
        .credentials = self->m_config->credentials,
        .nonce = self->m_connectNonce,
        .signedAtMs = self->m_collaborators.clock.nowMs(),
        .locale = QLocale::system().name(),
    });
    if (!params) {
        self->onHandshakeFailed(GatewayClientError::server(params.error().message));
        co_return;
    }
    const QString id = randomUuid();
    const auto answer = co_await self->send(id, encodeRequest(id, connectMethod, *params));
    if (!self || self->m_socketSerial != socketSerial) {
        co_return;
    }
    if (!answer) {
        self->onHandshakeFailed(answer.error());
        co_return;
    }
    self->m_connectSent = true;
    self->m_connectInFlight = false;
    self->m_sinceHandshake.start();
    self->m_collaborators.log.write(u"[Brackwen] connect handshake success");
    self->reportConnectedOnce();
    Q_EMIT self->handshakeCompleted();
}

void GatewayClient::onHandshakeFailed(const GatewayClientError &error)
{
    m_connectInFlight = false;
    if (error.kind == GatewayClientError::Kind::NotConnected) {
        m_connectKicker.start(connectKickInterval);
        return;
    }
    m_collaborators.log.write(
        QString(u"[Brackwen] connect handshake failed: "_s + maskedReason(error.description())));
    endRun(u"connect failed: "_s + error.description());
}

Reply<GatewayClient::CallResult> GatewayClient::resolveApproval(const QString &approvalId,
                                                                ApprovalDecision decision)
{
    const QString id = randomUuid();
    return send(id, encodeResolveRequest(id, approvalId, decision), approvalId);
}

Reply<GatewayClient::CallResult> GatewayClient::send(const QString &id, const QString &request,
                                                     const QString &approvalId)
{
    const ReplySource<CallResult> source {std::unexpected(GatewayClientError::notConnected())};
    if (m_socket && m_socket->send(request)) {
        m_pending.insert(id, {source, approvalId});
        if (!approvalId.isEmpty()) {
            m_deadlines.enqueue({id, QDeadlineTimer(m_decisionTimeLimit)});
            if (!m_overdueTimer.isActive()) {
                m_overdueTimer.start(m_decisionTimeLimit);
            }
        }
    }
    // Without a socket the source ends here, which answers the reply.
    return source.reply();
}

void GatewayClient::endOverdueCalls()
{
    while (!m_deadlines.isEmpty()) {
        const auto call = m_pending.constFind(m_deadlines.head().callId);
        if (call != m_pending.constEnd()) {
            if (!m_deadlines.head().until.hasExpired()) {
                m_overdueTimer.start(std::chrono::ceil<std::chrono::milliseconds>(
                    m_deadlines.head().until.remainingTimeAsDuration()));
                return;
            }
            m_overdue.insert(call.key(), call->approvalId);
            call->source.answer(std::unexpected(GatewayClientError::timedOut()));
            m_pending.erase(call);
        }
        m_deadlines.dequeue();
    }
}

} // namespace bram
