// SPDX-License-Identifier: Apache-2.0
#include "gateway/GatewayStatus.h"
#include "monitor/MonitorFixture.h"

using namespace bram;
using namespace bram::test;
using testing::ElementsAre;
using Kind = DecisionOutcome::Kind;

namespace
{
class Decision : public MonitorFixture
{
};
} // namespace

TEST_F(Decision, EachReachesTheGatewayAndTheRecord)
{
    struct Case {
        ApprovalDecision decision;
        ApprovalHistoryState state;
        ActivityAction action;
        qint64 ApprovalMetrics::*counter;
    };
    const std::vector<Case> cases {
        {ApprovalDecision::AllowOnce, ApprovalHistoryState::AllowOnce, ActivityAction::AllowOnce,
         &ApprovalMetrics::allowOnceCount},
        {ApprovalDecision::Deny, ApprovalHistoryState::Deny, ActivityAction::Deny,
         &ApprovalMetrics::denyCount},
        {ApprovalDecision::AllowAlways, ApprovalHistoryState::AllowAlways,
         ActivityAction::AllowAlways, &ApprovalMetrics::allowAlwaysCount},
    };
    makeConnectedCore();
    for (const auto &[decision, state, action, counter] : cases) {
        const QString id = QStringLiteral("id-") + rawText(decision);
        request(item(qPrintable(id), "sudo make install"));
        clock.current += 250;
        decide(qPrintable(id), decision);
        ASSERT_TRUE(waitSettled(received.size() + 1));

        EXPECT_EQ(received.last().approvalId, id);
        EXPECT_EQ(received.last().decision, decision);
        EXPECT_EQ(settled.last().outcome.kind, Kind::Confirmed);
        EXPECT_EQ(board().find(id), nullptr);
        EXPECT_EQ(board().history().first().state, state);
        EXPECT_EQ(board().activity().first().action, action);
        EXPECT_EQ(board().activity().first().detail, QStringLiteral("sudo … [app-local]"));
        EXPECT_EQ(monitor().metrics().*counter, 1);

        const auto record = core->audit().records(0).last();
        EXPECT_EQ(record.kind, AuditKind::approvalResolved);
        EXPECT_EQ(record.decision, rawText(decision));
        EXPECT_EQ(record.risk, QStringLiteral("high"));
        EXPECT_EQ(record.latencyMs, 250);
        EXPECT_EQ(record.agentId, QStringLiteral("main"));
        EXPECT_EQ(record.commandPreview, QStringLiteral("sudo …"));
    }
    EXPECT_THAT(log.lines().filter(QStringLiteral("[BrackwenState] reason=approval.resolved")),
                testing::IsEmpty())
        << "the state has changed by what was decided here";
    EXPECT_THAT(
        auditKinds(),
        ElementsAre("approval_requested", "approval_decision_requested", "approval_resolved",
                    "approval_requested", "approval_decision_requested", "approval_resolved",
                    "approval_requested", "approval_decision_requested", "approval_resolved"));
}

TEST_F(Decision, TheFirstOfTwoWinsAndTheSecondIsRecorded)
{
    makeConnectedCore();
    request(item("a"));
    decide("a", ApprovalDecision::Deny);
    decide("a", ApprovalDecision::AllowAlways);
    ASSERT_TRUE(waitSettled(2));
    EXPECT_EQ(settled.first().outcome.kind, Kind::IgnoredDuplicate);
    EXPECT_EQ(settled.first().decision, ApprovalDecision::AllowAlways);
    ASSERT_EQ(received.size(), 1);
    EXPECT_EQ(received.first().decision, ApprovalDecision::Deny);
    EXPECT_THAT(auditKinds(),
                ElementsAre("approval_requested", "approval_decision_requested",
                            "approval_decision_ignored_duplicate", "approval_resolved"));
}

