// SPDX-License-Identifier: Apache-2.0
#include "app/Core.h"
#include "practice/PracticeGateway.h"
#include "support/Doubles.h"
#include "support/Waiting.h"
#include "system/MemorySecretStore.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

using namespace bram;
using namespace bram::test;

namespace
{

/// The supervision with its real surroundings and states fed by hand; no gateway is there.
class Supervision : public testing::Test
{
protected:
    Supervision() { makeCore({}); }
    void makeCore(const QMap<QString, QString> &environment)
    {
        Places places = Places::ofPractice(folder.path(), QStringLiteral("ws://127.0.0.1:9"));
        places.environment = places.environment.overriddenBy(environment);
        core = std::make_unique<Core>(Core::World {
            .places = places,
            .secrets = secrets,
            .clock = clock,
            .log = log,
        });
        supervision = std::make_unique<ConnectionSupervision>(ConnectionSupervision::Collaborators {
            core->session(), core->status(), core->audit(), clock, log});
    }
    ~Supervision() override
    {
        core->monitor().stop();
        EXPECT_TRUE(waitUntil([this] { return core->tasks().running().isEmpty(); }));
    }

    void configureToken(const QByteArray &token)
    {
        QDir(folder.path()).mkpath(QStringLiteral(".brackwen"));
        QFile file(folder.filePath(QStringLiteral(".brackwen/brackwen.json")));
        ASSERT_TRUE(file.open(QFile::WriteOnly));
        file.write(R"({"gateway":{"auth":{"token":")" + token + R"("}}})");
    }
    void spoken() { supervision->handleConnectionState(GatewayConnected {}); }
    void connected()
    {
        spoken();
        supervision->handleHandshakeCompleted();
    }
    void lost(const char *reason)
    {
        supervision->handleConnectionState(GatewayDisconnected {QString::fromUtf8(reason)});
    }
    const GatewayStatus::Lines &lines() { return core->monitor().gatewayStatus().lines(); }
    QStringList countLines()
    {
        return log.lines().filter(QStringLiteral("unauthorized disconnect count="));
    }

    QTemporaryDir folder;
    ManualClock clock;
    RecordingLog log;
    MemorySecretStore secrets;
    std::unique_ptr<Core> core;
    std::unique_ptr<ConnectionSupervision> supervision;
};

} // namespace

TEST_F(Supervision, OnlyTheHandshakeMakesAGoodConnection)
{
    spoken();
    EXPECT_EQ(lines().connectionLine(),
              QStringLiteral("Connecting to gateway... waiting for the handshake"));
    EXPECT_EQ(lines().connectionIndicator, IndicatorState::Yellow);
    EXPECT_EQ(lines().tokenState, TokenSyncState::Checking);
    connected();
    EXPECT_EQ(lines().connectionLine(), QStringLiteral("Gateway connected"));
    EXPECT_EQ(lines().connectionIndicator, IndicatorState::Green);
    EXPECT_EQ(lines().tokenState, TokenSyncState::Matching);
    supervision->handleRefusedMessage(5 * 1024 * 1024);
    EXPECT_EQ(lines().connectionLine(),
              QStringLiteral("Gateway sent a message of 5.0 MiB, which was refused (at most 4)"));
    EXPECT_EQ(lines().connectionIndicator, IndicatorState::Green);
}

TEST_F(Supervision, PlainLossChangesOnlyTheConnectionLine)
{
    connected();
    supervision->handleConnectionState(
        GatewayDisconnected {.reason = QStringLiteral("Connection refused"),
                             .address = QStringLiteral("ws://token.example:1"),
                             .nextTryAtMs = clock.current});
    EXPECT_EQ(lines().connectionStatus, QStringLiteral("Gateway disconnected: Connection refused"));
    EXPECT_THAT(lines().connectionLine().toStdString(),
                testing::MatchesRegex("Gateway disconnected: Connection refused "
                                      "\\(ws://token.example:1\\), next try at ..:..:.."));
    EXPECT_EQ(lines().connectionIndicator, IndicatorState::Red);
    EXPECT_EQ(lines().tokenState, TokenSyncState::Matching);
    EXPECT_FALSE(lines().remoteApprovalLocked);
    const auto records = core->audit().records(0);
    ASSERT_EQ(records.size(), 1);
    EXPECT_EQ(records.first().kind, AuditKind::gatewayDisconnected);
}

