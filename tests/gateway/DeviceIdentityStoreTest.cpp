// SPDX-License-Identifier: Apache-2.0
#include "gateway/DeviceIdentityStore.h"

#include "gateway/FaultySecretStore.h"
#include "support/Doubles.h"
#include "support/FullDisk.h"
#include "support/Waiting.h"
#include "system/BackgroundTasks.h"
#include "system/Preferences.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace bram
{
namespace
{

using namespace Qt::StringLiterals;

const QString service = u"QX.BrackwenApprovalsMenu.deviceIdentity"_s;

/// The three texts of an identity as they are stored.
struct Stored {
    QString deviceId;
    QString publicKey;
    QString privateKey;

    bool operator==(const Stored &) const = default;
};

Stored storedForm(const DeviceIdentity &identity)
{
    return {identity.deviceId, identity.publicKeyBase64Url,
            privateKeyToText(identity.privateKeyRaw)};
}

class DeviceIdentityStoreTest : public testing::Test
{
protected:
    void putInDefaults(const Stored &stored)
    {
        preferences.setText(u"gateway.device.id"_s, stored.deviceId);
        preferences.setText(u"gateway.device.publicKey"_s, stored.publicKey);
        preferences.setText(u"gateway.device.privateKey"_s, stored.privateKey);
    }
    void putInKeychain(const Stored &stored)
    {
        const auto put = [&](const QString &account, const QString &value) {
            EXPECT_TRUE(test::waitFor(secrets.memory.set(service, account, value,
                                                         SecretAccessibility::AfterFirstUnlock)));
        };
        put(u"deviceId"_s, stored.deviceId);
        put(u"publicKey"_s, stored.publicKey);
        put(u"privateKey"_s, stored.privateKey);
    }
    std::optional<Stored> inDefaults() const
    {
        const Preferences written(path); // from the disk, not from what is still to be written
        const auto id = written.text(u"gateway.device.id"_s);
        const auto publicKey = written.text(u"gateway.device.publicKey"_s);
        const auto privateKey = written.text(u"gateway.device.privateKey"_s);
        EXPECT_EQ(id.has_value(), publicKey.has_value());
        EXPECT_EQ(id.has_value(), privateKey.has_value());
        return id ? std::optional(Stored {*id, *publicKey, *privateKey}) : std::nullopt;
    }
    std::optional<Stored> inKeychain()
    {
        const auto item = [&](const QString &account) {
            return test::waitFor(secrets.memory.get(service, account)).value();
        };
        const auto id = item(u"deviceId"_s);
        const auto publicKey = item(u"publicKey"_s);
        const auto privateKey = item(u"privateKey"_s);
        return id && publicKey && privateKey ? std::optional(Stored {*id, *publicKey, *privateKey})
                                             : std::nullopt;
    }
    DeviceIdentity load()
    {
        const auto identity = test::waitFor(store.loadOrCreate());
        EXPECT_TRUE(identity);
        EXPECT_TRUE(test::waitUntil([this] { return tasks.running().isEmpty(); }));
        return identity.value_or(DeviceIdentity {});
    }

    QTemporaryDir folder;
    QString path = folder.filePath(u"preferences.ini"_s);
    Preferences preferences {path};
    test::FaultySecretStore secrets;
    test::RecordingLog log;
    BackgroundTasks tasks {log};
    DeviceIdentityStore store {secrets, preferences, log, tasks};
    DeviceIdentity mine = *makeNewIdentity();
    DeviceIdentity others = *makeNewIdentity();
};

enum class Is { Absent, Mine, Others, New, Unvalidated };

TEST_F(DeviceIdentityStoreTest, FindsMigratesOrMakesTheIdentity)
{
    using Faults = void (*)(test::FaultySecretStore &);
    const Faults none = [](auto &) { };
    const Faults readsFail = [](auto &faulty) { faulty.readsFail = true; };
    const Faults writesFail = [](auto &faulty) { faulty.writesFail = {u"publicKey"_s}; };
    const Faults forgets = [](auto &faulty) { faulty.forgetsWrites = true; };
    const Faults locked = [](auto &faulty) { faulty.isLocked = true; };
    const QString saveLocked
        = u"[Brackwen] Device identity keychain save failed: the keyring is locked"_s;
    Stored upperCase = storedForm(others);
    upperCase.deviceId = upperCase.deviceId.toUpper();
    // A key whose text has a character that base64url lacks.
    DeviceIdentity slashed;
    do {
        slashed = *makeNewIdentity();
    } while (!storedForm(slashed).privateKey.contains(u'/'));
    Stored base64Url = storedForm(slashed);
    base64Url.privateKey.replace(u'/', u'_');
    const QString already
        = u"[Brackwen] Device identity already valid in Keychain (legacy defaults cleared)"_s;
    const QString migrated
        = u"[Brackwen] Device identity migrated to Keychain (legacy defaults cleared)"_s;
    const QString skipped
        = u"[Brackwen] Device identity migration skipped; using legacy defaults identity"_s;
    const QString migrationFailed
        = u"[Brackwen] Device identity migration failed: "_s + test::FaultySecretStore::errorText;
    const QString migrationUnverified
        = u"[Brackwen] Device identity migration verification failed; keeping legacy defaults"_s;
    const QString saveFailed = u"[Brackwen] Device identity keychain save failed: "_s
        + test::FaultySecretStore::errorText;
    const QString unverified = u"[Brackwen] Device identity keychain verification failed after "
                               "create; using defaults fallback"_s;

    const struct {
        const char *name;
        std::optional<Stored> defaults;
        std::optional<Stored> keychain;
        Faults faults;
        Is result;
        Is defaultsAfter;
        Is keychainAfter;
        QStringList log;
    } cases[] = {
        {"nothing stored", {}, {}, none, Is::New, Is::Absent, Is::New, {}},
        {"in the keychain", {}, storedForm(mine), none, Is::Mine, Is::Absent, Is::Mine, {}},
        {"both the same",
         storedForm(mine),
         storedForm(mine),
         none,
         Is::Mine,
         Is::Absent,
         Is::Mine,
         {already}},
        {"keychain goes before other defaults",
         storedForm(others),
         storedForm(mine),
         none,
         Is::Mine,
         Is::Absent,
         Is::Mine,
         {already}},
        {"locked, legacy",
         storedForm(others),
         storedForm(mine),
         locked,
         Is::Others,
         Is::Others,
         Is::Mine,
         {}},
        {"locked and empty, legacy",
         storedForm(mine),
         {},
         locked,
         Is::Mine,
         Is::Mine,
         Is::Absent,
         {u"[Brackwen] Device identity migration failed: the keyring is locked"_s, skipped}},
        {"locked and empty", {}, {}, locked, Is::New, Is::Absent, Is::Absent, {saveLocked}},
        {"legacy only", storedForm(mine), {}, none, Is::Mine, Is::Absent, Is::Mine, {migrated}},
        {"legacy over an invalid keychain",
         storedForm(mine),
         upperCase,
         none,
         Is::Mine,
         Is::Absent,
         Is::Mine,
         {migrated}},
        {"upper-case id in the keychain", {}, upperCase, none, Is::New, Is::Absent, Is::New, {}},
        {"legacy key in base64url", base64Url, {}, none, Is::New, Is::Absent, Is::New, {}},
        {"legacy, write fails",
         storedForm(mine),
         {},
         writesFail,
         Is::Mine,
         Is::Mine,
         Is::Absent,
         {migrationFailed, skipped}},
        {"legacy, keychain forgets",
         storedForm(mine),
         {},
         forgets,
         Is::Mine,
         Is::Mine,
         Is::Absent,
         {migrationUnverified, skipped}},
        {"legacy, keychain cannot be read",
         storedForm(mine),
         {},
         readsFail,
         Is::Mine,
         Is::Mine,
         Is::Mine,
         {migrationUnverified, skipped}},
        {"nothing, write fails", {}, {}, writesFail, Is::New, Is::New, Is::Absent, {saveFailed}},
        {"nothing, keychain forgets", {}, {}, forgets, Is::New, Is::New, Is::Absent, {unverified}},
        {"nothing, keychain cannot be read",
         {},
         {},
         readsFail,
         Is::New,
         Is::New,
         Is::New,
         {unverified}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        for (const QString &account : {u"deviceId"_s, u"publicKey"_s, u"privateKey"_s}) {
            ASSERT_TRUE(test::waitFor(secrets.memory.remove(service, account)));
        }
        for (const QString &key : {u"id"_s, u"publicKey"_s, u"privateKey"_s}) {
            preferences.remove(u"gateway.device."_s + key);
        }
        if (c.defaults) {
            putInDefaults(*c.defaults);
        }
        if (c.keychain) {
            putInKeychain(*c.keychain);
        }
        secrets.readsFail = false;
        secrets.writesFail.clear();
        secrets.forgetsWrites = false;
        secrets.isLocked = false;
        c.faults(secrets);
        const auto linesBefore = log.lines().size();
        DeviceIdentityStore fresh(secrets, preferences, log, tasks);

        const auto loaded = test::waitFor(fresh.loadOrCreate());
        EXPECT_TRUE(test::waitUntil([this] { return tasks.running().isEmpty(); }));
        ASSERT_TRUE(loaded);
        const DeviceIdentity identity = *loaded;

        const auto kind = [&](const std::optional<Stored> &stored) {
            if (!stored) {
                return Is::Absent;
            }
            if (*stored == storedForm(mine)) {
                return Is::Mine;
            }
            if (*stored == storedForm(others)) {
                return Is::Others;
            }
            const auto key = privateKeyFromText(stored->privateKey);
            const bool isNew
                = key && validatedIdentity(stored->deviceId, stored->publicKey, *key) == identity;
            return isNew ? Is::New : Is::Unvalidated;
        };
        EXPECT_EQ(kind(storedForm(identity)), c.result);
        EXPECT_EQ(kind(inDefaults()), c.defaultsAfter);
        EXPECT_EQ(kind(inKeychain()), c.keychainAfter);
        EXPECT_EQ(log.lines().sliced(linesBefore), c.log);
    }
}

TEST_F(DeviceIdentityStoreTest, HandshakesAtTheSameTimeShareOneIdentity)
{
    auto first = store.loadOrCreate();
    auto second = store.loadOrCreate();
    auto third = store.loadOrCreate();
    EXPECT_FALSE(first.isReady());
    const auto identity = test::waitFor(std::move(first));
    EXPECT_EQ(test::waitFor(std::move(third)), identity);
    EXPECT_EQ(test::waitFor(std::move(second)), identity);
    EXPECT_EQ(load(), *identity);
    EXPECT_EQ(inKeychain(), storedForm(*identity));
}

TEST_F(DeviceIdentityStoreTest, ALockedKeyringIsWaitedForAndAFirstIdentityIsSavedOnceItIsOpen)
{
    secrets.isLocked = true;
    const DeviceIdentity first = load();
    EXPECT_EQ(load(), first) << "the same as long as it is not saved";
    EXPECT_EQ(inDefaults(), std::nullopt);
    secrets.isLocked = false;
    EXPECT_EQ(load(), first);
    EXPECT_EQ(inKeychain(), storedForm(first));

    secrets.isLocked = true;
    secrets.operations.clear();
    DeviceIdentityStore next(secrets, preferences, log, tasks);
    const auto heldBack = test::waitFor(next.loadOrCreate());
    ASSERT_FALSE(heldBack);
    EXPECT_EQ(heldBack.error().message, u"waiting for the keyring to be unlocked"_s);
    EXPECT_EQ(secrets.operations, QStringList {u"get deviceId"_s});
    EXPECT_EQ(inDefaults(), std::nullopt);
}

TEST_F(DeviceIdentityStoreTest, FallbackMovesToTheKeychainOnceThatCanBeUsed)
{
    secrets.writesFail = {u"privateKey"_s};
    const DeviceIdentity identity = load();
    EXPECT_EQ(load(), identity) << "the same at the next attempt";
    EXPECT_EQ(secrets.operations.count(u"set publicKey"_s), 0) << "stops at the first failed write";
    secrets.writesFail.clear();
    secrets.operations.clear();
    secrets.accessibilities.clear();
    EXPECT_EQ(load(), identity);
    EXPECT_EQ(inDefaults(), std::nullopt);
    EXPECT_EQ(inKeychain(), storedForm(identity));
    QStringList writes = secrets.operations.filter(u"set "_s);
    EXPECT_EQ(writes, (QStringList {u"set privateKey"_s, u"set publicKey"_s, u"set deviceId"_s}));
    EXPECT_EQ(secrets.accessibilities,
              QList<SecretAccessibility>(3, SecretAccessibility::WhenUnlockedThisDeviceOnly));
    for (const QString &line : log.lines()) {
        EXPECT_FALSE(line.contains(storedForm(identity).privateKey));
    }
}

TEST_F(DeviceIdentityStoreTest, AKeyringStoppedWhileItAsksIsNotTakenForAnEmptyOne)
{
    for (const QString &asking : {u"deviceId"_s, u"privateKey"_s}) {
        SCOPED_TRACE(asking.toStdString());
        putInKeychain(storedForm(mine));
        DeviceIdentityStore stopped(secrets, preferences, log, tasks);
        secrets.promptedRead = asking;
        secrets.operations.clear();
        auto first = stopped.loadOrCreate();
        auto second = stopped.loadOrCreate();
        ASSERT_TRUE(
            test::waitUntil([&] { return secrets.operations.contains(u"get "_s + asking); }));
        stopped.stop();
        secrets.readsFail = true;
        secrets.endPrompts();
        EXPECT_FALSE(test::waitFor(std::move(first)));
        EXPECT_FALSE(test::waitFor(std::move(second)));
        EXPECT_FALSE(test::waitFor(stopped.loadOrCreate()));
        secrets.readsFail = false;
        EXPECT_EQ(inKeychain(), storedForm(mine));
        EXPECT_FALSE(QFile::exists(path));
    }
}

TEST_F(DeviceIdentityStoreTest, UnwritablePreferencesKeepTheIdentityForTheRun)
{
    secrets.writesFail = {u"privateKey"_s};
    Preferences unwritable(path + u"/below-nothing/preferences.ini"_s);
    QFile obstacle(path);
    ASSERT_TRUE(obstacle.open(QIODevice::WriteOnly));
    DeviceIdentityStore other(secrets, unwritable, log, tasks);
    const auto identity = test::waitFor(other.loadOrCreate());
    ASSERT_TRUE(identity);
    ASSERT_TRUE(test::waitUntil([this] { return tasks.running().isEmpty(); }));
    EXPECT_EQ(test::waitFor(other.loadOrCreate()), identity);
    ASSERT_TRUE(test::waitUntil([this] { return tasks.running().isEmpty(); }));
    const QString unsaved = u"[Brackwen] Device identity: the preferences could not be written; "
                            "the change lasts until the program ends"_s;
    EXPECT_TRUE(log.lines().contains(unsaved));

    // Nor is it claimed that a migration has cleared what is on the disk.
    obstacle.remove();
    putInDefaults(storedForm(mine));
    ASSERT_TRUE(preferences.save());
    secrets.writesFail.clear();
    const auto linesBefore = log.lines().size();
    {
        const test::FullDisk full;
        EXPECT_EQ(load(), mine);
    }
    EXPECT_EQ(log.lines().sliced(linesBefore), QStringList {unsaved});
}

} // namespace
} // namespace bram
