// SPDX-License-Identifier: Apache-2.0
#include "gateway/GatewaySocket.h"

#include "gateway/ConnectHandshake.h"
#include "system/NextTurn.h"
#include "system/TcpSocketState.h"

#include <QAbstractEventDispatcher>
#include <QNetworkRequest>
#include <QPointer>
#include <QSocketNotifier>

#include <chrono>
#include <utility>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr qsizetype maxMessageBytes = 4 * 1024 * 1024;
/// The library ends the connection at its limit. Up to this one a message is received only to be dropped.
constexpr quint64 maxReceivedBytes = 64 * 1024 * 1024;
constexpr qint64 turnBudgetNs = 8'000'000;
/// How many messages to the peer may go together while others are still to be read.
constexpr int mostUnflushedMessages = 16;

/// The signal got its unambiguous name in Qt 6.5, which warns about the older one.
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
constexpr auto socketError = &QWebSocket::errorOccurred;
#else
constexpr auto socketError = qOverload<QAbstractSocket::SocketError>(&QWebSocket::error);
#endif

QString secondsText(std::chrono::milliseconds time)
{
    return u"%1 s"_s.arg(std::chrono::duration<double>(time).count());
}

QString failureText(QAbstractSocket::SocketError error, const QString &otherwise)
{
    switch (error) {
    case QAbstractSocket::ConnectionRefusedError:
        return u"Connection refused"_s;
    case QAbstractSocket::HostNotFoundError:
        return u"Host not found"_s;
    case QAbstractSocket::SocketTimeoutError:
        return u"Connection timed out"_s;
    case QAbstractSocket::NetworkError:
        return u"Network unreachable"_s;
    default: // without the place in the library where it was noticed
        return otherwise.startsWith("QWebSocketPrivate::"_L1)
            ? otherwise.sliced(otherwise.indexOf(": "_L1) + 2)
            : otherwise;
    }
}

/// Why a connection could not be opened, in English whatever the language of the toolkit's texts is, where
/// the fault is one of the usual ones.
QString failureText(const QWebSocket &socket)
{
    // An encrypted one has closed before it takes over the fault of the plain socket within it.
    if (socket.error() == QAbstractSocket::UnknownSocketError) {
        for (const auto *inner : socket.findChildren<QAbstractSocket *>()) {
            if (inner->error() != QAbstractSocket::UnknownSocketError) {
                return failureText(inner->error(), inner->errorString());
            }
        }
    }
    return failureText(socket.error(), socket.errorString());
}
} // namespace

GatewaySocket::GatewaySocket(const QUrl &url)
    : GatewaySocket(url, TimeLimits())
{
}

GatewaySocket::GatewaySocket(const QUrl &url, TimeLimits limits)
    : m_url(url)
    , m_limits(limits)
    , m_socket(gatewayOrigin(url).value_or(QString()))
{
    m_socket.setMaxAllowedIncomingFrameSize(maxReceivedBytes);
    m_socket.setMaxAllowedIncomingMessageSize(maxReceivedBytes);

    connect(&m_socket, &QWebSocket::connected, this, [this] {
        m_openTimeout.stop();
        // A decision is one small packet that shall not wait for the acknowledgement of the one before.
        if (auto *tcp = m_socket.findChild<QAbstractSocket *>()) {
            tcp->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        }
        m_pingTimer.start(m_limits.silence);
        Q_EMIT opened();
    });
    connect(&m_socket, &QWebSocket::textMessageReceived, this, [this](const QString &text) {
        if (text.size() > maxMessageBytes) { // so are its bytes, then
            Q_EMIT messageDropped(text.size());
        } else {
            accept(text.toUtf8());
        }
    });
    connect(&m_socket, &QWebSocket::binaryMessageReceived, this, &GatewaySocket::accept);
    connect(&m_socket, &QWebSocket::pong, this, [this] { m_heardSincePing = true; });
    // The close code alone does not tell: it is "normal" after an abrupt end, too.
    connect(&m_socket, &QWebSocket::aboutToClose, this, [this] { m_closeFrameSeen = true; });
    connect(&m_socket, &QWebSocket::disconnected, this, &GatewaySocket::onDisconnected);
    connect(&m_socket, socketError, this, [this] {
        // An open socket that fails goes on to `disconnected`; one that never opened perhaps not.
        if (!m_pingTimer.isActive()) {
            finish(failureText(m_socket), Ending::Failed);
        }
    });

    connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake, this,
            &GatewaySocket::onLoopAwake);

    m_openTimeout.setSingleShot(true);
    connect(&m_openTimeout, &QTimer::timeout, this, [this] {
        finish(u"Gateway did not answer within "_s + secondsText(m_limits.opening), Ending::Failed);
    });
    connect(&m_pingTimer, &QTimer::timeout, this, &GatewaySocket::onPingDue);
}

GatewaySocket::~GatewaySocket()
{
    closeSilently();
}

void GatewaySocket::open()
{
    m_openTimeout.start(m_limits.opening);
    QNetworkRequest request(m_url);
    request.setRawHeader("User-Agent", QByteArray(userAgent.data(), userAgent.size()));
    m_socket.open(request);
}

bool GatewaySocket::isOpen() const
{
    return !m_ended && m_socket.state() == QAbstractSocket::ConnectedState;
}

