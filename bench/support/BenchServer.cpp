// SPDX-License-Identifier: Apache-2.0
#include "support/BenchServer.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpSocket>
#include <QWebSocket>

#include <cstdio>
#include <cstdlib>

namespace bram::bench
{

using namespace Qt::StringLiterals;

namespace
{
constexpr qint64 lifetimeMs = 600'000;

QString encode(const QJsonObject &frame)
{
    return QString::fromUtf8(QJsonDocument(frame).toJson(QJsonDocument::Compact));
}

QString eventFrame(const QString &name, const QJsonObject &payload)
{
    return encode({{u"type"_s, u"event"_s}, {u"event"_s, name}, {u"payload"_s, payload}});
}
} // namespace

BenchServer::BenchServer()
    : m_server(u"bench"_s, QWebSocketServer::NonSecureMode)
{
    connect(&m_listener, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket *socket = m_listener.nextPendingConnection()) {
            socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
            m_server.handleConnection(socket);
        }
    });
    connect(&m_server, &QWebSocketServer::newConnection, this, &BenchServer::accept);
    if (!m_listener.listen(QHostAddress::LocalHost)) {
        std::fprintf(stderr, "%s\n", qPrintable(m_listener.errorString()));
        std::exit(2);
    }
}

BenchServer::~BenchServer()
{
    // A socket tells of its end while it is destroyed; nobody may hear that any more.
    for (QWebSocket *socket : std::as_const(m_clients)) {
        socket->disconnect(this);
    }
}

QString BenchServer::url(const QString &name) const
{
    return u"ws://127.0.0.1:%1/%2"_s.arg(QString::number(m_listener.serverPort()), name);
}

void BenchServer::send(const QString &client, const QString &frame)
{
    m_clients.value(client)->sendTextMessage(frame);
}

void BenchServer::accept()
{
    while (QWebSocket *socket = m_server.nextPendingConnection()) {
        socket->setParent(this);
        const QString client = socket->requestUrl().path().mid(1);
        m_clients.insert(client, socket);
        connect(socket, &QWebSocket::textMessageReceived, this,
                [this, client](const QString &frame) {
                    if (!frame.contains("\"method\":\"connect\""_L1)) {
                        Q_EMIT frameReceived(client, frame);
                        return;
                    }
                    send(client, answerFrame(frameId(frame)));
                    Q_EMIT clientReady(client);
                });
        connect(socket, &QWebSocket::disconnected, this, [client] {
            std::fprintf(stderr, "the client %s has gone\n", qPrintable(client));
            std::exit(2);
        });
    }
}

QString requestFrame(const QString &approvalId, const QString &command)
{
    const qint64 nowMs = QDateTime::currentMSecsSinceEpoch();
    return eventFrame(
        u"exec.approval.requested"_s,
        {{u"id"_s, approvalId},
         {u"createdAtMs"_s, nowMs},
         {u"expiresAtMs"_s, nowMs + lifetimeMs},
         {u"request"_s, QJsonObject {{u"command"_s, command}, {u"agentId"_s, u"main"_s}}}});
}

QString resolvedFrame(const QString &approvalId)
{
    return eventFrame(u"exec.approval.resolved"_s, {{u"id"_s, approvalId}});
}

QString answerFrame(const QString &requestId)
{
    return encode({{u"type"_s, u"res"_s},
                   {u"id"_s, requestId},
                   {u"ok"_s, true},
                   {u"payload"_s, QJsonObject()}});
}

QString frameId(const QString &frame)
{
    return QJsonDocument::fromJson(frame.toUtf8()).object().value("id"_L1).toString();
}

} // namespace bram::bench
