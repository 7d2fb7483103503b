// SPDX-License-Identifier: Apache-2.0
#include "gateway/ConnectionSupervision.h"

#include "audit/AuditLogStore.h"
#include "gateway/GatewaySession.h"
#include "gateway/GatewayStatus.h"
#include "gateway/MaskedReason.h"
#include "system/Clock.h"
#include "system/SystemLog.h"

#include <QDateTime>
#include <QStringList>

#include <utility>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
/// The longest gap between two refusals of one series, from the previous one to the next.
constexpr qint64 seriesGapMs = 300'000;
constexpr int toleratedRefusals = 2;
constexpr QLatin1StringView gatewaySource("gateway");

/// Deliberately broad: any reason that mentions a token counts.
bool looksLikeAuthenticationFailure(const QString &reason)
{
    const QString lowered = reason.toLower();
    return lowered.contains("unauthorized"_L1) || lowered.contains("token"_L1);
}

/// Where there is no connection, and when it is tried again. A time of day, not what is left until then,
/// which would have to be drawn anew each second.
QString detailOf(const GatewayDisconnected &lost)
{
    QStringList parts;
    if (!lost.address.isEmpty()) {
        parts.append(u'(' + lost.address + u')');
    }
    if (lost.nextTryAtMs > 0) {
        parts.append(u"next try at "_s
                     + QDateTime::fromMSecsSinceEpoch(lost.nextTryAtMs).toString(u"HH:mm:ss"));
    }
    return parts.join(u", "_s);
}
} // namespace

ConnectionSupervision::ConnectionSupervision(const Collaborators &collaborators)
    : m_collaborators(collaborators)
{
}

void ConnectionSupervision::handleConnectionState(const GatewayConnectionState &state)
{
    if (std::holds_alternative<GatewayConnecting>(state)) {
        onConnecting();
    } else if (std::holds_alternative<GatewayConnected>(state)) {
        onConnected();
    } else {
        onDisconnected(std::get<GatewayDisconnected>(state));
    }
}

void ConnectionSupervision::onConnecting()
{
    m_collaborators.log.write(u"[Brackwen] state connecting");
    m_collaborators.status.setConnection(u"Connecting to gateway..."_s, IndicatorState::Yellow);
}

void ConnectionSupervision::onConnected()
{
    m_collaborators.log.write(u"[Brackwen] state connected");
    // Anybody can say something; whether this is our gateway, and takes us, is not known yet.
    m_collaborators.status.setConnection(u"Connecting to gateway..."_s, IndicatorState::Yellow,
                                         u"waiting for the handshake"_s);
    m_autoTokenResyncAttempted = false;
}

void ConnectionSupervision::handleHandshakeCompleted()
{
    auto &status = m_collaborators.status;
    status.setConnection(u"Gateway connected"_s, IndicatorState::Green);
    status.setTokenState(TokenSyncState::Matching);
    status.unlockRemoteApproval();
    m_isLockMadeUp = false;
    m_unauthorizedDisconnectCount = 0;
    m_lastUnauthorizedDisconnectMs.reset();
}

void ConnectionSupervision::endExercise()
{
    if (std::exchange(m_isLockMadeUp, false)) {
        m_collaborators.status.unlockRemoteApproval();
    }
    m_autoTokenResyncAttempted = false;
}

void ConnectionSupervision::handleRefusedMessage(qint64 bytes)
{
    const QString text = u"Gateway sent a message of %1 MiB, which was refused (at most 4)"_s.arg(
        QString::number(static_cast<double>(bytes) / (1024 * 1024), 'f', 1));
    m_collaborators.log.write(QString(u"[Brackwen] "_s + text));
    m_collaborators.status.setConnectionText(text);
}

void ConnectionSupervision::onDisconnected(const GatewayDisconnected &lost)
{
    const QString &reason = lost.reason;
    const QString masked = maskedReason(reason);
    m_auditSource = lost.isExercise ? exerciseSource : gatewaySource;
    m_collaborators.log.write(QString(u"[Brackwen] state disconnected reason="_s + masked));
    m_collaborators.status.setConnection(u"Gateway disconnected: "_s + masked, IndicatorState::Red,
                                         detailOf(lost));
    m_collaborators.audit.append({.timestampMs = m_collaborators.clock.nowMs(),
                                  .kind = AuditKind::gatewayDisconnected,
                                  .source = m_auditSource,
                                  .note = masked});
    if (!m_autoTokenResyncAttempted && looksLikeAuthenticationFailure(reason)) {
        m_autoTokenResyncAttempted = true;
        onAuthenticationFailure(masked);
    }
}

void ConnectionSupervision::onAuthenticationFailure(const QString &masked)
{
    auto &status = m_collaborators.status;
    registerUnauthorizedDisconnect(masked);
    if (const bool isExercise = m_auditSource == exerciseSource;
        !isExercise || !status.lines().remoteApprovalLocked) {
        status.lockRemoteApproval(masked);
        m_isLockMadeUp = isExercise;
    }
    status.setTokenState(TokenSyncState::Mismatch);
    // The first time at once: a token that was renewed in the file shall work at once. After that with
    // growing waits, or a gateway that refuses everything would be asked without a pause.
    m_collaborators.session.resynchroniseToken(m_unauthorizedDisconnectCount > 1
                                                   ? GatewayClient::FirstAttempt::AfterBackOff
                                                   : GatewayClient::FirstAttempt::AtOnce);
    if (m_unauthorizedDisconnectCount > toleratedRefusals) {
        status.setConnection(u"Gateway auth repeatedly failing. Token may be revoked; update "
                             "brackwen.json and reload token."_s,
                             IndicatorState::Red);
        status.setTokenState(TokenSyncState::RepeatedlyFailing);
    }
}

void ConnectionSupervision::registerUnauthorizedDisconnect(const QString &masked)
{
    const qint64 nowMs = m_collaborators.clock.nowMs();
    const bool continuesSeries
        = m_lastUnauthorizedDisconnectMs && nowMs - *m_lastUnauthorizedDisconnectMs <= seriesGapMs;
    m_unauthorizedDisconnectCount = continuesSeries ? m_unauthorizedDisconnectCount + 1 : 1;
    m_lastUnauthorizedDisconnectMs = nowMs;
    m_collaborators.audit.append({.timestampMs = nowMs,
                                  .kind = AuditKind::gatewayAuthFailure,
                                  .source = m_auditSource,
                                  .note = masked});
    m_collaborators.log.write(QString(u"[Brackwen] unauthorized disconnect count="_s
                                      + QString::number(m_unauthorizedDisconnectCount)));
}

} // namespace bram
