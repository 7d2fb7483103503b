// SPDX-License-Identifier: Apache-2.0
#include "monitor/ExpiryWatch.h"
#include "monitor/MonitorFixture.h"

using namespace bram;
using namespace bram::test;
using namespace Qt::StringLiterals;
using testing::ElementsAre;

namespace
{

class Expiry : public MonitorFixture
{
protected:
    Expiry() { ports.popup = &popup; }

    class Popup final : public ApprovalPopup
    {
    public:
        void present(const ApprovalItem &item, Completion) override
        {
            shown.append(item.approvalId);
        }
        void dismiss() override { ++dismissals; }
        QStringList shown;
        int dismissals = 0;
    } popup;

    ApprovalItem expiringIn(const char *id, qint64 ms) const
    {
        auto expiring = item(id);
        expiring.expiresAtMs = clock.current + ms;
        return expiring;
    }
    void requested(const ApprovalItem &wanted)
    {
        monitor().handleGatewayEvent(ApprovalRequested {wanted});
    }
    bool isGone(const QString &id) { return board().find(id) == nullptr; }
};

} // namespace

TEST_F(Expiry, TakesTheRequestOutWithARecordAndTheNextOneFollows)
{
    makeConnectedCore();
    const auto first = expiringIn("first", 20);
    for (const auto &next :
         {first, expiringIn("second", 20), item("never"), expiringIn("past", 0)}) {
        requested(next);
    }
    EXPECT_EQ(popup.shown, QStringList(u"first"_s));
    ASSERT_TRUE(waitUntil([&] { return isGone(u"past"_s); }));
    EXPECT_FALSE(isGone(u"first"_s));

    clock.current += 20;
    ASSERT_TRUE(waitUntil([&] { return isGone(u"first"_s) && isGone(u"second"_s); }));
    EXPECT_EQ(popup.shown, QStringList({u"first"_s, u"never"_s})) << "no expired one as a new one";
    EXPECT_EQ(popup.dismissals, 1);
    EXPECT_FALSE(isGone(u"never"_s));
    EXPECT_EQ(board().history().last().state, ApprovalHistoryState::Canceled);
    EXPECT_TRUE(settled.isEmpty());
    EXPECT_TRUE(received.isEmpty());
    const auto records = core->audit().records(0);
    EXPECT_THAT(auditKinds(),
                ElementsAre("approval_requested", "approval_requested", "approval_requested",
                            "approval_requested", "approval_expired", "approval_expired",
                            "approval_expired"));
    EXPECT_EQ(records.at(5).approvalId, u"first"_s);
    EXPECT_EQ(records.at(5).note, QString(u"expiredAtMs=%1"_s.arg(first.expiresAtMs)));
    EXPECT_EQ(records.at(5).risk, u"low"_s);
    EXPECT_FALSE(records.at(5).decision.has_value());

    // Our clock may be fast: what was decided elsewhere after all is told and on record, a decision from here stays.
    monitor().handleGatewayEvent(ApprovalResolved {u"second"_s});
    EXPECT_EQ(board().historyRow(u"second"_s)->state, ApprovalHistoryState::Resolved);
    EXPECT_EQ(auditKinds().back(), "approval_resolved_external");
    EXPECT_EQ(core->audit().records(0).last().commandPreview, u"ls …"_s);

    // Announced once more with more time, it is asked about as any other.
    requested(expiringIn("first", 60'000));
    EXPECT_FALSE(isGone(u"first"_s));
}

TEST_F(Expiry, ADecisionMadeInTimeStillCountsAndAFailedOneEndsWithTheTime)
{
    makeConnectedCore();
    for (const char *id : {"decided", "undecided"}) {
        request(expiringIn(id, 20));
    }
    gateway.setDecisionBehaviour({.fault = DecisionFault::NeverAnswer});
    decide("decided", ApprovalDecision::AllowOnce);
    ASSERT_TRUE(waitUntil([&] { return received.size() == 1; }));
    clock.current += 20;
    ASSERT_TRUE(waitUntil([&] { return isGone(u"undecided"_s); }));
    EXPECT_FALSE(isGone(u"decided"_s));
    gateway.dropClients();
    ASSERT_TRUE(waitSettled(1));
    EXPECT_EQ(settled.first().outcome.kind, DecisionOutcome::Kind::Failed);
    ASSERT_TRUE(waitUntil([&] { return isGone(u"decided"_s); }));
    EXPECT_EQ(board().history().last().state, ApprovalHistoryState::Canceled);
}

TEST(ExpiryWatch, FollowsNewExpiriesAndAClockThatIsSet)
{
    ManualClock clock;
    ExpiryWatch watch(clock);
    QStringList expired;
    QObject::connect(&watch, &ExpiryWatch::expired, &watch,
                     [&](const QString &id) { expired.append(id); });
    const auto follow = [&](const QString &id, qint64 expiresAtMs) {
        watch.watch({.approvalId = id, .command = {}, .agentId = {}, .expiresAtMs = expiresAtMs});
    };
    const auto becomes
        = [&](const QStringList &ids) { return waitUntil([&] { return expired == ids; }); };
    follow(u"none"_s, 0);
    follow(u"negative"_s, -5);
    follow(u"endless"_s, std::numeric_limits<qint64>::max());
    follow(u"longer"_s, clock.current + 1);
    follow(u"longer"_s, clock.current + 50'000);
    follow(u"shorter"_s, clock.current + 50'000);
    follow(u"shorter"_s, clock.current + 5);
    follow(u"forgotten"_s, clock.current + 5);
    watch.forget(u"forgotten"_s);
    follow(u"past"_s, clock.current - 5);
    EXPECT_TRUE(expired.isEmpty()) << "never from inside a call";
    ASSERT_TRUE(becomes({u"past"_s}));
    clock.current += 5;
    ASSERT_TRUE(becomes({u"past"_s, u"shorter"_s}));

    clock.current -= 1'000'000; // the timer of the next one ends too early
    follow(u"soon"_s, clock.current + 5);
    clock.current += 5;
    ASSERT_TRUE(becomes({u"past"_s, u"shorter"_s, u"soon"_s}));
    clock.current += 2'000'000; // the timer would end too late
    watch.forget(u"whatever"_s);
    ASSERT_TRUE(becomes({u"past"_s, u"shorter"_s, u"soon"_s, u"longer"_s}));
    watch.clear();
}
