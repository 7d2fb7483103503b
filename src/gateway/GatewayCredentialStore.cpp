// SPDX-License-Identifier: Apache-2.0
#include "gateway/GatewayCredentialStore.h"

#include "model/TextRules.h"
#include "system/Preferences.h"
#include "system/SystemLog.h"

#include <QJsonObject>
#include <QJsonValue>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
const QString gatewayKeychainService = u"QX.BrackwenApprovalsMenu.gateway"_s;
const QString gatewayKeychainAccountToken = u"token"_s;
const QString gatewayKeychainAccountPassword = u"password"_s;
const QString gatewayTokenDefaultsKey = u"gateway.token"_s;
const QString gatewayPasswordDefaultsKey = u"gateway.password"_s;
} // namespace

std::optional<GatewayCredentials>
loadGatewayCredentialsFromBrackwenConfig(const BrackwenConfig &config)
{
    for (const QJsonObject &object : config.loadObjects()) {
        const QJsonObject auth = object.value("gateway"_L1).toObject().value("auth"_L1).toObject();
        const GatewayCredentials found {trimmedOrAbsent(auth.value("token"_L1).toString()),
                                        trimmedOrAbsent(auth.value("password"_L1).toString())};
        if (found.token || found.password) {
            return found;
        }
    }
    return std::nullopt;
}

GatewayCredentialStore::GatewayCredentialStore(const BrackwenConfig &config, SecretStore &secrets,
                                               Preferences &preferences, SystemLog &log)
    : m_config(config)
    , m_secrets(secrets)
    , m_preferences(preferences)
    , m_log(log)
{
}

std::optional<GatewayCredentialStore::Known>
GatewayCredentialStore::known(const Environment &environment) const
{
    const GatewayCredentials given {environment.trimmed(u"BRACKWEN_GATEWAY_TOKEN"_s),
                                    environment.trimmed(u"BRACKWEN_GATEWAY_PASSWORD"_s)};
    if (given.token || given.password) {
        return Known {.credentials = given};
    }
    if (const auto configured = reference()) {
        return Known {.credentials = *configured, .isFromFile = true};
    }
    return std::nullopt;
}

QCoro::Task<GatewayCredentials> GatewayCredentialStore::inKeyring()
{
    GatewayCredentials stored;
    stored.token = co_await readItem(gatewayKeychainAccountToken);
    stored.password = co_await readItem(gatewayKeychainAccountPassword);
    co_return stored;
}

QCoro::Task<> GatewayCredentialStore::saveGatewayCredentials(GatewayCredentials credentials)
{
    co_await saveItem(gatewayKeychainAccountToken, trimmedOrAbsent(credentials.token));
    co_await saveItem(gatewayKeychainAccountPassword, trimmedOrAbsent(credentials.password));
}

QCoro::Task<> GatewayCredentialStore::migrateLegacyGatewayCredentialsToKeychainIfNeeded()
{
    const auto token = trimmedOrAbsent(m_preferences.text(gatewayTokenDefaultsKey));
    const auto password = trimmedOrAbsent(m_preferences.text(gatewayPasswordDefaultsKey));
    if (!token && !password) {
        co_return;
    }
    const bool tokenResolved = co_await resolveLegacyItem(gatewayKeychainAccountToken, token);
    const bool passwordResolved
        = co_await resolveLegacyItem(gatewayKeychainAccountPassword, password);
    if (tokenResolved) {
        m_preferences.remove(gatewayTokenDefaultsKey);
    }
    if (passwordResolved) {
        m_preferences.remove(gatewayPasswordDefaultsKey);
    }
    if (!m_preferences.save()) {
        m_log.write(
            u"[Brackwen] Gateway credentials: the preferences could not be written; the change "
            "lasts until the program ends"_s);
    } else if (tokenResolved && passwordResolved) {
        m_log.write(u"[Brackwen] Migrated legacy gateway credentials to Keychain "
                    "(legacy defaults cleared)"_s);
    } else {
        m_log.write(u"[Brackwen] Legacy credential migration partially failed; "
                    "keeping unresolved legacy entries"_s);
    }
}

std::optional<GatewayCredentials> GatewayCredentialStore::reference() const
{
    return loadGatewayCredentialsFromBrackwenConfig(m_config);
}

QCoro::Task<> GatewayCredentialStore::saveItem(QString account, std::optional<QString> value)
{
    std::expected<void, KeychainError> done;
    if (value) {
        done = co_await m_secrets.set(gatewayKeychainService, account, *value,
                                      SecretAccessibility::AfterFirstUnlock);
    } else {
        done = co_await m_secrets.remove(gatewayKeychainService, account);
    }
    if (!done) {
        m_log.write(QString(u"[Brackwen] Keychain save failed: "_s + done.error().description()));
    }
}

QCoro::Task<std::optional<QString>> GatewayCredentialStore::readItem(QString account)
{
    const auto stored = co_await m_secrets.get(gatewayKeychainService, account);
    co_return stored ? trimmedOrAbsent(*stored) : std::nullopt;
}

QCoro::Task<bool> GatewayCredentialStore::resolveLegacyItem(QString account,
                                                            std::optional<QString> legacy)
{
    if (!legacy) {
        co_return true;
    }
    if (const auto stored = co_await readItem(account)) {
        co_return true;
    }
    const auto written = co_await m_secrets.set(gatewayKeychainService, account, *legacy,
                                                SecretAccessibility::AfterFirstUnlock);
    if (!written) {
        m_log.write(QString(u"[Brackwen] Keychain migrate %1 failed: %2"_s.arg(
            account, written.error().description())));
        co_return false;
    }
    const auto readBack = co_await readItem(account);
    co_return readBack.has_value();
}

} // namespace bram
