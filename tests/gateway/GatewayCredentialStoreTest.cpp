// SPDX-License-Identifier: Apache-2.0
#include "gateway/GatewayCredentialStore.h"

#include "gateway/FaultySecretStore.h"
#include "support/Doubles.h"
#include "support/FullDisk.h"
#include "support/Waiting.h"
#include "system/Preferences.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace bram
{
namespace
{

using namespace Qt::StringLiterals;

const QString service = u"QX.BrackwenApprovalsMenu.gateway"_s;
const std::optional<QString> none;

class GatewayCredentialStoreTest : public testing::Test
{
protected:
    void writeConfig(const QByteArray &content)
    {
        const QString path = folder.filePath(u"home/.brackwen/brackwen.json"_s);
        if (content.isEmpty()) {
            QFile::remove(path);
            return;
        }
        ASSERT_TRUE(QDir().mkpath(QFileInfo(path).absolutePath()));
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    void setKeychain(const GatewayCredentials &credentials)
    {
        const auto put = [&](const QString &account, const std::optional<QString> &value) {
            EXPECT_TRUE(test::waitFor(secrets.memory.remove(service, account)));
            if (value) {
                EXPECT_TRUE(test::waitFor(secrets.memory.set(
                    service, account, *value, SecretAccessibility::AfterFirstUnlock)));
            }
        };
        put(u"token"_s, credentials.token);
        put(u"password"_s, credentials.password);
    }
    GatewayCredentials keychain()
    {
        return {test::waitFor(secrets.memory.get(service, u"token"_s)).value(),
                test::waitFor(secrets.memory.get(service, u"password"_s)).value()};
    }
    GatewayCredentials load(const QMap<QString, QString> &environment)
    {
        const auto known = store.known(Environment().overriddenBy(environment));
        if (known && known->isFromFile) {
            test::waitFor(store.saveGatewayCredentials(known->credentials));
        }
        return known ? known->credentials : test::waitFor(store.inKeyring());
    }

    QTemporaryDir folder;
    Preferences preferences {folder.filePath(u"preferences.ini"_s)};
    test::FaultySecretStore secrets;
    test::RecordingLog log;
    GatewayCredentialStore store {
        BrackwenConfig({}, {folder.filePath(u"home"_s), folder.filePath(u"second"_s), {}}), secrets,
        preferences, log};
};

TEST_F(GatewayCredentialStoreTest, EnvironmentThenFileThenKeychain)
{
    const QByteArray fileToken = R"({"gateway": {"auth": {"token": " file\n", "password": 7}}})";
    const GatewayCredentials old {u"old"_s, u" oldpw\n"_s};
    const struct {
        const char *name;
        QMap<QString, QString> environment;
        QByteArray config;
        GatewayCredentials expected;
        GatewayCredentials keychainAfter;
    } cases[] = {
        {"token in the environment",
         {{u"BRACKWEN_GATEWAY_TOKEN"_s, u" env\n"_s}},
         fileToken,
         {u"env"_s, none},
         old},
        {"password in the environment",
         {{u"BRACKWEN_GATEWAY_PASSWORD"_s, u"envpw"_s}},
         fileToken,
         {none, u"envpw"_s},
         old},
        {"blank environment",
         {{u"BRACKWEN_GATEWAY_TOKEN"_s, u"   "_s}},
         fileToken,
         {u"file"_s, none},
         {u"file"_s, none}},
        {"file with a password only",
         {},
         R"({"gateway": {"auth": {"password": "pw"}}})",
         {none, u"pw"_s},
         {none, u"pw"_s}},
        {"file with both",
         {},
         R"({"gateway": {"auth": {"token": "t", "password": "pw"}}})",
         {u"t"_s, u"pw"_s},
         {u"t"_s, u"pw"_s}},
        {"file without credentials",
         {},
         R"({"gateway": {"auth": {"token": " "}}})",
         {u"old"_s, u"oldpw"_s},
         old},
        {"file of another shape",
         {},
         R"({"gateway": [{"auth": {"token": "t"}}]})",
         {u"old"_s, u"oldpw"_s},
         old},
        {"no file", {}, "", {u"old"_s, u"oldpw"_s}, old},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        setKeychain(old);
        writeConfig(c.config);
        EXPECT_EQ(load(c.environment), c.expected);
        EXPECT_EQ(keychain(), c.keychainAfter);
    }
    EXPECT_EQ(log.lines(), QStringList {});
}

TEST_F(GatewayCredentialStoreTest, FirstFileWithCredentialsWins)
{
    const QString second = folder.filePath(u"second/.brackwen/brackwen.json"_s);
    ASSERT_TRUE(QDir().mkpath(QFileInfo(second).absolutePath()));
    QFile file(second);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(R"({"gateway": {"auth": {"token": "second"}}})");
    file.close();
    writeConfig(R"({"gateway": {"auth": {}}})");
    EXPECT_EQ(store.reference(), (GatewayCredentials {u"second"_s, none}));
    writeConfig(R"({"gateway": {"auth": {"password": "first"}}})");
    EXPECT_EQ(store.reference(), (GatewayCredentials {none, u"first"_s}));
    writeConfig("{");
    EXPECT_EQ(store.reference(), (GatewayCredentials {u"second"_s, none}));
}

TEST_F(GatewayCredentialStoreTest, KeychainFailuresStopNothing)
{
    const QString failed
        = u"[Brackwen] Keychain save failed: "_s + test::FaultySecretStore::errorText;
    setKeychain({u"old"_s, u"oldpw"_s});
    writeConfig(R"({"gateway": {"auth": {"token": "t"}}})");
    secrets.writesFail = {u"token"_s};
    EXPECT_EQ(load({}), (GatewayCredentials {u"t"_s, none}));
    EXPECT_EQ(log.lines(), QStringList {failed});
    EXPECT_EQ(keychain(), (GatewayCredentials {u"old"_s, none})) << "the other item is still saved";

    writeConfig({});
    secrets.readsFail = true;
    EXPECT_EQ(load({}), GatewayCredentials {});
    EXPECT_EQ(log.lines().size(), 1);
}

TEST_F(GatewayCredentialStoreTest, MigratesWhatEarlierReleasesLeft)
{
    const QString done
        = u"[Brackwen] Migrated legacy gateway credentials to Keychain (legacy defaults cleared)"_s;
    const QString partly = u"[Brackwen] Legacy credential migration partially failed; keeping "
                           "unresolved legacy entries"_s;
    const QString tokenFailed
        = u"[Brackwen] Keychain migrate token failed: "_s + test::FaultySecretStore::errorText;
    const QString passwordFailed
        = u"[Brackwen] Keychain migrate password failed: "_s + test::FaultySecretStore::errorText;
    const struct {
        const char *name;
        GatewayCredentials legacy;
        GatewayCredentials keychain;
        QSet<QString> writesFail;
        bool forgets;
        GatewayCredentials legacyAfter;
        GatewayCredentials keychainAfter;
        QStringList log;
    } cases[] = {
        {"nothing", {}, {u"k"_s, none}, {}, false, {}, {u"k"_s, none}, {}},
        {"blank only", {u" "_s, u""_s}, {}, {}, false, {u" "_s, u""_s}, {}, {}},
        {"both", {u" t "_s, u"p"_s}, {}, {}, false, {}, {u"t"_s, u"p"_s}, {done}},
        {"token only", {u"t"_s, none}, {none, u"k"_s}, {}, false, {}, {u"t"_s, u"k"_s}, {done}},
        {"keychain has its own",
         {u"t"_s, u"p"_s},
         {u"k"_s, none},
         {},
         false,
         {},
         {u"k"_s, u"p"_s},
         {done}},
        {"password cannot be written",
         {u"t"_s, u"p"_s},
         {},
         {u"password"_s},
         false,
         {none, u"p"_s},
         {u"t"_s, none},
         {passwordFailed, partly}},
        {"nothing can be written",
         {u"t"_s, u"p"_s},
         {},
         {u"token"_s, u"password"_s},
         false,
         {u"t"_s, u"p"_s},
         {},
         {tokenFailed, passwordFailed, partly}},
        {"keychain forgets", {none, u"p"_s}, {}, {}, true, {none, u"p"_s}, {}, {partly}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        const auto put = [&](const QString &key, const std::optional<QString> &value) {
            preferences.remove(key);
            if (value) {
                preferences.setText(key, *value);
            }
        };
        put(u"gateway.token"_s, c.legacy.token);
        put(u"gateway.password"_s, c.legacy.password);
        setKeychain(c.keychain);
        secrets.writesFail = c.writesFail;
        secrets.forgetsWrites = c.forgets;
        const auto linesBefore = log.lines().size();

        test::waitFor(store.migrateLegacyGatewayCredentialsToKeychainIfNeeded());

        EXPECT_EQ(preferences.text(u"gateway.token"_s), c.legacyAfter.token);
        EXPECT_EQ(preferences.text(u"gateway.password"_s), c.legacyAfter.password);
        EXPECT_EQ(keychain(), c.keychainAfter);
        EXPECT_EQ(log.lines().sliced(linesBefore), c.log);
    }
    EXPECT_FALSE(secrets.accessibilities.contains(SecretAccessibility::WhenUnlockedThisDeviceOnly));
}

TEST_F(GatewayCredentialStoreTest, MigrationDoesNotClaimToHaveClearedWhatCannotBeWritten)
{
    preferences.setText(u"gateway.token"_s, u"t"_s);
    ASSERT_TRUE(preferences.save());
    {
        const test::FullDisk full;
        test::waitFor(store.migrateLegacyGatewayCredentialsToKeychainIfNeeded());
    }
    EXPECT_EQ(log.lines(),
              QStringList {u"[Brackwen] Gateway credentials: the preferences could not be written; "
                           "the change lasts until the program ends"_s});
}

} // namespace
} // namespace bram
