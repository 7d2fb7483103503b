// SPDX-License-Identifier: Apache-2.0
#include "app/Core.h"
#include "gateway/FaultySecretStore.h"
#include "practice/PracticeGateway.h"
#include "support/Doubles.h"
#include "support/Waiting.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

using namespace bram;
using namespace bram::test;
using namespace Qt::StringLiterals;

namespace
{

/// The whole program but its front-end, with a gateway and a keyring that can misbehave.
class CoreTest : public testing::Test
{
protected:
    explicit CoreTest(const PracticeGatewayOptions &options = {})
        : gateway(options, clock)
    {
        EXPECT_TRUE(gateway.listen());
    }
    ~CoreTest() override
    {
        if (core) {
            core->stop();
            EXPECT_TRUE(isIdle());
        }
    }

    void configure(const QByteArray &content)
    {
        ASSERT_TRUE(QDir(folder.path()).mkpath(u".brackwen"_s));
        QFile file(folder.filePath(u".brackwen/brackwen.json"_s));
        ASSERT_TRUE(file.open(QFile::WriteOnly));
        file.write(content);
    }
    void makeCore()
    {
        core = std::make_unique<Core>(
            Core::World {.places = Places::ofPractice(folder.path(), gateway.url().toString()),
                         .secrets = secrets,
                         .clock = clock,
                         .log = log,
                         .commandLine = CommandLineUse::Never});
    }
    [[nodiscard]] bool isIdle()
    {
        return waitUntil([this] { return core->tasks().running().isEmpty(); });
    }
    qsizetype attempts() const { return log.lines().count(u"[Brackwen] state connecting"_s); }

    QTemporaryDir folder;
    ManualClock clock;
    RecordingLog log;
    FaultySecretStore secrets;
    PracticeGateway gateway;
    std::unique_ptr<Core> core;
};

class CoreWithStrictGateway : public CoreTest
{
protected:
    CoreWithStrictGateway()
        : CoreTest({.token = u"right"_s})
    {
    }
};

} // namespace

TEST_F(CoreTest, AnUnusableConfigurationFileIsSaidOnceAndAMissingOneNever)
{
    makeCore();
    core->start();
    EXPECT_TRUE(log.lines().filter(u"configuration file"_s).isEmpty());
    core->stop();
    ASSERT_TRUE(isIdle());

    configure("{");
    makeCore();
    core->start();
    ASSERT_TRUE(waitUntil([this] { return gateway.clientCount() == 1; }));
    EXPECT_EQ(log.lines().filter(u"configuration file"_s).size(), 1);
    EXPECT_TRUE(log.lines().first().startsWith(
        u"[Brackwen] configuration file %1/.brackwen/brackwen.json cannot be used: "_s.arg(
            folder.path())));
}

TEST_F(CoreTest, NothingStartsAfterTheStop)
{
    // Credentials to migrate keep the start waiting for the keyring.
    Preferences legacy(folder.filePath(u"preferences.ini"_s));
    legacy.setText(u"gateway.token"_s, u"t"_s);
    ASSERT_TRUE(legacy.save());
    secrets.promptedRead = u"token"_s;
    makeCore();
    core->start();
    ASSERT_TRUE(waitUntil([this] { return secrets.operations.contains(u"get token"_s); }));
    core->stop();
    secrets.promptedRead.clear();
    secrets.endPrompts();
    ASSERT_TRUE(isIdle());
    core->monitor().reconnectGateway();
    ASSERT_TRUE(isIdle());
    // A socket would be opened in the turn after this.
    bool turned = false;
    QTimer::singleShot(0, core->monitor().parent(), [&] { turned = true; });
    ASSERT_TRUE(waitUntil([&] { return turned; }));
    EXPECT_EQ(attempts(), 0);
}

TEST_F(CoreTest, StoppingWhileTheKeyringAsksLeavesNoNewIdentityBehind)
{
    secrets.promptedRead = u"deviceId"_s;
    makeCore();
    core->start();
    ASSERT_TRUE(waitUntil([this] { return secrets.operations.contains(u"get deviceId"_s); }));
    core->stop();
    secrets.readsFail = true;
    secrets.endPrompts();
    ASSERT_TRUE(isIdle());
    EXPECT_FALSE(Preferences(folder.filePath(u"preferences.ini"_s)).text(u"gateway.device.id"_s));
    EXPECT_TRUE(secrets.operations.filter(u"set "_s).isEmpty());
}

TEST_F(CoreTest, ARefusalIsCutAndMaskedWhereverItIsKeptOrShown)
{
    gateway.rejectHandshakes(
        u"unauthorized: token=hunter2 BRACKWEN_X_TOKEN=hunter2 "_s + u"x"_s.repeated(10'000), 1000);
    makeCore();
    core->start();
    ASSERT_TRUE(waitUntil(
        [this] { return !log.lines().filter(u"unauthorized disconnect count="_s).isEmpty(); }));
    EXPECT_FALSE(
        log.lines().filter(u"connect handshake failed: unauthorized: token=["_s).isEmpty());
    QStringList texts = log.lines();
    for (const auto &record : core->audit().records(0)) {
        texts.append(record.note.value_or(QString()));
    }
    const auto &lines = core->status().lines();
    texts += {lines.connectionStatus, lines.remoteApprovalLockReason.value_or(QString())};
    EXPECT_FALSE(texts.filter(u"token=[REDACTED]"_s).isEmpty());
    for (const QString &text : texts) {
        EXPECT_FALSE(text.contains(u"hunter2"_s)) << qPrintable(text);
        EXPECT_LT(text.size(), 4300) << qPrintable(text.left(100));
    }
}

TEST_F(CoreWithStrictGateway, AGatewayThatRefusesEverythingIsAskedWithGrowingWaits)
{
    configure(R"({"gateway":{"auth":{"token":"wrong"}}})");
    makeCore();
    QElapsedTimer time;
    time.start();
    core->start();
    // The second at once, with the token as it now stands in the file.
    ASSERT_TRUE(waitUntil([this] { return attempts() >= 2; }));
    EXPECT_LT(time.elapsed(), 700);
    ASSERT_TRUE(waitUntil([this] { return attempts() >= 3; }));
    EXPECT_GE(time.elapsed(), 800);
    ASSERT_TRUE(waitUntil([&] { return time.hasExpired(3000); }));
    EXPECT_LE(attempts(), 4);
}
