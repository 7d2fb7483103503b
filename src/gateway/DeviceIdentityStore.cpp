// SPDX-License-Identifier: Apache-2.0
#include "gateway/DeviceIdentityStore.h"

#include "system/Preferences.h"
#include "system/SecretStore.h"
#include "system/SystemLog.h"

#include <utility>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
const QString privateKeyKey = u"gateway.device.privateKey"_s;
const QString publicKeyKey = u"gateway.device.publicKey"_s;
const QString deviceIdKey = u"gateway.device.id"_s;
const QString keychainService = u"QX.BrackwenApprovalsMenu.deviceIdentity"_s;
const QString keychainAccountPrivateKey = u"privateKey"_s;
const QString keychainAccountPublicKey = u"publicKey"_s;
const QString keychainAccountDeviceId = u"deviceId"_s;
const QString alreadyValidLine
    = u"[Brackwen] Device identity already valid in Keychain (legacy defaults cleared)"_s;
constexpr auto keychainAccessible = SecretAccessibility::WhenUnlockedThisDeviceOnly;
const QString noLongerInUse = u"the device identity is no longer in use"_s;

std::optional<DeviceIdentity> identityFromStored(const QString &deviceId, const QString &publicKey,
                                                 const QString &privateKeyText)
{
    const auto privateKey = privateKeyFromText(privateKeyText);
    return privateKey ? validatedIdentity(deviceId, publicKey, *privateKey) : std::nullopt;
}
} // namespace

DeviceIdentityStore::DeviceIdentityStore(SecretStore &secrets, Preferences &preferences,
                                         SystemLog &log)
    : m_secrets(secrets)
    , m_preferences(preferences)
    , m_log(log)
{
}

QCoro::Task<std::expected<DeviceIdentity, Error>> DeviceIdentityStore::loadOrCreate()
{
    if (m_isStopped) {
        co_return std::unexpected(Error {noLongerInUse});
    }
    if (m_isLoading) {
        co_return co_await joinRunning();
    }
    m_isLoading = true;
    const Result result = co_await loadOrCreateAlone();
    m_isLoading = false;
    for (const auto &waiting : std::exchange(m_waiting, {})) {
        waiting.answer(result);
    }
    co_return result;
}

/// Not a coroutine, so that no waiting frame holds the source that answers it.
Reply<DeviceIdentityStore::Result> DeviceIdentityStore::joinRunning()
{
    const ReplySource<Result> source(std::unexpected(Error {noLongerInUse}));
    m_waiting.push_back(source);
    return source.reply();
}

QCoro::Task<DeviceIdentityStore::Result> DeviceIdentityStore::loadOrCreateAlone()
{
    const auto stored = co_await readKeychain();
    if (m_isStopped) {
        co_return std::unexpected(Error {noLongerInUse});
    }
    if (stored) {
        // Left behind by a migration that did not get to its end: the key must not stay in a file.
        if (readDefaults() == stored && clearDefaults()) {
            m_log.write(alreadyValidLine);
        }
        co_return *stored;
    }
    if (const auto migrated = co_await migrateLegacyDefaultsToKeychainIfNeeded()) {
        co_return *migrated;
    }
    if (m_isStopped) {
        co_return std::unexpected(Error {noLongerInUse});
    }
    if (const auto legacy = readDefaults()) {
        m_log.write(
            u"[Brackwen] Device identity migration skipped; using legacy defaults identity"_s);
        co_return *legacy;
    }
    const Result made = makeNewIdentity();
    if (!made) {
        co_return made;
    }
    const auto written = co_await writeKeychain(*made);
    std::optional<DeviceIdentity> readBack;
    if (written) {
        const auto again = co_await readKeychain();
        readBack = again;
    }
    if (m_isStopped) {
        co_return std::unexpected(Error {noLongerInUse});
    }
    if (readBack) {
        clearDefaults();
        co_return made;
    }
    if (!written) {
        m_log.write(QString(u"[Brackwen] Device identity keychain save failed: "_s
                            + written.error().description()));
    } else {
        m_log.write(u"[Brackwen] Device identity keychain verification failed after create; "
                    "using defaults fallback"_s);
    }
    writeDefaults(*made);
    co_return made;
}

