// SPDX-License-Identifier: Apache-2.0
#include "gateway/ConnectionSupervision.h"

#include "audit/AuditLogStore.h"
#include "gateway/GatewaySession.h"
#include "gateway/GatewayStatus.h"
#include "gateway/MaskedReason.h"
#include "system/Clock.h"
#include "system/SystemLog.h"

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
    m_collaborators.status.setConnection(u"Gateway connected"_s, IndicatorState::Green);
    m_collaborators.status.setTokenState(TokenSyncState::Matching);
    m_collaborators.status.unlockRemoteApproval();
    m_autoTokenResyncAttempted = false;
}

void ConnectionSupervision::handleHandshakeCompleted()
{
    m_unauthorizedDisconnectCount = 0;
    m_lastUnauthorizedDisconnectMs.reset();
}

void ConnectionSupervision::onDisconnected(const GatewayDisconnected &state)
{
    const QString &reason = state.reason;
    const QString masked = maskedReason(reason);
    m_auditSource = state.isExercise ? exerciseSource : gatewaySource;
    m_collaborators.log.write(QString(u"[Brackwen] state disconnected reason="_s + masked));
    m_collaborators.status.setConnection(u"Gateway disconnected: "_s + masked, IndicatorState::Red);
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
    status.lockRemoteApproval(masked);
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
