// SPDX-License-Identifier: Apache-2.0
#include "practice/PracticeGateway.h"

#include "practice/HandshakeVerifier.h"
#include "practice/PracticeConnection.h"
#include "system/Clock.h"

#include <QTimer>
#include <QWebSocket>
#include <QWebSocketCorsAuthenticator>
#include <QWebSocketServer>

#include <algorithm>
#include <memory>
#include <utility>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
QJsonObject requestedPayload(const ApprovalItem &item)
{
    QJsonObject request {{u"command"_s, item.command}};
    if (item.agentId) {
        request.insert(u"agentId"_s, *item.agentId);
    }
    return {{u"id"_s, item.approvalId},
            {u"request"_s, request},
            {u"createdAtMs"_s, item.createdAtMs},
            {u"expiresAtMs"_s, item.expiresAtMs}};
}

QJsonObject resolvedPayload(const QString &approvalId)
{
    return {{u"id"_s, approvalId}};
}

auto hasId(const QString &approvalId)
{
    return [approvalId](const ApprovalItem &item) { return item.approvalId == approvalId; };
}

constexpr auto requestedEvent = "exec.approval.requested"_L1;
constexpr auto resolvedEvent = "exec.approval.resolved"_L1;
} // namespace

PracticeGateway::PracticeGateway(PracticeGatewayOptions options, const Clock &clock,
                                 QObject *parent)
    : QObject(parent)
    , m_options(std::move(options))
    , m_clock(clock)
{
}

PracticeGateway::~PracticeGateway()
{
    close();
}

std::expected<void, Error> PracticeGateway::listen()
{
    if (m_server) {
        return {};
    }
    // A new one each time: it takes connections that are half open down with it.
    auto server = std::make_unique<QWebSocketServer>(u"bram-practice-gateway"_s,
                                                     QWebSocketServer::NonSecureMode, this);
    if (!server->listen(QHostAddress::LocalHost, m_options.port)) {
        return std::unexpected(Error {u"cannot listen on 127.0.0.1:%1: %2"_s.arg(
            QString::number(m_options.port), server->errorString())});
    }
    m_options.port = server->serverPort();
    connect(server.get(), &QWebSocketServer::newConnection, this, &PracticeGateway::accept);
    connect(server.get(), &QWebSocketServer::originAuthenticationRequired, this,
            [this](QWebSocketCorsAuthenticator *authenticator) {
                authenticator->setAllowed(isOwnOrigin(authenticator->origin()));
                if (!authenticator->allowed()) {
                    Q_EMIT clientRefused(
                        u"origin not allowed: \"%1\""_s.arg(authenticator->origin()));
                }
            });
    m_server = server.release();
    return {};
}

QUrl PracticeGateway::url() const
{
    if (m_options.port == 0) {
        return {};
    }
    QUrl url;
    url.setScheme(u"ws"_s);
    url.setHost(u"127.0.0.1"_s);
    url.setPort(m_options.port);
    return url;
}

void PracticeGateway::close()
{
    dropClients();
    if (m_server) {
        m_server->close();
        m_server->disconnect(this);
        std::exchange(m_server, nullptr)->deleteLater();
    }
}

void PracticeGateway::dropClients()
{
    for (PracticeConnection *connection : std::exchange(m_connections, {})) {
        connection->drop();
        connection->deleteLater();
    }
}

void PracticeGateway::announce(const ApprovalItem &item)
{
    const auto known = std::ranges::find_if(m_pending, hasId(item.approvalId));
    if (known != m_pending.end()) {
        *known = item;
    } else {
        m_pending.append(item);
    }
    m_resolvedIds.remove(item.approvalId);
    m_expiredIds.remove(item.approvalId);
    broadcast(requestedEvent, requestedPayload(item));
    Q_EMIT announced(item);
}

void PracticeGateway::resolveElsewhere(const QString &approvalId)
{
    settle(approvalId);
    broadcast(resolvedEvent, resolvedPayload(approvalId));
    Q_EMIT resolvedElsewhere(approvalId);
}

QList<ApprovalItem> PracticeGateway::pendingItems()
{
    retireExpired();
    return m_pending;
}

qsizetype PracticeGateway::clientCount() const
{
    return std::ranges::count_if(m_connections, &PracticeConnection::isAuthenticated);
}

void PracticeGateway::setDecisionBehaviour(const DecisionBehaviour &behaviour)
{
    m_behaviour = behaviour;
}

void PracticeGateway::rejectHandshakes(const QString &message, int times)
{
    m_rejection = message;
    m_rejectionsLeft = times;
}

void PracticeGateway::sendRawText(const QString &text)
{
    for (PracticeConnection *connection : std::as_const(m_connections)) {
        connection->sendRawText(text);
    }
}

void PracticeGateway::sendRawBinary(const QByteArray &bytes)
{
    for (PracticeConnection *connection : std::as_const(m_connections)) {
        connection->sendRawBinary(bytes);
    }
}

void PracticeGateway::accept()
{
    while (QWebSocket *socket = m_server ? m_server->nextPendingConnection() : nullptr) {
        auto *connection = new PracticeConnection(socket, this);
        m_connections.append(connection);
        connect(connection, &PracticeConnection::frameReceived, this,
                &PracticeGateway::frameReceived);
        connect(connection, &PracticeConnection::protocolViolated, this,
                &PracticeGateway::clientRefused);
        connect(connection, &PracticeConnection::requestReceived, this,
                [this, connection](const QString &requestId, const QString &method,
                                   const QJsonObject &params) {
                    handleRequest(connection, requestId, method, params);
                });
        connect(connection, &PracticeConnection::closed, this, [this, connection] {
            if (m_connections.removeOne(connection)) {
                connection->deleteLater();
            }
        });
        if (m_options.sendChallenge) {
            connection->challenge();
        }
    }
}

