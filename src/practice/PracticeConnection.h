// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QJsonObject>
#include <QObject>
#include <QString>

class QWebSocket;

namespace bram
{

/// One client of the practice gateway: its socket, the nonce it was challenged with, and whether it has
/// been let in. Turns what arrives into requests and builds the frames that go out.
class PracticeConnection final : public QObject
{
    Q_OBJECT

public:
    /// Takes over the socket.
    PracticeConnection(QWebSocket *socket, QObject *parent);

    /// Sends `connect.challenge` with a fresh nonce.
    void challenge();
    QString nonce() const { return m_nonce; }

    bool isAuthenticated() const { return m_authenticated; }
    void setAuthenticated() { m_authenticated = true; }

    void sendEvent(const QString &name, const QJsonObject &payload);
    void answer(const QString &requestId, const QJsonObject &payload);
    void answerError(const QString &requestId, const QString &message);
    void sendRawText(const QString &text);
    void sendRawBinary(const QByteArray &bytes);

    /// Cuts the connection without a closing handshake, as a killed process does. What was sent before
    /// still goes out; what had arrived and was not handled yet is lost.
    void drop();

Q_SIGNALS:
    void frameReceived(const QJsonObject &frame);
    void requestReceived(const QString &requestId, const QString &method,
                         const QJsonObject &params);
    /// The client sent what is no request frame; the connection is being closed.
    void protocolViolated(const QString &reason);
    void closed();

private:
    void handleMessage(const QByteArray &bytes);
    void violate(const QString &reason);
    void send(const QJsonObject &frame);

    QWebSocket *m_socket;
    QString m_nonce;
    bool m_authenticated = false;
    bool m_dropped = false;
};

} // namespace bram
