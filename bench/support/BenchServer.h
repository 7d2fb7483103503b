// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QHash>
#include <QObject>
#include <QString>
#include <QTcpServer>
#include <QWebSocketServer>

namespace bram::bench
{

/// The least gateway that a client can be measured against: lets everybody in, and leaves everything
/// else to its user. Clients are told apart by the path of the address they connect to. Its sockets
/// send at once (TCP_NODELAY), so that no figure contains a delayed acknowledgement.
class BenchServer final : public QObject
{
    Q_OBJECT

public:
    /// Ends the process when no port can be had.
    BenchServer();
    ~BenchServer() override;

    /// The address for the client called `name`.
    QString url(const QString &name) const;

    void send(const QString &client, const QString &frame);

Q_SIGNALS:
    /// The client's handshake has been answered.
    void clientReady(const QString &client);
    /// Any frame but the handshake.
    void frameReceived(const QString &client, const QString &frame);

private:
    void accept();

    QTcpServer m_listener;
    QWebSocketServer m_server;
    QHash<QString, QWebSocket *> m_clients; ///< owned as children
};

/// The frame that announces a request.
QString requestFrame(const QString &approvalId, const QString &command);

/// The frame that announces that a request is decided.
QString resolvedFrame(const QString &approvalId);

/// The frame that answers a request of a client.
QString answerFrame(const QString &requestId);

/// The id of a frame of the client's.
QString frameId(const QString &frame);

} // namespace bram::bench
