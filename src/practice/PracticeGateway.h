// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalDecision.h"
#include "model/ApprovalItem.h"
#include "model/Error.h"

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QSet>
#include <QString>
#include <QUrl>

#include <expected>
#include <optional>

class QWebSocketServer;

namespace bram
{

class Clock;
class PracticeConnection;

/// How the practice gateway is set up.
struct PracticeGatewayOptions {
    quint16 port = 0; ///< 0: any free port, kept over `close` and `listen`
    std::optional<QString> token {}; ///< asked of clients when not blank
    std::optional<QString> password {}; ///< the same
    bool requireNonce = false; ///< refuse a handshake that does not sign the challenge's nonce
    bool sendChallenge = true; ///< false: a gateway of the kind that never challenges
};

/// What happens to a decision that is allowed to be taken.
enum class DecisionFault {
    None, ///< it counts: answer, then announce `exec.approval.resolved`
    ResolvedFirst, ///< it counts: announce, then answer
    Delay, ///< as `None`, `delayMs` later
    NeverAnswer, ///< it does not count and nothing is said
    DropSocket, ///< it does not count and the connection is cut
    AnswerError, ///< it does not count and `text` is the error
};

struct DecisionBehaviour {
    DecisionFault fault = DecisionFault::None;
    int delayMs = 0;
    QString text {};
};

enum class PracticeAnswer {
    Accepted,
    Refused, ///< answered with an error
    Unanswered,
};

/// One decision as the gateway saw it.
struct ReceivedDecision {
    QString approvalId {};
    ApprovalDecision decision = ApprovalDecision::Deny;
    PracticeAnswer outcome = PracticeAnswer::Accepted;
    QString refusal {}; ///< the error text sent; empty unless refused
};

/// A gateway that stands in for the platform's: it speaks the whole protocol on the loopback interface,
/// keeps pending requests, takes decisions and can misbehave on demand. It never executes anything.
/// Main thread only.
class PracticeGateway final : public QObject
{
    Q_OBJECT

public:
    /// The clock must outlive the gateway.
    PracticeGateway(PracticeGatewayOptions options, const Clock &clock, QObject *parent = nullptr);
    ~PracticeGateway() override;

    /// Starts to accept clients; fails when the port is taken. Does nothing when already listening.
    std::expected<void, Error> listen();

    /// Where clients connect to, e.g. "ws://127.0.0.1:43210"; empty before the first `listen`.
    QUrl url() const;

    /// As if the gateway's process were killed and its state kept: no closing handshake, the port is
    /// free. `listen` brings it back on the same port.
    void close();

    /// Cuts every connection and goes on listening.
    void dropClients();

    /// Adds a request and announces it to every client that is let in; clients that come later get it
    /// after their handshake while it is pending. An id that is pending is announced again, as given.
    void announce(const ApprovalItem &item);

    /// The request was decided by somebody else: announces that. An id that is not pending is
    /// announced all the same, as real gateways may.
    void resolveElsewhere(const QString &approvalId);

    /// Requests that are neither decided nor expired, oldest announcement first.
    QList<ApprovalItem> pendingItems();

    /// How many clients are let in.
    qsizetype clientCount() const;

    /// Holds for every decision until set again.
    void setDecisionBehaviour(const DecisionBehaviour &behaviour);

    /// The next `times` handshakes are refused with this text, however good they are.
    void rejectHandshakes(const QString &message, int times = 1);

    /// To every connection, let in or not, exactly as given.
    void sendRawText(const QString &text);
    void sendRawBinary(const QByteArray &bytes);

Q_SIGNALS:
    void frameReceived(const QJsonObject &frame);
    void clientAuthenticated(const QJsonObject &connectParams);
    /// A client was turned away, by its origin, its handshake or a frame that is none.
    void clientRefused(const QString &reason);
    void announced(const bram::ApprovalItem &item);
    void decisionReceived(const bram::ReceivedDecision &decision);
    void resolvedElsewhere(const QString &approvalId);

private:
    void accept();
    void handleRequest(PracticeConnection *connection, const QString &requestId,
                       const QString &method, const QJsonObject &params);
    void handleConnect(PracticeConnection *connection, const QString &requestId,
                       const QJsonObject &params);
    void handleResolve(PracticeConnection *connection, const QString &requestId,
                       const QJsonObject &params);
    void takeDecision(PracticeConnection *connection, const QString &requestId,
                      ReceivedDecision received);
    void countDecision(PracticeConnection *connection, const QString &requestId,
                       const ReceivedDecision &received);
    void refuseDecision(PracticeConnection *connection, const QString &requestId,
                        ReceivedDecision received, const QString &message);
    void settle(const QString &approvalId);
    void retireExpired();
    std::optional<QString> whyNotPending(const QString &approvalId);
    void broadcast(const QString &event, const QJsonObject &payload);
    bool isOwnOrigin(const QString &origin) const;

    PracticeGatewayOptions m_options;
    const Clock &m_clock;
    QWebSocketServer *m_server = nullptr; ///< owned as a child; present while listening
    QList<PracticeConnection *> m_connections; ///< owned as children
    QList<ApprovalItem> m_pending;
    QSet<QString> m_resolvedIds;
    QSet<QString> m_expiredIds;
    DecisionBehaviour m_behaviour;
    QString m_rejection;
    int m_rejectionsLeft = 0;
};

} // namespace bram