TEST_F(Decision, ExpiredRequestIsNeverSent)
{
    makeConnectedCore();
    auto expiring = item("a");
    expiring.expiresAtMs = clock.current + 1000;
    request(expiring);
    clock.current += 1000;
    decide("a", ApprovalDecision::AllowOnce);
    ASSERT_TRUE(waitSettled(1));
    EXPECT_EQ(settled.first().outcome.kind, Kind::Expired);
    EXPECT_EQ(board().history().first().state, ApprovalHistoryState::Canceled);
    EXPECT_TRUE(received.isEmpty());
    const auto record = core->audit().records(0).last();
    EXPECT_EQ(record.kind, AuditKind::approvalExpired);
    EXPECT_EQ(record.note, QStringLiteral("expiredAtMs=%1").arg(expiring.expiresAtMs));
}

TEST_F(Decision, UnknownIdTextsMeanResolvedElsewhereOthersKeepTheRequest)
{
    struct Case {
        const char *text;
        Kind kind;
    };
    const std::vector<Case> cases {
        {"Unknown Approval ID", Kind::ResolvedElsewhere},
        {"error: APPROVAL NOT FOUND (x)", Kind::ResolvedElsewhere},
        {"approval already resolved", Kind::ResolvedElsewhere},
        {"request is not pending", Kind::ResolvedElsewhere},
        {"database is locked", Kind::Failed},
    };
    makeConnectedCore();
    int serial = 0;
    for (const auto &[text, kind] : cases) {
        const QByteArray id = "id" + QByteArray::number(++serial);
        request(item(id.constData()));
        gateway.setDecisionBehaviour(
            {.fault = DecisionFault::AnswerError, .text = QString::fromUtf8(text)});
        decide(id.constData(), ApprovalDecision::AllowOnce);
        ASSERT_TRUE(waitSettled(serial));
        EXPECT_EQ(settled.last().outcome.kind, kind) << text;
        EXPECT_EQ(board().find(QString::fromUtf8(id)) == nullptr, kind == Kind::ResolvedElsewhere);
    }
    EXPECT_EQ(settled.last().outcome.message, QStringLiteral("database is locked"));
    EXPECT_EQ(monitor().metrics().unknownApprovalCount, 4);
    EXPECT_EQ(monitor().metrics().externalResolvedCount, 4);
    EXPECT_EQ(monitor().gatewayStatus().lines().connectionStatus,
              QStringLiteral("Resolve failed: database is locked"));
    EXPECT_EQ(core->audit().records(0).last().kind, AuditKind::approvalResolveFailed);

    gateway.setDecisionBehaviour({});
    decide("id5", ApprovalDecision::AllowOnce);
    ASSERT_TRUE(waitSettled(6));
    EXPECT_EQ(settled.last().outcome.kind, Kind::Confirmed);
}

TEST_F(Decision, InFlightWhenTheConnectionDiesEndsAndCanBeTakenAgain)
{
    makeConnectedCore();
    request(item("a"));
    gateway.setDecisionBehaviour({.fault = DecisionFault::DropSocket});
    decide("a", ApprovalDecision::AllowOnce);
    ASSERT_TRUE(waitSettled(1));
    EXPECT_EQ(settled.first().outcome.kind, Kind::Failed);
    EXPECT_EQ(settled.first().outcome.message, QStringLiteral("Gateway not connected"));
    EXPECT_NE(board().find(QStringLiteral("a")), nullptr);

    gateway.setDecisionBehaviour({});
    ASSERT_TRUE(waitUntil([this] {
        return log.lines().count(QStringLiteral("[Brackwen] connect handshake success")) == 2;
    }));
    decide("a", ApprovalDecision::AllowOnce);
    ASSERT_TRUE(waitSettled(2));
    EXPECT_EQ(settled.last().outcome.kind, Kind::Confirmed);
    EXPECT_EQ(board().history().size(), 1);
}

TEST_F(Decision, ResolvedEventBeforeTheReplyLeavesOurDecisionStanding)
{
    makeConnectedCore();
    request(item("a"));
    gateway.setDecisionBehaviour({.fault = DecisionFault::ResolvedFirst});
    decide("a", ApprovalDecision::Deny);
    ASSERT_TRUE(waitSettled(1));
    EXPECT_EQ(settled.first().outcome.kind, Kind::Confirmed);
    EXPECT_EQ(board().history().size(), 1);
    EXPECT_EQ(board().history().first().state, ApprovalHistoryState::Deny);
    EXPECT_TRUE(board().items().isEmpty());
}

