// SPDX-License-Identifier: Apache-2.0
#include "gateway/GatewaySession.h"

#include "config/StoredSwitch.h"
#include "gateway/GatewayCredentialStore.h"
#include "gateway/GatewayStatus.h"
#include "system/BackgroundTasks.h"

#include <QHostAddress>

#include <chrono>
#include <utility>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr std::chrono::milliseconds keyringNoticeDelay {1000};

bool isWebSocketUrl(const QUrl &url)
{
    const QString scheme = url.scheme().toLower();
    return url.isValid() && (scheme == "ws"_L1 || scheme == "wss"_L1);
}

/// By its name or number: a name other than this one can be made to lead anywhere.
bool isThisMachine(const QString &host)
{
    return host.compare("localhost"_L1, Qt::CaseInsensitive) == 0
        || QHostAddress(host).isLoopback();
}

bool isOpenToListeners(const QUrl &url)
{
    return url.scheme().compare("ws"_L1, Qt::CaseInsensitive) == 0 && !isThisMachine(url.host());
}
} // namespace

GatewaySession::GatewaySession(const Collaborators &collaborators, const Environment &environment)
    : m_collaborators(collaborators)
    , m_environment(environment)
{
    connect(&collaborators.unencryptedGateway, &StoredSwitch::changed, this, [this] {
        if (m_startSerial > 0 && isOpenToListeners(address())) {
            beginStart({});
        }
    });
    connect(&collaborators.client, &GatewayClient::handshakeCompleted, this,
            &GatewaySession::saveWhatWaits);
    connect(&collaborators.client, &GatewayClient::stateChanged, this,
            [this](const GatewayConnectionState &state) {
                if (std::holds_alternative<GatewayDisconnected>(state)) {
                    saveWhatWaits();
                }
            });
    m_keyringNotice.setSingleShot(true);
    m_keyringNotice.setInterval(keyringNoticeDelay);
    connect(&m_keyringNotice, &QTimer::timeout, this,
            [this] { m_collaborators.status.showWaitingForKeyring(); });
}

QCoro::Task<> GatewaySession::migrateLegacyCredentials()
{
    const QPointer self(this);
    if (m_collaborators.credentials.known(m_environment)) {
        m_migratesLater = true;
        co_return;
    }
    m_keyringNotice.start();
    co_await m_collaborators.credentials.migrateLegacyGatewayCredentialsToKeychainIfNeeded();
    if (self) {
        self->m_keyringNotice.stop();
    }
}

void GatewaySession::connectGateway()
{
    m_collaborators.credentials.askAgain();
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
    m_unsaved = reference;
    connectGateway();
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
    m_unsaved = reference;
    beginStart({.firstAttempt = firstAttempt});
    return true;
}

void GatewaySession::stop()
{
    m_isStopped = true;
    ++m_startSerial;
    m_keyringNotice.stop();
    m_collaborators.client.stop();
}

QUrl GatewaySession::address() const
{
    return QUrl(m_environment.trimmed(u"BRACKWEN_GATEWAY_URL"_s).value_or(defaultGatewayUrl),
                QUrl::StrictMode);
}

void GatewaySession::beginStart(Start start)
{
    if (m_isStopped) {
        return;
    }
    start.url = address();
    start.serial = ++m_startSerial;
    auto &status = m_collaborators.status;
    if (!isWebSocketUrl(start.url)) {
        status.setConnection(
            u"Invalid gateway URL: "_s
                + m_environment.trimmed(u"BRACKWEN_GATEWAY_URL"_s).value_or(defaultGatewayUrl),
            IndicatorState::Red);
        return;
    }
    if (isOpenToListeners(start.url) && !m_collaborators.unencryptedGateway.isOn()) {
        m_collaborators.client.stop();
        status.setConnection(u"Not connecting to %1: ws:// is not encrypted, and it is not this "
                             "machine. Use wss://, or allow it in the settings (unencrypted "
                             "gateway)."_s.arg(start.url.host()),
                             IndicatorState::Red);
        return;
    }
    if (const auto known = m_collaborators.credentials.known(m_environment)) {
        if (known->isFromFile) {
            m_unsaved = known->credentials;
        }
        startClient(start, known->credentials);
        return;
    }
    m_keyringNotice.start();
    m_collaborators.tasks.spawn(readKeyringAndStart(this, std::move(start)),
                                u"gateway credentials"_s);
}

QCoro::Task<> GatewaySession::readKeyringAndStart(QPointer<GatewaySession> self, Start start)
{
    const auto credentials = co_await self->m_collaborators.credentials.inKeyring();
    if (self && self->m_startSerial == start.serial) {
        self->startClient(start, credentials);
    }
}

void GatewaySession::startClient(const Start &start, const GatewayCredentials &credentials)
{
    m_keyringNotice.stop();
    auto &status = m_collaborators.status;
    const auto compared = tokenSyncState(credentials, m_collaborators.credentials.reference());
    // That they match is not said before the gateway has taken them.
    if (compared != TokenSyncState::Matching) {
        status.setTokenState(compared);
    } else if (status.lines().tokenState != TokenSyncState::Resynchronised) {
        status.setTokenState(TokenSyncState::Checking);
    }
    m_collaborators.client.start({start.url, credentials}, start.firstAttempt);
}

void GatewaySession::saveWhatWaits()
{
    const bool migratesFirst = std::exchange(m_migratesLater, false);
    auto credentials = std::exchange(m_unsaved, std::nullopt);
    if (migratesFirst || credentials) {
        m_collaborators.tasks.spawn(save(this, migratesFirst, std::move(credentials)),
                                    u"saving of gateway credentials"_s);
    }
}

QCoro::Task<> GatewaySession::save(QPointer<GatewaySession> self, bool migratesFirst,
                                   std::optional<GatewayCredentials> credentials)
{
    auto &store = self->m_collaborators.credentials;
    if (migratesFirst) {
        co_await store.migrateLegacyGatewayCredentialsToKeychainIfNeeded();
    }
    if (self && credentials) {
        co_await store.saveGatewayCredentials(*credentials);
    }
}

} // namespace bram
