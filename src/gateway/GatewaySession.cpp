// SPDX-License-Identifier: Apache-2.0
#include "gateway/GatewaySession.h"

#include "gateway/GatewayCredentialStore.h"
#include "gateway/GatewayStatus.h"
#include "system/BackgroundTasks.h"

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
bool isWebSocketUrl(const QUrl &url)
{
    const QString scheme = url.scheme().toLower();
    return url.isValid() && (scheme == "ws"_L1 || scheme == "wss"_L1);
}
} // namespace

GatewaySession::GatewaySession(const Collaborators &collaborators, const Environment &environment)
    : m_collaborators(collaborators)
    , m_environment(environment)
{
}

QCoro::Task<> GatewaySession::migrateLegacyCredentials()
{
    return m_collaborators.credentials.migrateLegacyGatewayCredentialsToKeychainIfNeeded();
}

void GatewaySession::connectGateway()
{
    beginStart({});
}

bool GatewaySession::reloadGatewayTokenFromConfig()
{
    const auto reference = m_collaborators.credentials.reference();
    auto &status = m_collaborators.status;
    if (!reference) {
        status.setConnectionText(
            u"Gateway token reload failed: brackwen.json not readable or token missing"_s);
        status.setTokenState(TokenSyncState::Mismatch);
        return false;
    }
    status.setConnectionText(u"Gateway token reloaded from config. Reconnecting..."_s);
    status.setTokenState(TokenSyncState::Resynchronised);
    beginStart({.toSave = reference});
    return true;
}

bool GatewaySession::resynchroniseToken(GatewayClient::FirstAttempt firstAttempt)
{
    const auto reference = m_collaborators.credentials.reference();
    if (!reference) {
        return false;
    }
    auto &status = m_collaborators.status;
    status.setConnection(u"Gateway auth failed. Reloaded token from config, reconnecting..."_s,
                         IndicatorState::Red);
    status.setTokenState(TokenSyncState::Resynchronised);
    beginStart({.toSave = reference, .firstAttempt = firstAttempt, .updatesTokenLine = false});
    return true;
}

void GatewaySession::stop()
{
    m_isStopped = true;
    ++m_startSerial;
    m_collaborators.client.stop();
}

void GatewaySession::beginStart(Start start)
{
    if (m_isStopped) {
        return;
    }
    const QString urlText
        = m_environment.trimmed(u"BRACKWEN_GATEWAY_URL"_s).value_or(defaultGatewayUrl);
    start.url = QUrl(urlText, QUrl::StrictMode);
    start.serial = ++m_startSerial;
    if (!isWebSocketUrl(start.url)) {
        m_collaborators.status.setConnection(u"Invalid gateway URL: "_s + urlText,
                                             IndicatorState::Red);
        return;
    }
    m_collaborators.tasks.spawn(resolveAndStart(this, std::move(start)), u"gateway credentials"_s);
}

QCoro::Task<> GatewaySession::resolveAndStart(QPointer<GatewaySession> self, Start start)
{
    if (start.toSave) {
        co_await self->m_collaborators.credentials.saveGatewayCredentials(*start.toSave);
        if (!self || self->m_startSerial != start.serial) {
            co_return;
        }
    }
    const auto credentials
        = co_await self->m_collaborators.credentials.gatewayCredentials(self->m_environment);
    if (!self || self->m_startSerial != start.serial) {
        co_return;
    }
    if (start.updatesTokenLine) {
        self->m_collaborators.status.setTokenState(
            tokenSyncState(credentials, self->m_collaborators.credentials.reference()));
    }
    self->m_collaborators.client.start({start.url, credentials}, start.firstAttempt);
}

} // namespace bram