TEST_F(Decision, BulkDecidesExactlyWhatWasListedAndKeepsOneActivityRow)
{
    makeConnectedCore();
    for (const char *id : {"a", "b", "c"}) {
        request(item(id));
    }
    monitor().decisions().resolveListed(
        {QStringLiteral("a"), QStringLiteral("c"), QStringLiteral("not-there")},
        ApprovalDecision::AllowOnce);
    ASSERT_TRUE(waitSettled(2));
    EXPECT_EQ(received.size(), 2);
    EXPECT_EQ(board().items().size(), 1);
    EXPECT_EQ(board().items().first().approvalId, QStringLiteral("b"));
    EXPECT_EQ(board().activity().size(), 1);
    EXPECT_EQ(board().activity().first().detail, QStringLiteral("count=2"));
}

TEST_F(Decision, ABulkAllowsNothingThatHasChangedBeforeItsTurn)
{
    makeConnectedCore();
    constexpr int count = 2000; // some 25 ms on a quick machine
    QStringList ids;
    for (int i = 0; i < count; ++i) {
        ids.append(QString::number(i));
        monitor().handleGatewayEvent(ApprovalRequested {item(qPrintable(ids.last()))});
    }
    monitor().decisions().resolveListed(ids, ApprovalDecision::AllowOnce);
    ASSERT_FALSE(monitor().decisions().isResolving(ids.last())) << "that many take several turns";
    monitor().handleGatewayEvent(ApprovalRequested {item(qPrintable(ids.last()), "rm -rf /")});
    ASSERT_TRUE(waitUntil([this] { return monitor().decisions().isIdle(); }));
    const auto last = std::ranges::find(settled, ids.last(), &Settled::approvalId);
    ASSERT_NE(last, settled.end());
    EXPECT_EQ(last->outcome.message, QStringLiteral("the request has changed since it was shown"));
    EXPECT_NE(board().find(ids.last()), nullptr);
    EXPECT_EQ(std::ranges::count(received, ids.last(), &ReceivedDecision::approvalId), 0);
}

TEST_F(Decision, OneThatIsNeverAnsweredCanBeTakenAgainAndALateAnswerCounts)
{
    makeConnectedCore();
    core->client().setDecisionTimeLimit(std::chrono::milliseconds(100));
    request(item("a"));
    gateway.setDecisionBehaviour({.fault = DecisionFault::NeverAnswer});
    decide("a", ApprovalDecision::AllowOnce);
    ASSERT_TRUE(waitSettled(1));
    EXPECT_EQ(settled.first().outcome,
              (DecisionOutcome {Kind::Failed,
                                QStringLiteral("not confirmed: the gateway did not answer")}));
    gateway.setDecisionBehaviour({.fault = DecisionFault::Delay, .delayMs = 400});
    decide("a", ApprovalDecision::Deny);
    ASSERT_TRUE(waitSettled(2));
    EXPECT_EQ(settled.at(1).outcome.kind, Kind::Failed);
    EXPECT_NE(board().find(QStringLiteral("a")), nullptr);
    ASSERT_TRUE(waitSettled(3));
    EXPECT_EQ(settled.at(2).outcome.kind, Kind::Confirmed);
    EXPECT_EQ(settled.at(2).decision, ApprovalDecision::Deny);
    EXPECT_EQ(board().find(QStringLiteral("a")), nullptr);
}

TEST_F(Decision, StoppingEndsADecisionUnderWay)
{
    makeConnectedCore();
    request(item("a"));
    gateway.setDecisionBehaviour({.fault = DecisionFault::NeverAnswer});
    decide("a", ApprovalDecision::AllowOnce);
    ASSERT_TRUE(waitUntil([this] { return received.size() == 1; }));
    monitor().stop();
    ASSERT_TRUE(waitSettled(1));
    EXPECT_EQ(settled.first().outcome.kind, Kind::Failed);
    EXPECT_TRUE(core->tasks().running().isEmpty());
}
