// SPDX-License-Identifier: Apache-2.0
#include "monitor/MonitorFixture.h"

#include <QElapsedTimer>
#include <QThread>

#include <ctime>

using namespace bram;
using namespace bram::test;

namespace
{

/// A popup whose answers a test gives, also late ones.
class TestPopup final : public ApprovalPopup
{
public:
    void present(const ApprovalItem &item, Completion completion) override
    {
        shown.append(item.approvalId);
        completions.append(std::move(completion));
        ++onScreen;
    }
    void dismiss() override { onScreen = 0; }

    QStringList shown;
    QList<Completion> completions;
    int onScreen = 0;
};

class PopupOrder : public MonitorFixture
{
protected:
    PopupOrder() { ports.popup = &popup; }
    TestPopup popup;
};

} // namespace

TEST_F(PopupOrder, OneAtATimeInOrderOfArrivalAndClosingDecidesNothing)
{
    makeConnectedCore();
    request(item("first"));
    request(item("second"));
    EXPECT_EQ(popup.shown, QStringList(QStringLiteral("first")));

    popup.completions.takeFirst()(std::nullopt);
    EXPECT_EQ(popup.shown.last(), QStringLiteral("second"));
    EXPECT_EQ(board().displayItems().first().approvalId, QStringLiteral("second"));
    EXPECT_EQ(board().menuBadgeCount(), 2);

    popup.completions.takeFirst()(ApprovalDecision::Deny);
    ASSERT_TRUE(waitSettled(1));
    EXPECT_EQ(received.size(), 1);
    EXPECT_EQ(received.first().approvalId, QStringLiteral("second"));
    // The one that was closed is not asked about again, but stays listed.
    EXPECT_EQ(popup.shown.size(), 2);
    EXPECT_EQ(board().menuBadgeCount(), 1);
}

TEST_F(PopupOrder, RequestDecidedElsewhereLeavesThePopupAndALateAnswerIsNotTakenForTheNext)
{
    makeConnectedCore();
    request(item("gone"));
    request(item("next"));
    gateway.resolveElsewhere(QStringLiteral("gone"));
    ASSERT_TRUE(waitUntil([this] { return popup.shown.size() == 2; }));

    popup.completions.first()(std::nullopt);
    ASSERT_TRUE(board().activePopupItem().has_value());
    EXPECT_EQ(board().activePopupItem()->approvalId, QStringLiteral("next"));
    EXPECT_EQ(popup.shown.size(), 2);
}

TEST_F(PopupOrder, AnAnswerToAnOlderFormOfTheRequestDoesNotCount)
{
    makeConnectedCore();
    request(item("a", "ls"));
    auto changed = item("a", "rm -rf /");
    monitor().handleGatewayEvent(ApprovalRequested {changed});
    ASSERT_EQ(popup.completions.size(), 2);
    EXPECT_EQ(board().activePopupItem(), changed);
    popup.completions.first()(ApprovalDecision::AllowOnce);
    EXPECT_TRUE(board().activePopupItem().has_value());
    popup.completions.last()(ApprovalDecision::Deny);
    ASSERT_TRUE(waitSettled(1));
    ASSERT_EQ(received.size(), 1);
    EXPECT_EQ(received.first().decision, ApprovalDecision::Deny);
}

TEST_F(PopupOrder, TheSameAnnouncedAgainLeavesThePopupAlone)
{
    makeConnectedCore();
    const auto first = item("a", "ls");
    request(first);
    monitor().handleGatewayEvent(ApprovalRequested {first});
    EXPECT_EQ(popup.shown.size(), 1);
    auto longer = first;
    longer.expiresAtMs = clock.current + 60'000;
    monitor().handleGatewayEvent(ApprovalRequested {longer});
    EXPECT_EQ(popup.shown.size(), 2);
}