void PracticeGateway::handleRequest(PracticeConnection *connection, const QString &requestId,
                                    const QString &method, const QJsonObject &params)
{
    if (method == "connect"_L1) {
        handleConnect(connection, requestId, params);
    } else if (!connection->isAuthenticated()) {
        connection->answerError(requestId, u"the first request must be connect"_s);
    } else if (method == "exec.approval.resolve"_L1) {
        handleResolve(connection, requestId, params);
    } else {
        connection->answerError(requestId, u"unknown method: %1"_s.arg(method));
    }
}

void PracticeGateway::handleConnect(PracticeConnection *connection, const QString &requestId,
                                    const QJsonObject &params)
{
    std::expected<void, Error> verdict;
    if (connection->isAuthenticated()) {
        verdict = std::unexpected(Error {u"already connected"_s});
    } else if (m_rejectionsLeft > 0) {
        --m_rejectionsLeft;
        verdict = std::unexpected(Error {m_rejection});
    } else {
        verdict = verifyHandshake(params,
                                  {.token = m_options.token,
                                   .password = m_options.password,
                                   .issuedNonce = connection->nonce(),
                                   .requireNonce = m_options.requireNonce});
    }
    if (!verdict) {
        connection->answerError(requestId, verdict.error().message);
        Q_EMIT clientRefused(verdict.error().message);
        return;
    }
    connection->setAuthenticated();
    connection->answer(requestId, {{u"protocol"_s, 3}});
    for (const ApprovalItem &item : pendingItems()) {
        connection->sendEvent(requestedEvent, requestedPayload(item));
    }
    Q_EMIT clientAuthenticated(params);
}

void PracticeGateway::handleResolve(PracticeConnection *connection, const QString &requestId,
                                    const QJsonObject &params)
{
    const QString approvalId = params.value("id"_L1).toString();
    const auto decision = approvalDecisionFromRawText(params.value("decision"_L1).toString());
    if (approvalId.isEmpty() || !decision || params.size() != 2) {
        const QString reason = u"resolve needs exactly an id and a decision"_s;
        connection->answerError(requestId, reason);
        Q_EMIT clientRefused(reason);
        return;
    }
    takeDecision(connection, requestId, {.approvalId = approvalId, .decision = *decision});
}

void PracticeGateway::takeDecision(PracticeConnection *connection, const QString &requestId,
                                   ReceivedDecision received)
{
    switch (m_behaviour.fault) {
    case DecisionFault::None:
    case DecisionFault::ResolvedFirst:
        countDecision(connection, requestId, received);
        return;
    case DecisionFault::Delay:
        QTimer::singleShot(m_behaviour.delayMs, connection,
                           [this, connection, requestId, received] {
                               countDecision(connection, requestId, received);
                           });
        return;
    case DecisionFault::AnswerError:
        refuseDecision(connection, requestId, received, m_behaviour.text);
        return;
    case DecisionFault::DropSocket:
        connection->drop();
        break;
    case DecisionFault::NeverAnswer:
        break;
    }
    received.outcome = PracticeAnswer::Unanswered;
    Q_EMIT decisionReceived(received);
}

void PracticeGateway::countDecision(PracticeConnection *connection, const QString &requestId,
                                    const ReceivedDecision &received)
{
    if (const auto reason = whyNotPending(received.approvalId)) {
        refuseDecision(connection, requestId, received, *reason);
        return;
    }
    settle(received.approvalId);
    const bool resolvedFirst = m_behaviour.fault == DecisionFault::ResolvedFirst;
    if (resolvedFirst) {
        broadcast(resolvedEvent, resolvedPayload(received.approvalId));
    }
    connection->answer(requestId, {});
    if (!resolvedFirst) {
        broadcast(resolvedEvent, resolvedPayload(received.approvalId));
    }
    Q_EMIT decisionReceived(received);
}

void PracticeGateway::refuseDecision(PracticeConnection *connection, const QString &requestId,
                                     ReceivedDecision received, const QString &message)
{
    connection->answerError(requestId, message);
    received.outcome = PracticeAnswer::Refused;
    received.refusal = message;
    Q_EMIT decisionReceived(received);
}

void PracticeGateway::settle(const QString &approvalId)
{
    if (m_pending.removeIf(hasId(approvalId)) > 0) {
        m_resolvedIds.insert(approvalId);
    }
}

void PracticeGateway::retireExpired()
{
    const qint64 nowMs = m_clock.nowMs();
    m_pending.removeIf([this, nowMs](const ApprovalItem &item) {
        if (!isApprovalExpired(item, nowMs)) {
            return false;
        }
        m_expiredIds.insert(item.approvalId);
        return true;
    });
}

std::optional<QString> PracticeGateway::whyNotPending(const QString &approvalId)
{
    retireExpired();
    if (std::ranges::any_of(m_pending, hasId(approvalId))) {
        return std::nullopt;
    }
    if (m_resolvedIds.contains(approvalId)) {
        return u"approval already resolved"_s;
    }
    if (m_expiredIds.contains(approvalId)) {
        return u"approval not pending (expired)"_s;
    }
    return u"unknown approval id"_s;
}

void PracticeGateway::broadcast(const QString &event, const QJsonObject &payload)
{
    for (PracticeConnection *connection : std::as_const(m_connections)) {
        if (connection->isAuthenticated()) {
            connection->sendEvent(event, payload);
        }
    }
}

bool PracticeGateway::isOwnOrigin(const QString &origin) const
{
    const QString port = QString::number(m_options.port);
    return origin == u"http://127.0.0.1:%1"_s.arg(port)
        || origin == u"http://localhost:%1"_s.arg(port);
}

} // namespace bram
