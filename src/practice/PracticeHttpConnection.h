// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QObject>

class QTcpSocket;

namespace bram
{

/// One request of an HTTP/1.1 client.
struct PracticeHttpRequest {
    QByteArray method {};
    QByteArray path {};
    QByteArray contentType {};
    QByteArray body {};
};

/// One client connection of a small HTTP/1.1 server, which takes one request after the other. It answers
/// with bytes of its own making, so that they can be wrong on purpose.
class PracticeHttpConnection final : public QObject
{
    Q_OBJECT

public:
    /// How an answer goes out.
    enum class Delivery {
        Whole,
        CutInBody, ///< half of the body, then the end of the connection
    };

    /// Takes over the socket.
    PracticeHttpConnection(QTcpSocket *socket, QObject *parent);

    /// Answers the request that was received last; the next one is read after that.
    void answer(int status, const QByteArray &contentType, const QByteArray &body,
                Delivery delivery = Delivery::Whole);

    /// Resets the connection, as the network does to one that it has forgotten.
    void reset();

Q_SIGNALS:
    void requestReceived(const bram::PracticeHttpRequest &request);
    /// The connection is gone; it takes no answer any more.
    void closed();

private:
    void read();
    /// Whether a whole request has come; it is taken out of what was received.
    bool takeRequest(PracticeHttpRequest &request);
    void refuse(int status);

    QTcpSocket *m_socket;
    QByteArray m_received;
    bool m_isAnswering = false; ///< a request is with the server
    bool m_isClosed = false;
};

} // namespace bram
