// SPDX-License-Identifier: Apache-2.0
#include "gateway/DeviceIdentityStore.h"

#include "system/BackgroundTasks.h"
#include "system/Preferences.h"
#include "system/SecretStore.h"
#include "system/SystemLog.h"

#include <array>
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
const QString waitingForKeyring = u"waiting for the keyring to be unlocked"_s;

std::optional<DeviceIdentity> identityFromStored(const QString &deviceId, const QString &publicKey,
                                                 const QString &privateKeyText)
{
    const auto privateKey = privateKeyFromText(privateKeyText);
    return privateKey ? validatedIdentity(deviceId, publicKey, *privateKey) : std::nullopt;
}
} // namespace

DeviceIdentityStore::DeviceIdentityStore(SecretStore &secrets, Preferences &preferences,
                                         SystemLog &log, BackgroundTasks &tasks)
    : m_secrets(secrets)
    , m_preferences(preferences)
    , m_log(log)
    , m_tasks(tasks)
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
    if (m_saving) {
        co_return *m_saving;
    }
    const auto stored = co_await readKeychain();
    if (m_isStopped) {
        co_return std::unexpected(Error {noLongerInUse});
    }
    if (stored && *stored) {
        // Left behind by a migration that did not get to its end, or from a time without a keyring: the key
        // must not stay in a file.
        if (readDefaults() && clearDefaults()) {
            m_log.write(alreadyValidLine);
        }
        m_unsaved.reset();
        co_return **stored;
    }
    const auto legacy = readDefaults();
    const bool isHeldBack = !stored && stored.error().isLocked;
    if (isHeldBack && !legacy && !m_unsaved) {
        co_return std::unexpected(Error {waitingForKeyring});
    }
    const Result identity = legacy ? Result(*legacy) : identityWithoutKeychain();
    if (identity && !isHeldBack) {
        m_saving = *identity;
        m_tasks.spawn(save(*identity, legacy.has_value()), u"saving of the device identity"_s);
    }
    co_return identity;
}

DeviceIdentityStore::Result DeviceIdentityStore::identityWithoutKeychain()
{
    if (!m_unsaved) {
        const Result made = makeNewIdentity();
        if (!made) {
            return made;
        }
        m_unsaved = *made;
    }
    return *m_unsaved;
}

QCoro::Task<> DeviceIdentityStore::save(DeviceIdentity identity, bool isLegacy)
{
    if (isLegacy) {
        const bool isMigrated = co_await migrateLegacy(identity);
        if (!isMigrated && !m_isStopped) {
            m_log.write(
                u"[Brackwen] Device identity migration skipped; using legacy defaults identity"_s);
        }
    } else {
        co_await storeNew(identity);
    }
    m_saving.reset();
}

QCoro::Task<bool> DeviceIdentityStore::migrateLegacy(DeviceIdentity legacy)
{
    if (const auto written = co_await writeKeychain(legacy); !written) {
        if (!m_isStopped) {
            m_log.write(QString(u"[Brackwen] Device identity migration failed: "_s
                                + written.error().description()));
        }
        co_return false;
    }
    const auto stored = co_await readKeychain();
    if (m_isStopped) {
        co_return false;
    }
    if (stored && *stored && (*stored)->deviceId == legacy.deviceId) {
        if (clearDefaults()) {
            m_log.write(
                u"[Brackwen] Device identity migrated to Keychain (legacy defaults cleared)"_s);
        }
        co_return true;
    }
    m_log.write(u"[Brackwen] Device identity migration verification failed; keeping legacy "
                "defaults"_s);
    co_return false;
}

QCoro::Task<> DeviceIdentityStore::storeNew(DeviceIdentity made)
{
    const auto written = co_await writeKeychain(made);
    std::expected<std::optional<DeviceIdentity>, KeychainError> readBack;
    if (written) {
        readBack = co_await readKeychain();
    }
    if (m_isStopped) {
        co_return;
    }
    if (readBack && *readBack) {
        clearDefaults();
        m_unsaved.reset();
        co_return;
    }
    if (!written) {
        m_log.write(QString(u"[Brackwen] Device identity keychain save failed: "_s
                            + written.error().description()));
    } else {
        m_log.write(u"[Brackwen] Device identity keychain verification failed after create; "
                    "using defaults fallback"_s);
    }
    const bool isHeldBack
        = written ? !readBack && readBack.error().isLocked : written.error().isLocked;
    if (!isHeldBack) {
        writeDefaults(made);
        m_unsaved.reset();
    }
}

QCoro::Task<std::expected<std::optional<DeviceIdentity>, KeychainError>>
DeviceIdentityStore::readKeychain()
{
    // One after the other, and no further than needed: a keyring that is locked could ask the
    // operator each time.
    std::array<QString, 3> texts;
    const std::array accounts {keychainAccountDeviceId, keychainAccountPublicKey,
                               keychainAccountPrivateKey};
    for (std::size_t i = 0; i < accounts.size(); ++i) {
        const auto stored = co_await m_secrets.get(keychainService, accounts.at(i));
        if (!stored) {
            co_return std::unexpected(stored.error());
        }
        if (!*stored) {
            co_return std::nullopt;
        }
        texts.at(i) = **stored;
    }
    co_return identityFromStored(texts[0], texts[1], texts[2]);
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