TEST_F(Supervision, RefusalLocksRemoteApprovalReloadsOnceAndTheNextConnectionUnlocks)
{
    configureToken("file-token");
    connected();
    lost("connect failed: unauthorized, Bearer abcdef.123");
    EXPECT_TRUE(lines().remoteApprovalLocked);
    EXPECT_EQ(lines().tokenState, TokenSyncState::Resynchronised);
    EXPECT_EQ(lines().connectionStatus,
              QStringLiteral("Gateway auth failed. Reloaded token from config, reconnecting..."));
    // The copy in the keyring is made when the attempt has ended.
    EXPECT_TRUE(waitUntil([this] {
        return bram::test::waitFor(secrets.get(QStringLiteral("QX.BrackwenApprovalsMenu.gateway"),
                                               QStringLiteral("token")))
                   .value()
            == QStringLiteral("file-token");
    }));

    // Not counted again before a connection was there.
    lost("connect failed: unauthorized");
    EXPECT_EQ(countLines().size(), 1);

    // What the peer quoted is masked wherever it is kept or shown.
    for (const auto &record : core->audit().records(0)) {
        EXPECT_FALSE(record.note->contains(QStringLiteral("abcdef")));
    }
    EXPECT_TRUE(log.lines().filter(QStringLiteral("abcdef")).isEmpty());

    spoken();
    EXPECT_TRUE(lines().remoteApprovalLocked) << "anybody can say something";
    connected();
    EXPECT_FALSE(lines().remoteApprovalLocked);
    EXPECT_EQ(lines().remoteApprovalLockReason, std::nullopt);
    EXPECT_EQ(lines().tokenState, TokenSyncState::Matching);
}

TEST_F(Supervision, AReloadThatTheEnvironmentOverridesIsAMismatch)
{
    configureToken("file-token");
    makeCore({{QStringLiteral("BRACKWEN_GATEWAY_TOKEN"), QStringLiteral("other")}});
    connected();
    lost("unauthorized");
    EXPECT_EQ(lines().tokenState, TokenSyncState::Mismatch);
}

TEST_F(Supervision, RefusalWithoutConfigurationKeepsTheMismatch)
{
    connected();
    lost("gateway token expired");
    EXPECT_EQ(lines().tokenState, TokenSyncState::Mismatch);
    EXPECT_TRUE(lines().remoteApprovalLocked);
    EXPECT_EQ(lines().connectionStatus,
              QStringLiteral("Gateway disconnected: gateway token expired"));
}

TEST_F(Supervision, ThirdRefusalWithinFiveMinutesOfThePreviousSaysSo)
{
    struct Case {
        std::vector<int> gapsSeconds; ///< before the second, third, … refusal
        int count;
        TokenSyncState token;
    };
    const std::vector<Case> cases {
        {{100, 100}, 3, TokenSyncState::RepeatedlyFailing},
        {{300, 300}, 3, TokenSyncState::RepeatedlyFailing},
        {{100, 400}, 1, TokenSyncState::Mismatch},
        {{100}, 2, TokenSyncState::Mismatch},
    };
    for (const auto &[gaps, count, token] : cases) {
        spoken();
        lost("unauthorized");
        for (const int gap : gaps) {
            clock.current += gap * 1000LL;
            spoken();
            lost("unauthorized");
        }
        EXPECT_EQ(supervision->unauthorizedDisconnectCount(), count);
        EXPECT_EQ(lines().tokenState, token);
        clock.current += 1'000'000;
    }
    // An accepted handshake ends a series, however short the gap.
    connected();
    lost("unauthorized");
    connected();
    lost("unauthorized");
    EXPECT_EQ(supervision->unauthorizedDisconnectCount(), 1);
}

