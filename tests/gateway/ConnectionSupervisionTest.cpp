// SPDX-License-Identifier: Apache-2.0
#include "app/Core.h"
#include "support/Doubles.h"
#include "support/Waiting.h"
#include "system/MemorySecretStore.h"

#include <QDir>
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
    Supervision()
    {
        core = std::make_unique<Core>(Core::World {
            .places = Places::ofPractice(folder.path(), QStringLiteral("ws://127.0.0.1:9")),
            .secrets = secrets,
            .clock = clock,
            .log = log,
        });
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
    void connected() { core->monitor().handleConnectionState(GatewayConnected {}); }
    void lost(const char *reason)
    {
        core->monitor().handleConnectionState(GatewayDisconnected {QString::fromUtf8(reason)});
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
};

} // namespace

TEST_F(Supervision, PlainLossChangesOnlyTheConnectionLine)
{
    connected();
    lost("Connection refused");
    EXPECT_EQ(lines().connectionStatus, QStringLiteral("Gateway disconnected: Connection refused"));
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
    ASSERT_TRUE(waitUntil([this] { return core->tasks().running().isEmpty(); }));
    EXPECT_EQ(bram::test::waitFor(secrets.get(QStringLiteral("QX.BrackwenApprovalsMenu.gateway"),
                                              QStringLiteral("token")))
                  .value(),
              std::optional(QStringLiteral("file-token")));

    // Not counted again before a connection was there.
    lost("connect failed: unauthorized");
    EXPECT_EQ(countLines().size(), 1);

    // What the peer quoted is masked wherever it is kept or shown.
    for (const auto &record : core->audit().records(0)) {
        EXPECT_FALSE(record.note->contains(QStringLiteral("abcdef")));
    }
    EXPECT_TRUE(log.lines().filter(QStringLiteral("abcdef")).isEmpty());

    connected();
    EXPECT_FALSE(lines().remoteApprovalLocked);
    EXPECT_EQ(lines().remoteApprovalLockReason, std::nullopt);
    EXPECT_EQ(lines().tokenState, TokenSyncState::Matching);
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
    ConnectionSupervision::Collaborators none {core->session(), core->status(), core->audit(),
                                               clock, log};
    for (const auto &[gaps, count, token] : cases) {
        ConnectionSupervision supervision(none);
        supervision.handleConnectionState(GatewayConnected {});
        supervision.handleConnectionState(GatewayDisconnected {QStringLiteral("unauthorized")});
        for (const int gap : gaps) {
            clock.current += gap * 1000LL;
            supervision.handleConnectionState(GatewayConnected {});
            supervision.handleConnectionState(GatewayDisconnected {QStringLiteral("unauthorized")});
        }
        EXPECT_EQ(supervision.unauthorizedDisconnectCount(), count);
        EXPECT_EQ(lines().tokenState, token);
        clock.current += 1'000'000;
    }
    // An accepted handshake ends a series, however short the gap.
    ConnectionSupervision supervision(none);
    supervision.handleConnectionState(GatewayDisconnected {QStringLiteral("unauthorized")});
    supervision.handleConnectionState(GatewayConnected {});
    supervision.handleHandshakeCompleted();
    supervision.handleConnectionState(GatewayDisconnected {QStringLiteral("unauthorized")});
    EXPECT_EQ(supervision.unauthorizedDisconnectCount(), 1);
}

TEST(GatewaySession, AddressThatIsNoWebSocketUrlIsSaidAndNothingIsStarted)
{
    for (const char *text : {"not a url", "http://127.0.0.1:1", "ws://[oops"}) {
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
        EXPECT_EQ(lines.connectionStatus,
                  QStringLiteral("Invalid gateway URL: ") + QString::fromUtf8(text));
        EXPECT_EQ(lines.connectionIndicator, IndicatorState::Red);
    }
}
