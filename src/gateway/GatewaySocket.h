// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "system/PeerUsers.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QObject>
#include <QQueue>
#include <QTimer>
#include <QUrl>
#include <QWebSocket>

#include <chrono>
#include <optional>

namespace bram
{

/// One WebSocket to the gateway, from opening to its end.
///
/// Delivers messages in order and in small portions: however many arrive at once, a turn of the event
/// loop handles no more than a few milliseconds' worth, so that the interface stays alive in a burst. A
/// peer that has gone silent is given up: a ping every 20 s, and the end when nothing at all came back
/// within 20 s of one. A message over 4 MiB is dropped, one over 64 MiB ends the connection.
///
/// A peer that resets the connection while it is being opened ends it: the toolkit's engine would take no
/// notice, and connect the same socket again and again.
class GatewaySocket final : public QObject
{
    Q_OBJECT

public:
    enum class Ending {
        Clean, ///< the peer closed in good order
        Failed,
    };
    Q_ENUM(Ending)

    struct TimeLimits {
        std::chrono::milliseconds opening = std::chrono::seconds(60);
        /// Between two pings, and at the same time how long the answer to one may take.
        std::chrono::milliseconds silence = std::chrono::seconds(20);
    };

    explicit GatewaySocket(const QUrl &url);
    GatewaySocket(const QUrl &url, TimeLimits limits);
    ~GatewaySocket() override;
    Q_DISABLE_COPY_MOVE(GatewaySocket)

    void open();
    bool isOpen() const;
    /// Of the open connection.
    TcpEnds ends() const;

    /// Sends one text message; false when the socket is not open.
    bool send(const QString &message);

    /// Holds back what has arrived since until the next turn of the event loop: called when a message has
    /// to take effect there before the following one may.
    void yieldTurn();

    /// Ends the connection with "going away". Nothing is emitted afterwards.
    void closeSilently();

Q_SIGNALS:
    void opened();
    void messageReceived(const QByteArray &utf8);
    /// A message was too large to be read.
    void messageDropped(qint64 bytes);
    /// The connection has ended or could not be opened; emitted once, after the last message.
    void ended(const QString &reason, bram::GatewaySocket::Ending ending);

private:
    void accept(const QByteArray &utf8);
    void deliverQueued();
    void scheduleDelivery();
    void flush();
    void onLoopAwake();
    void onDisconnected();
    void onPingDue();
    void finish(const QString &reason, Ending ending);
    bool turnIsSpent();

    QUrl m_url;
    TimeLimits m_limits;
    QWebSocket m_socket;
    QTimer m_openTimeout;
    QTimer m_pingTimer;
    QQueue<QByteArray> m_queue;
    QElapsedTimer m_turn; ///< since the first message of this turn of the event loop
    std::optional<quint64> m_closedSocket; ///< found closed at the beginning of the turn before
    int m_unflushedMessages = 0;
    bool m_deliveryScheduled = false;
    bool m_turnYielded = false;
    bool m_heardSincePing = true;
    bool m_closeFrameSeen = false;
    bool m_ended = false;
};

} // namespace bram