TEST(GatewaySession, AddressThatIsNotUsedIsSaidAndNothingIsStarted)
{
    const QString openLine = QStringLiteral(
        "Not connecting to %1: ws:// is not encrypted, and it is not this machine. "
        "Use wss://, or allow it in the settings (unencrypted gateway).");
    const struct {
        const char *text;
        QString line;
    } cases[] {
        {"not a url", QStringLiteral("Invalid gateway URL: not a url")},
        {"http://127.0.0.1:1", QStringLiteral("Invalid gateway URL: http://127.0.0.1:1")},
        {"ws://[oops", QStringLiteral("Invalid gateway URL: ws://[oops")},
        {"ws://192.0.2.1:1", openLine.arg(QStringLiteral("192.0.2.1"))},
        {"WS://localhost.example:1", openLine.arg(QStringLiteral("localhost.example"))},
    };
    for (const auto &[text, line] : cases) {
        QTemporaryDir folder;
        ManualClock clock;
        RecordingLog log;
        MemorySecretStore secrets;
        Core core({.places = Places::ofPractice(folder.path(), QString::fromUtf8(text)),
                   .secrets = secrets,
                   .clock = clock,
                   .log = log});
        core.monitor().start();
        ASSERT_TRUE(waitUntil([&] { return core.tasks().running().isEmpty(); }));
        const auto &lines = core.monitor().gatewayStatus().lines();
        EXPECT_EQ(lines.connectionStatus, line);
        EXPECT_EQ(lines.connectionIndicator, IndicatorState::Red);
        if (line.startsWith(QStringLiteral("Not"))) {
            core.unencryptedGateway().setOn(true);
            EXPECT_TRUE(waitUntil([&] { return lines.connectionStatus != line; }));
            core.unencryptedGateway().setOn(false);
            EXPECT_EQ(lines.connectionStatus, line);
            core.session().stop();
        }
    }
}

TEST(GatewaySession, EachRefusalLengthensTheWaitOnce)
{
    QTemporaryDir folder;
    ManualClock clock;
    RecordingLog log;
    MemorySecretStore secrets;
    PracticeGateway gateway({.token = QStringLiteral("right")}, clock);
    ASSERT_TRUE(gateway.listen());
    gateway.rejectHandshakes(QStringLiteral("unauthorized"), 100);
    QDir(folder.path()).mkpath(QStringLiteral(".brackwen"));
    QFile file(folder.filePath(QStringLiteral(".brackwen/brackwen.json")));
    ASSERT_TRUE(file.open(QFile::WriteOnly));
    file.write(R"({"gateway":{"auth":{"token":"wrong"}}})");
    file.close();
    Core core({.places = Places::ofPractice(folder.path(), gateway.url().toString()),
               .secrets = secrets,
               .clock = clock,
               .log = log});
    QElapsedTimer time;
    std::vector<double> attempts;
    QObject::connect(&core.client(), &GatewayClient::stateChanged, &core.client(),
                     [&](const GatewayConnectionState &state) {
                         if (std::holds_alternative<GatewayConnecting>(state)) {
                             attempts.push_back(static_cast<double>(time.elapsed()) / 1000);
                         }
                     });
    time.start();
    core.monitor().start();
    EXPECT_TRUE(waitUntil([&] { return attempts.size() == 4; }));
    core.monitor().stop();
    EXPECT_THAT(attempts,
                testing::ElementsAre(testing::Lt(0.5), testing::Lt(0.6), testing::Gt(0.7),
                                     testing::AllOf(testing::Gt(2.1), testing::Lt(3.2))));
    EXPECT_TRUE(waitUntil([&] { return core.tasks().running().isEmpty(); }));
}