QCoro::Task<std::optional<DeviceIdentity>>
DeviceIdentityStore::migrateLegacyDefaultsToKeychainIfNeeded()
{
    const auto legacy = readDefaults();
    if (!legacy) {
        co_return std::nullopt;
    }
    if (const auto stored = co_await readKeychain();
        stored && stored->deviceId == legacy->deviceId) {
        if (clearDefaults()) {
            m_log.write(alreadyValidLine);
        }
        co_return stored;
    }
    if (m_isStopped) {
        co_return std::nullopt;
    }
    if (const auto written = co_await writeKeychain(*legacy); !written) {
        m_log.write(QString(u"[Brackwen] Device identity migration failed: "_s
                            + written.error().description()));
        co_return std::nullopt;
    }
    if (const auto stored = co_await readKeychain();
        stored && stored->deviceId == legacy->deviceId) {
        if (clearDefaults()) {
            m_log.write(
                u"[Brackwen] Device identity migrated to Keychain (legacy defaults cleared)"_s);
        }
        co_return stored;
    }
    m_log.write(
        u"[Brackwen] Device identity migration verification failed; keeping legacy defaults"_s);
    co_return std::nullopt;
}

QCoro::Task<std::optional<DeviceIdentity>> DeviceIdentityStore::readKeychain()
{
    // One item missing or unreadable is enough: no further question to a keyring that may ask the
    // operator each time.
    const auto deviceId = co_await m_secrets.get(keychainService, keychainAccountDeviceId);
    if (!deviceId || !*deviceId) {
        co_return std::nullopt;
    }
    const auto publicKey = co_await m_secrets.get(keychainService, keychainAccountPublicKey);
    if (!publicKey || !*publicKey) {
        co_return std::nullopt;
    }
    const auto privateKey = co_await m_secrets.get(keychainService, keychainAccountPrivateKey);
    if (!privateKey || !*privateKey) {
        co_return std::nullopt;
    }
    co_return identityFromStored(**deviceId, **publicKey, **privateKey);
}

QCoro::Task<std::expected<void, KeychainError>>
DeviceIdentityStore::writeKeychain(DeviceIdentity identity)
{
    const auto privateKey
        = co_await m_secrets.set(keychainService, keychainAccountPrivateKey,
                                 privateKeyToText(identity.privateKeyRaw), keychainAccessible);
    if (!privateKey) {
        co_return privateKey;
    }
    const auto publicKey = co_await m_secrets.set(keychainService, keychainAccountPublicKey,
                                                  identity.publicKeyBase64Url, keychainAccessible);
    if (!publicKey) {
        co_return publicKey;
    }
    co_return co_await m_secrets.set(keychainService, keychainAccountDeviceId, identity.deviceId,
                                     keychainAccessible);
}

std::optional<DeviceIdentity> DeviceIdentityStore::readDefaults() const
{
    const auto deviceId = m_preferences.text(deviceIdKey);
    const auto publicKey = m_preferences.text(publicKeyKey);
    const auto privateKey = m_preferences.text(privateKeyKey);
    if (!deviceId || !publicKey || !privateKey) {
        return std::nullopt;
    }
    return identityFromStored(*deviceId, *publicKey, *privateKey);
}

void DeviceIdentityStore::writeDefaults(const DeviceIdentity &identity)
{
    m_preferences.setText(privateKeyKey, privateKeyToText(identity.privateKeyRaw));
    m_preferences.setText(publicKeyKey, identity.publicKeyBase64Url);
    m_preferences.setText(deviceIdKey, identity.deviceId);
    savePreferences();
}

bool DeviceIdentityStore::clearDefaults()
{
    m_preferences.remove(privateKeyKey);
    m_preferences.remove(publicKeyKey);
    m_preferences.remove(deviceIdKey);
    return savePreferences();
}

/// At once: an identity that a crash loses, or a private key that it leaves behind, is worse than a
/// small write.
bool DeviceIdentityStore::savePreferences()
{
    const bool isSaved = m_preferences.save();
    if (!isSaved) {
        m_log.write(u"[Brackwen] Device identity: the preferences could not be written; the change "
                    "lasts until the program ends"_s);
    }
    return isSaved;
}

} // namespace bram
