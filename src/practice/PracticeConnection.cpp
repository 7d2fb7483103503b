// SPDX-License-Identifier: Apache-2.0
#include "practice/PracticeConnection.h"

#include <QJsonDocument>
#include <QUuid>
#include <QWebSocket>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr quint64 maxMessageBytes = 1024 * 1024;
}

PracticeConnection::PracticeConnection(QWebSocket *socket, QObject *parent)
    : QObject(parent)
    , m_socket(socket)
{
    m_socket->setParent(this);
    m_socket->setMaxAllowedIncomingMessageSize(maxMessageBytes);
    m_socket->setMaxAllowedIncomingFrameSize(maxMessageBytes);
    // Queued, because what follows may drop the socket, which must not happen inside its own reading.
    connect(
        m_socket, &QWebSocket::textMessageReceived, this,
        [this](const QString &text) { handleMessage(text.toUtf8()); }, Qt::QueuedConnection);
    connect(
        m_socket, &QWebSocket::binaryMessageReceived, this,
        [this] { violate(u"a request must be a text message"_s); }, Qt::QueuedConnection);
    connect(m_socket, &QWebSocket::disconnected, this, &PracticeConnection::closed,
            Qt::QueuedConnection);
}

void PracticeConnection::challenge()
{
    m_nonce = QUuid::createUuid().toString(QUuid::WithoutBraces);
    sendEvent(u"connect.challenge"_s, {{u"nonce"_s, m_nonce}});
}

void PracticeConnection::sendEvent(const QString &name, const QJsonObject &payload)
{
    send({{u"type"_s, u"event"_s}, {u"event"_s, name}, {u"payload"_s, payload}});
}

void PracticeConnection::answer(const QString &requestId, const QJsonObject &payload)
{
    send({{u"type"_s, u"res"_s}, {u"id"_s, requestId}, {u"ok"_s, true}, {u"payload"_s, payload}});
}

void PracticeConnection::answerError(const QString &requestId, const QString &message)
{
    send({{u"type"_s, u"res"_s},
          {u"id"_s, requestId},
          {u"ok"_s, false},
          {u"error"_s, QJsonObject {{u"message"_s, message}}}});
}

void PracticeConnection::sendRawText(const QString &text)
{
    m_socket->sendTextMessage(text);
}

void PracticeConnection::sendRawBinary(const QByteArray &bytes)
{
    m_socket->sendBinaryMessage(bytes);
}

void PracticeConnection::drop()
{
    m_dropped = true;
    m_socket->flush();
    m_socket->abort();
}

void PracticeConnection::handleMessage(const QByteArray &bytes)
{
    if (m_dropped) {
        return;
    }
    const QJsonDocument document = QJsonDocument::fromJson(bytes);
    if (!document.isObject()) {
        violate(u"a frame must be a JSON object"_s);
        return;
    }
    const QJsonObject frame = document.object();
    Q_EMIT frameReceived(frame);
    const QString requestId = frame.value("id"_L1).toString();
    const QString method = frame.value("method"_L1).toString();
    if (frame.value("type"_L1) != "req"_L1 || requestId.isEmpty() || method.isEmpty()
        || !frame.value("params"_L1).isObject()) {
        violate(u"a request needs type \"req\", an id, a method and params"_s);
        return;
    }
    Q_EMIT requestReceived(requestId, method, frame.value("params"_L1).toObject());
}

void PracticeConnection::violate(const QString &reason)
{
    if (m_dropped) {
        return;
    }
    Q_EMIT protocolViolated(reason);
    m_socket->close(QWebSocketProtocol::CloseCodePolicyViolated, reason);
}

void PracticeConnection::send(const QJsonObject &frame)
{
    sendRawText(QString::fromUtf8(QJsonDocument(frame).toJson(QJsonDocument::Compact)));
}

} // namespace bram