TEST_F(PopupOrder, WhatFellOffEveryListIsRememberedForAWhile)
{
    makeCore();
    QStringList forgotten;
    QObject::connect(&board(), &ApprovalBoard::requestForgotten, &monitor(),
                     [&](const QString &id) { forgotten.append(id); });
    const auto requestAndClose = [this](int serial) {
        monitor().handleGatewayEvent(
            ApprovalRequested {item(QByteArray::number(serial).constData())});
        if (!popup.completions.isEmpty()) {
            std::exchange(popup.completions, {}).last()(std::nullopt);
        }
    };
    constexpr int kept = int(PendingApprovals::maxItems + RecentIds::maxIds);
    for (int i = 0; i < kept; ++i) {
        requestAndClose(i);
    }
    requestAndClose(0);
    EXPECT_EQ(popup.shown.size(), kept) << "not asked about again";
    EXPECT_THAT(forgotten, testing::IsEmpty());
    requestAndClose(kept);
    EXPECT_EQ(forgotten, QStringList(QStringLiteral("1")));
    requestAndClose(1);
    EXPECT_EQ(popup.shown.last(), QStringLiteral("1"));
}

TEST_F(PopupOrder, DenyingAllTakesThePopupAwayAndDeniesEverythingOnce)
{
    makeConnectedCore();
    request(item("a"));
    request(item("b"));
    monitor().decisions().denyAllPendingAndDismissPopups();
    EXPECT_EQ(popup.onScreen, 0);
    ASSERT_TRUE(waitSettled(2));
    EXPECT_EQ(received.size(), 2);
    EXPECT_EQ(board().activity().size(), 1);
    EXPECT_EQ(board().activity().first().action, ActivityAction::DenyAllPending);
    EXPECT_EQ(board().activity().first().detail, QStringLiteral("count=2"));
}

TEST_F(PopupOrder, NotificationStaysAsLongAsTheRequestStandsInSomeList)
{
    class Notifier final : public ApprovalNotifier
    {
    public:
        void schedule(const ApprovalItem &item) override { shown.append(item.approvalId); }
        void update(const ApprovalItem &) override { }
        void updateTimes(const ApprovalItem &) override { }
        void withdraw(const QString &approvalId) override { shown.removeOne(approvalId); }
        QStringList shown;
    } notifier;
    ports.notifier = &notifier;
    makeCore();
    const auto requested = [this](const QString &id) {
        monitor().handleGatewayEvent(ApprovalRequested {item(qPrintable(id))});
    };
    requested(QStringLiteral("closed"));
    popup.completions.last()(std::nullopt);
    requested(QStringLiteral("on screen"));
    for (int i = 0; i < PendingApprovals::maxItems - 2; ++i) {
        requested(QString::number(i));
    }
    EXPECT_EQ(notifier.shown.size(), 50);
    requested(
        QStringLiteral("one more")); // the closed one falls off the list: nothing shows it any more
    EXPECT_EQ(notifier.shown.size(), 50);
    EXPECT_FALSE(notifier.shown.contains(QStringLiteral("closed")));
    requested(QStringLiteral("two more")); // the popup still shows the one that falls off now
    EXPECT_TRUE(notifier.shown.contains(QStringLiteral("on screen")));
    popup.completions.last()(std::nullopt);
    EXPECT_FALSE(notifier.shown.contains(QStringLiteral("on screen")));
    // Announced again, it is listed again, but a person is told once.
    requested(QStringLiteral("closed"));
    EXPECT_FALSE(notifier.shown.contains(QStringLiteral("closed")));
}

TEST_F(PopupOrder, AnswerAfterTheBoardIsGoneIsHarmless)
{
    makeConnectedCore();
    request(item("a"));
    const auto late = popup.completions.takeFirst();
    core->monitor().stop();
    ASSERT_TRUE(waitUntil([this] { return core->tasks().running().isEmpty(); }));
    core.reset();
    late(ApprovalDecision::AllowOnce);
    EXPECT_TRUE(received.isEmpty());
}