TcpEnds GatewaySocket::ends() const
{
    return {m_socket.localAddress(), m_socket.localPort(), m_socket.peerAddress(),
            m_socket.peerPort()};
}

/// Each time the loop looks for events, a new turn begins.
void GatewaySocket::onLoopAwake()
{
    if (!m_deliveryScheduled) {
        m_turn.invalidate();
    }
    if (m_ended || m_socket.state() != QAbstractSocket::ConnectingState) {
        return;
    }
    // Until it is connected, only those who wait for it know the socket.
    const auto *waiter = m_socket.findChild<QSocketNotifier *>();
    const auto closed = waiter != nullptr ? closedTcpSocket(waiter->socket()) : std::nullopt;
    // The engine has had a turn for it and keeps the socket: next it would connect it again.
    if (closed && closed == m_closedSocket) {
        finish(u"Connection reset by peer"_s, Ending::Failed);
    }
    m_closedSocket = closed;
}

bool GatewaySocket::send(const QString &message)
{
    if (!isOpen() || m_socket.sendTextMessage(message) <= 0) {
        return false;
    }
    // Now, not in the next turn of the event loop. That is where a broken connection may show. In a burst,
    // a few go together: each of them alone would cost the peer, and the system, as much as all.
    if (m_queue.isEmpty() || ++m_unflushedMessages >= mostUnflushedMessages) {
        flush();
    }
    return isOpen();
}

void GatewaySocket::flush()
{
    m_unflushedMessages = 0;
    m_socket.flush();
}

void GatewaySocket::closeSilently()
{
    m_ended = true;
    m_queue.clear();
    m_openTimeout.stop();
    m_pingTimer.stop();
    m_socket.disconnect(this);
    if (m_socket.state() == QAbstractSocket::ConnectedState) {
        m_socket.close(QWebSocketProtocol::CloseCodeGoingAway);
    } else {
        m_socket.abort();
    }
}

void GatewaySocket::accept(const QByteArray &utf8)
{
    if (m_ended) {
        return;
    }
    m_heardSincePing = true;
    if (utf8.size() > maxMessageBytes) {
        Q_EMIT messageDropped(utf8.size());
        return;
    }
    if (m_queue.isEmpty() && !turnIsSpent()) {
        Q_EMIT messageReceived(utf8);
        return;
    }
    m_queue.enqueue(utf8);
    scheduleDelivery();
}

void GatewaySocket::scheduleDelivery()
{
    if (!std::exchange(m_deliveryScheduled, true)) {
        inNextTurn(this, [this] { deliverQueued(); });
    }
}

void GatewaySocket::deliverQueued()
{
    m_deliveryScheduled = false;
    m_turnYielded = false;
    m_turn.invalidate();
    const QPointer guard(this);
    while (!m_queue.isEmpty() && !turnIsSpent()) {
        Q_EMIT messageReceived(m_queue.dequeue());
        if (!guard || m_ended) {
            return;
        }
    }
    if (m_unflushedMessages > 0) {
        flush();
    }
    if (!m_queue.isEmpty()) {
        scheduleDelivery();
    } else if (m_socket.state() == QAbstractSocket::UnconnectedState) {
        onDisconnected();
    }
}

void GatewaySocket::yieldTurn()
{
    m_turnYielded = true;
    // Comes behind the work that was put off before this call, which is what has to take effect first.
    scheduleDelivery();
}

bool GatewaySocket::turnIsSpent()
{
    if (m_turnYielded) {
        return true;
    }
    if (!m_turn.isValid()) {
        m_turn.start();
        return false;
    }
    return m_turn.nsecsElapsed() > turnBudgetNs;
}

void GatewaySocket::onDisconnected()
{
    if (!m_queue.isEmpty()) {
        return; // what arrived before the end is delivered first
    }
    const auto code = m_socket.closeCode();
    const QString reason = m_socket.closeReason();
    if (!m_pingTimer.isActive() && !m_closeFrameSeen) { // it has never been open
        finish(failureText(m_socket), Ending::Failed);
    } else if (!m_closeFrameSeen) {
        finish(u"Gateway connection lost"_s, Ending::Failed);
    } else if (code == QWebSocketProtocol::CloseCodeTooMuchData) {
        finish(u"Gateway sent a message over 64 MiB"_s, Ending::Failed);
    } else if (code == QWebSocketProtocol::CloseCodeWrongDatatype) {
        finish(u"Gateway sent text that is not valid UTF-8"_s, Ending::Failed);
    } else if (code == QWebSocketProtocol::CloseCodeNormal
               || code == QWebSocketProtocol::CloseCodeGoingAway) {
        finish(reason.isEmpty() ? u"Gateway closed the connection"_s : reason, Ending::Clean);
    } else {
        finish(reason.isEmpty() ? u"Gateway broke off the connection"_s : reason, Ending::Failed);
    }
}

void GatewaySocket::onPingDue()
{
    if (!m_heardSincePing) {
        finish(u"Gateway did not answer a ping within "_s + secondsText(m_limits.silence),
               Ending::Failed);
        return;
    }
    m_heardSincePing = false;
    m_socket.ping();
}

void GatewaySocket::finish(const QString &reason, Ending ending)
{
    if (m_ended) {
        return;
    }
    closeSilently();
    Q_EMIT ended(reason, ending);
}

} // namespace bram
