// SPDX-License-Identifier: Apache-2.0
#include "gateway/DeviceIdentityStore.h"
#include "gateway/GatewayCredentialStore.h"
#include "system/BackgroundTasks.h"
#include "system/KeyringSecretStore.h"
#include "system/Preferences.h"

#include "support/Doubles.h"
#include "support/Keyring.h"
#include "support/Waiting.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace bram
{
namespace
{

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

struct Parts {
    QTemporaryDir folder;
    Preferences preferences {folder.filePath(u"preferences.ini"_s)};
    test::RecordingLog log;
    KeyringSecretStore secrets {log, {.notice = 50ms, .operation = 400ms}};
    BackgroundTasks tasks {log};
    DeviceIdentityStore identities {secrets, preferences, log, tasks};
    GatewayCredentialStore credentials {BrackwenConfig({}, {folder.path(), {}, {}}), secrets,
                                        preferences, log};

    DeviceIdentity load()
    {
        const auto loaded = test::waitFor(identities.loadOrCreate());
        EXPECT_TRUE(test::waitUntil([this] { return tasks.running().isEmpty(); }));
        return loaded.value_or(DeviceIdentity {});
    }
    bool hasDefaults() const
    {
        return preferences.text(u"gateway.device.privateKey"_s).has_value();
    }
    void storeInDefaults(const DeviceIdentity &identity)
    {
        preferences.setText(u"gateway.device.id"_s, identity.deviceId);
        preferences.setText(u"gateway.device.publicKey"_s, identity.publicKeyBase64Url);
        preferences.setText(u"gateway.device.privateKey"_s,
                            privateKeyToText(identity.privateKeyRaw));
    }
};

class KeyringIdentity : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(test::keyring::state(), "unlocked") << "run through tests/desktop/with-keyring";
        for (const QString &account : {u"deviceId"_s, u"publicKey"_s, u"privateKey"_s}) {
            ASSERT_TRUE(test::waitFor(
                Parts().secrets.remove(u"QX.BrackwenApprovalsMenu.deviceIdentity"_s, account)));
        }
    }
};

TEST_F(KeyringIdentity, IsMadeOnceAndFoundByTheNextRun)
{
    Parts run;
    const DeviceIdentity identity = run.load();
    EXPECT_EQ(identity.deviceId.size(), 64);
    EXPECT_FALSE(run.hasDefaults());
    EXPECT_EQ(test::keyring::itemCount(), 3);
    Parts next;
    EXPECT_EQ(next.load(), identity);
    EXPECT_EQ(run.log.lines() + next.log.lines(), QStringList {});
}

TEST_F(KeyringIdentity, LegacyOneIsMigrated)
{
    Parts run;
    const DeviceIdentity legacy = *makeNewIdentity();
    run.storeInDefaults(legacy);
    EXPECT_EQ(run.load(), legacy);
    EXPECT_FALSE(run.hasDefaults());
    EXPECT_EQ(run.log.lines(),
              QStringList {
                  u"[Brackwen] Device identity migrated to Keychain (legacy defaults cleared)"_s});
    EXPECT_EQ(Parts().load(), legacy);
}

TEST_F(KeyringIdentity, HungKeyringDelaysOnceAndGivesNoOtherIdentity)
{
    Parts run;
    const DeviceIdentity kept = run.load();
    {
        const test::keyring::Frozen frozen;
        const test::LoopStall stall;
        QElapsedTimer timer;
        timer.start();
        EXPECT_EQ(run.load(), DeviceIdentity());
        EXPECT_EQ(run.load(), DeviceIdentity());
        EXPECT_LT(timer.elapsed(), 1500) << "more than one wait";
        EXPECT_LT(stall.worstMs(), 300);
    }
    EXPECT_FALSE(run.hasDefaults());
    EXPECT_EQ(run.log.lines(),
              QStringList {u"[Brackwen] Waiting for the keyring to be unlocked"_s});
    EXPECT_TRUE(test::waitUntil([&] { return run.load() == kept; }));
}

TEST_F(KeyringIdentity, LockedKeyringGivesNoOtherIdentityAndAFirstOneWaitsInMemory)
{
    Parts run;
    const DeviceIdentity kept = run.load();
    test::keyring::lock();
    EXPECT_EQ(run.load(), DeviceIdentity());
    EXPECT_FALSE(run.hasDefaults());
    test::keyring::unlock();
    EXPECT_EQ(run.load(), kept);

    SetUp();
    Parts first;
    test::keyring::lock();
    const DeviceIdentity made = first.load();
    EXPECT_EQ(made.deviceId.size(), 64);
    EXPECT_EQ(first.load(), made);
    EXPECT_FALSE(first.hasDefaults());
    test::keyring::unlock();
    EXPECT_EQ(first.load(), made);
    EXPECT_EQ(Parts().load(), made);
}

TEST_F(KeyringIdentity, LegacyGatewayCredentialsMoveToTheKeyring)
{
    Parts run;
    run.preferences.setText(u"gateway.token"_s, u"토큰"_s);
    test::waitFor(run.credentials.migrateLegacyGatewayCredentialsToKeychainIfNeeded());
    EXPECT_EQ(run.preferences.text(u"gateway.token"_s), std::nullopt);
    Parts next;
    EXPECT_EQ(test::waitFor(next.credentials.inKeyring()),
              (GatewayCredentials {u"토큰"_s, std::nullopt}));
    test::waitFor(next.credentials.saveGatewayCredentials({}));
    EXPECT_EQ(test::waitFor(run.credentials.inKeyring()), GatewayCredentials {});
    EXPECT_EQ(next.log.lines(), QStringList {});
}

TEST(NoKeyringIdentity, LivesInThePreferences)
{
    ASSERT_TRUE(test::keyring::state().startsWith("no-"))
        << "run through tests/desktop/with-keyring";
    Parts run;
    const DeviceIdentity identity = run.load();
    EXPECT_TRUE(run.hasDefaults());
    ASSERT_EQ(run.log.lines().size(), 1);
    const QString prefix = u"[Brackwen] Device identity keychain save failed: "_s;
    EXPECT_TRUE(run.log.lines().first().startsWith(prefix));
    EXPECT_GT(run.log.lines().first().size(), prefix.size()) << "no reason";

    EXPECT_EQ(run.load(), identity);
    ASSERT_EQ(run.log.lines().size(), 3);
    EXPECT_TRUE(
        run.log.lines().at(1).startsWith(u"[Brackwen] Device identity migration failed: "_s));
    EXPECT_EQ(run.log.lines().at(2),
              u"[Brackwen] Device identity migration skipped; using legacy defaults identity"_s);
}

} // namespace
} // namespace bram