TEST(PopupQueueBounds, AFloodIsListedButNotQueuedBeyondThem)
{
    ManualClock clock;
    RecordingLog log;
    TestPopup popup;
    ApprovalBoard board(clock, log, {.popup = &popup});
    const auto add = [&](int id, const QString &command) {
        board.add({.approvalId = QString::number(id), .command = command, .agentId = {}});
    };
    const auto end
        = [&](int id) { board.remove(QString::number(id), ApprovalHistoryState::Resolved); };
    const int queued = 1 + int(PopupQueue::maxWaiting);
    for (int i = 0; i < queued + 2 * PendingApprovals::maxItems; ++i) {
        add(i, QStringLiteral("ls"));
    }
    EXPECT_EQ(board.displayItems().size(), queued + PendingApprovals::maxItems);
    EXPECT_EQ(log.lines().filter(QStringLiteral("queue is full")).size(), 1);
    ASSERT_EQ(board.activity().size(), 1);
    EXPECT_EQ(board.activity().first().action, ActivityAction::PopupQueueFull);

    // Taken out from the end, which is where a walk through the queue is longest.
    const std::clock_t begun = std::clock();
    for (int i = queued - 1; i > 0; --i) {
        end(i);
    }
    EXPECT_LT(std::clock() - begun, CLOCKS_PER_SEC);
    end(0);
    EXPECT_EQ(popup.shown.last(), QString::number(queued + PendingApprovals::maxItems))
        << "those left out come, the oldest that is listed first";

    // Few giants are too many, too; one is not.
    board.clearPending();
    const QString giant(PopupQueue::maxWaitingUnits / 2 + 1, u'x');
    for (int i = 0; i < 3; ++i) {
        add(i, giant);
    }
    EXPECT_EQ(board.displayItems().size(), 3);
    EXPECT_EQ(board.activity().size(), 2);
}

TEST(ApprovalBoardSignals, PublishedOncePerTurnAndOnlyOnRealChange)
{
    ManualClock clock;
    RecordingLog log;
    ApprovalBoard board(clock, log, {});
    int lists = 0;
    QList<qsizetype> counts;
    QObject::connect(&board, &ApprovalBoard::displayItemsChanged, &board, [&] { ++lists; });
    QObject::connect(&board, &ApprovalBoard::badgeCountChanged, &board,
                     [&](qsizetype count) { counts.append(count); });
    for (int i = 0; i < 100; ++i) {
        board.add(
            {.approvalId = QString::number(i), .command = QStringLiteral("ls"), .agentId = {}});
    }
    EXPECT_EQ(board.displayItems().size(), 100);
    ASSERT_TRUE(waitUntil([&] { return lists > 0; }));
    EXPECT_EQ(lists, 1);
    EXPECT_EQ(counts, QList<qsizetype>({100}));

    board.add(board.items().first());
    board.add({.approvalId = QStringLiteral("x"), .command = QStringLiteral("ls"), .agentId = {}});
    board.remove(QStringLiteral("x"), ApprovalHistoryState::Canceled);
    bool turned = false;
    QMetaObject::invokeMethod(&board, [&] { turned = true; }, Qt::QueuedConnection);
    ASSERT_TRUE(waitUntil([&] { return turned; }));
    EXPECT_EQ(lists, 1);
}

TEST(ApprovalBoardSignals, APublicationThatTakesLongIsFollowedByARest)
{
    ManualClock clock;
    RecordingLog log;
    ApprovalBoard board(clock, log, {});
    int lists = 0;
    QObject::connect(&board, &ApprovalBoard::displayItemsChanged, &board, [&] {
        ++lists;
        QThread::msleep(20);
    });
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 20; ++i) {
        board.add({.approvalId = QString::number(i), .command = {}, .agentId = {}});
        QCoreApplication::processEvents();
    }
    EXPECT_LE(lists, 1 + timer.elapsed() / 80);
    const int before = lists;
    EXPECT_TRUE(waitUntil([&] { return lists > before; })) << "the last change is published, too";
}
