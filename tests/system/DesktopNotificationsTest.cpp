// SPDX-License-Identifier: Apache-2.0
#include "system/linux/DesktopNotifications.h"
#include "support/Waiting.h"
#include "system/FakeNotificationDaemon.h"

#include <QDBusPendingCallWatcher>

#include <gmock/gmock.h>

using namespace bram;
using namespace bram::test;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;
using Kind = NotificationServiceState::Kind;
using Answers = FakeNotificationDaemon::Answers;

namespace
{

class Notifications : public testing::Test
{
protected:
    explicit Notifications(std::chrono::milliseconds patience = 10s)
        : notifications({.patience = patience})
    {
    }
    void listen(DesktopNotifications &service)
    {
        QObject::connect(&service, &NotificationService::actionInvoked, &service,
                         [this](const QString &tag, const QString &action) {
                             invoked.append(tag + u' ' + action);
                         });
        QObject::connect(&service, &NotificationService::failed, &service,
                         [this](const QString &tag, const QString &reason) {
                             failures.append(tag + u' ' + reason);
                         });
    }
    void startWithDaemon()
    {
        daemon.appear();
        start();
        ASSERT_TRUE(waitForState(Kind::Present));
    }
    void start()
    {
        listen(notifications);
        notifications.start();
    }
    [[nodiscard]] bool waitForState(Kind kind)
    {
        return waitUntil([&] { return notifications.state().kind == kind; });
    }

    static Notification question(const char *tag, const QString &body = u"ls"_s)
    {
        return {.tag = QString::fromUtf8(tag),
                .title = u"Question <1>"_s,
                .body = body,
                .category = u"exec-approval"_s,
                .isUrgent = false,
                .actions = {{u"yes"_s, u"Yes"_s}, {u"no"_s, u"No"_s}}};
    }
    /// Shows it and waits until our side knows its id; gives the id.
    quint32 shown(const char *tag, const QString &body = u"ls"_s)
    {
        const auto before = daemon.shown.keys();
        notifications.show(question(tag, body));
        EXPECT_TRUE(waitUntil([&] { return daemon.shown.size() > before.size(); }));
        settle();
        for (const auto id : daemon.shown.keys()) {
            if (!before.contains(id)) {
                return id;
            }
        }
        return 0;
    }
    /// Waits until all that is on its way in either direction has arrived: the answer to a question put
    /// on the same connections comes behind it.
    void settle()
    {
        for (int i = 0; i < 2; ++i) {
            ask(QDBusConnection::sessionBus(), notificationsName, notificationsPath,
                u"GetCapabilities"_s);
        }
    }
    static void ask(const QDBusConnection &bus, const QString &name, const QString &path,
                    const QString &method)
    {
        const QDBusPendingCallWatcher call(
            bus.asyncCall(QDBusMessage::createMethodCall(name, path, name, method)));
        bool isAnswered = false; // in its turn, behind what has arrived before it
        QObject::connect(&call, &QDBusPendingCallWatcher::finished, &call,
                         [&] { isAnswered = true; });
        EXPECT_TRUE(waitUntil([&] { return isAnswered; }));
    }

    FakeNotificationDaemon daemon;
    DesktopNotifications notifications;
    QStringList invoked;
    QStringList failures;
};

class ImpatientNotifications : public Notifications
{
protected:
    ImpatientNotifications()
        : Notifications(200ms)
    {
    }
};

} // namespace

TEST_F(Notifications, TextIsPlainWhateverTheServiceReads)
{
    const QString body = u"if a < b && c > d; then <b>rm</b> \"x\" \u202e"_s;
    const struct {
        QStringList capabilities;
        QString body;
        bool hasSound;
    } rows[] {
        {{u"body"_s, u"actions"_s}, u"if a < b && c > d; then <b>rm</b> \"x\" ⟨U+202E⟩"_s, false},
        {{u"body"_s, u"body-markup"_s, u"sound"_s},
         u"if a &lt; b &amp;&amp; c &gt; d; then &lt;b&gt;rm&lt;/b&gt; \"x\" ⟨U+202E⟩"_s,
         true},
    };
    for (const auto &row : rows) {
        FakeNotificationDaemon service;
        service.capabilities = row.capabilities;
        service.appear();
        DesktopNotifications client;
        client.start();
        auto sent = question("a", body);
        sent.isUrgent = row.hasSound;
        sent.clickLabel = u"Look"_s;
        client.show(sent);
        ASSERT_TRUE(waitUntil([&] { return !service.shown.isEmpty(); }));
        const auto seen = service.shown.begin().value();
        EXPECT_EQ(seen.title, u"Question <1>"_s);
        EXPECT_EQ(seen.body, row.body);
        EXPECT_EQ(seen.actions,
                  QStringList({u"yes"_s, u"Yes"_s, u"no"_s, u"No"_s, u"default"_s, u"Look"_s}));
        EXPECT_EQ(seen.icon, u"bram"_s);
        EXPECT_EQ(seen.expireTimeout, 0);
        EXPECT_EQ(seen.hints.value(u"desktop-entry"_s), u"bram"_s);
        EXPECT_EQ(seen.hints.value(u"category"_s), u"exec-approval"_s);
        EXPECT_EQ(seen.hints.value(u"urgency"_s),
                  QVariant::fromValue<uchar>(sent.isUrgent ? 2 : 1));
        EXPECT_EQ(seen.hints.contains(u"sound-name"_s), row.hasSound);
    }
}

TEST_F(Notifications, OneForEachTagWhichGoesWhenWithdrawn)
{
    startWithDaemon();
    const auto id = shown("a");
    notifications.update(question("a", u"rm -rf /"_s));
    ASSERT_TRUE(waitUntil([&] { return daemon.closed.contains(id) && daemon.shown.size() == 1; }));
    EXPECT_EQ(daemon.shown.begin()->body, u"rm -rf /"_s);
    const auto newId = daemon.shown.begin().key();
    settle();
    notifications.withdraw(u"a"_s);
    notifications.withdraw(u"a"_s);
    notifications.withdraw(u"never"_s);
    ASSERT_TRUE(waitUntil([&] { return daemon.shown.isEmpty(); }));
    settle();
    EXPECT_THAT(daemon.closed, testing::ElementsAre(id, newId));

    // Withdrawn before the service has said which one it is.
    daemon.answers = Answers::OnDemand;
    notifications.show(question("b"));
    ASSERT_TRUE(waitUntil([&] { return daemon.held.size() == 1; }));
    notifications.withdraw(u"b"_s);
    daemon.answerHeld();
    ASSERT_TRUE(waitUntil([&] { return daemon.closed.size() == 3; }));
    EXPECT_TRUE(daemon.shown.isEmpty());

    // Changed while on its way: the newest form is what stays.
    notifications.show(question("c", u"old"_s));
    ASSERT_TRUE(waitUntil([&] { return daemon.held.size() == 1; }));
    notifications.update(question("c", u"older"_s));
    notifications.update(question("c", u"new"_s));
    daemon.answers = Answers::AtOnce;
    daemon.answerHeld();
    ASSERT_TRUE(waitUntil([&] { return daemon.closed.size() == 4 && !daemon.shown.isEmpty(); }));
    EXPECT_EQ(daemon.shown.size(), 1);
    EXPECT_EQ(daemon.shown.begin()->body, u"new"_s);
}

TEST_F(Notifications, OnlyAButtonOfWhatIsShownNowCountsAndOnlyOnce)
{
    startWithDaemon();
    const auto a = shown("a");
    const auto b = shown("b");
    const auto c = shown("c");

    daemon.press(a, u"default"_s);
    daemon.press(999, u"yes"_s);
    daemon.dismiss(c);
    daemon.press(c, u"yes"_s);
    auto stranger = QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"stranger"_s);
    auto forged
        = QDBusMessage::createSignal(notificationsPath, notificationsName, u"ActionInvoked"_s);
    forged << a << u"yes"_s;
    stranger.send(forged);
    ask(stranger, u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s, u"GetId"_s);
    settle();
    EXPECT_THAT(invoked, testing::IsEmpty());

    // What is pressed while another text takes its place was meant for the old one.
    daemon.answers = Answers::OnDemand;
    notifications.update(question("b", u"rm -rf /"_s));
    ASSERT_TRUE(waitUntil([&] { return daemon.held.size() == 1; }));
    daemon.press(b, u"yes"_s);
    settle();
    daemon.answerHeld();
    settle();
    daemon.press(a, u"yes"_s);
    daemon.press(a, u"no"_s);
    daemon.press(b, u"yes"_s);
    daemon.press(daemon.lastId, u"no"_s);
    ASSERT_TRUE(waitUntil([&] { return invoked.size() == 2; }));
    settle();
    EXPECT_EQ(invoked, QStringList({u"a yes"_s, u"b no"_s}));
    EXPECT_TRUE(daemon.shown.isEmpty()); // no button stays that would do nothing

    // Closed by hand: it does not come back by itself, but it can be asked anew.
    daemon.answers = Answers::AtOnce;
    notifications.update(question("c", u"other"_s));
    settle();
    EXPECT_TRUE(daemon.shown.isEmpty());
    EXPECT_NE(shown("c"), c);

    int gone = 0;
    QObject::connect(&notifications, &NotificationService::oneHasGone, &notifications,
                     [&] { ++gone; });
    daemon.dismiss(999); // another program's
    auto clickable = question("d");
    clickable.clickLabel = u"Look"_s;
    notifications.show(clickable);
    settle();
    daemon.press(daemon.lastId, u"default"_s);
    ASSERT_TRUE(waitUntil([&] { return invoked.contains(u"d default"_s) && gone == 2; }));
    QDBusConnection::disconnectFromBus(u"stranger"_s);
}

TEST_F(Notifications, ServiceThatDiesTakesItsIdsWithItAndAnotherOneTakesOver)
{
    startWithDaemon();
    EXPECT_EQ(notifications.state().name, u"fake"_s);
    const auto old = shown("old");
    daemon.answers = Answers::OnDemand;
    for (const char *tag : {"on-its-way", "second", "third", "fourth", "waiting"}) {
        notifications.show(question(tag));
    }
    ASSERT_TRUE(waitUntil([&] { return daemon.held.size() == 4; }));
    for (const char *tag : {"second", "third", "fourth"}) {
        notifications.withdraw(QString::fromUtf8(tag));
    }
    daemon.vanish();
    ASSERT_TRUE(waitForState(Kind::Absent));
    EXPECT_EQ(notifications.state().reason, u"the notification service has ended"_s);
    EXPECT_FALSE(notifications.state().startsOnDemand);
    ASSERT_TRUE(waitUntil([&] { return failures.size() == 2; }));

    notifications.show(question("missed"));
    notifications.show(question("ended"));
    ASSERT_TRUE(waitUntil([&] { return failures.size() == 4; }));
    notifications.withdraw(u"ended"_s);

    FakeNotificationDaemon next;
    next.lastId = 80;
    next.appear();
    ASSERT_TRUE(waitForState(Kind::Present));
    ASSERT_TRUE(waitUntil([&] { return next.shown.size() == 2; }));
    notifications.withdraw(u"old"_s);
    settle();
    // Only what no service had taken.
    EXPECT_EQ(next.shown.size(), 2);
    EXPECT_THAT(next.closed, testing::IsEmpty());
    // An id of the old service is somebody else's now.
    notifications.show(question("old"));
    ASSERT_TRUE(waitUntil([&] { return next.shown.size() == 3; }));
    settle();
    next.press(old, u"no"_s);
    next.press(81, u"yes"_s);
    ASSERT_TRUE(waitUntil([&] { return !invoked.isEmpty(); }));
    EXPECT_EQ(invoked, QStringList(u"waiting yes"_s));
    EXPECT_EQ(failures,
              QStringList({u"on-its-way the notification service has ended"_s,
                           u"waiting the notification service has ended"_s,
                           u"missed no notification service is running"_s,
                           u"ended no notification service is running"_s}));
}

TEST_F(ImpatientNotifications, ServiceThatDoesNotAnswerIsAbsentUntilItDoes)
{
    startWithDaemon();
    daemon.answers = Answers::OnDemand;
    notifications.show(question("a"));
    ASSERT_TRUE(waitForState(Kind::Absent));
    EXPECT_EQ(notifications.state().reason, u"fake does not answer"_s);
    ASSERT_TRUE(waitUntil([&] { return failures.size() == 1; }));
    EXPECT_EQ(failures.first(), u"a fake does not answer"_s);

    daemon.answerHeld();
    ASSERT_TRUE(waitForState(Kind::Present));
    // It is on the screen after all, and we know which it is.
    notifications.withdraw(u"a"_s);
    ASSERT_TRUE(waitUntil([&] { return daemon.closed.size() == 1; }));
    EXPECT_TRUE(daemon.shown.isEmpty());

    // It hangs again, and is ended: one failure is reported once.
    notifications.show(question("b"));
    ASSERT_TRUE(waitUntil([&] { return failures.size() == 2; }));
    daemon.vanish();
    ASSERT_TRUE(waitUntil(
        [&] { return notifications.state().reason == u"the notification service has ended"_s; }));
    notifications.show(question("c"));
    ASSERT_TRUE(waitUntil([&] { return failures.size() >= 3; }));
    EXPECT_EQ(failures.last(), u"c no notification service is running"_s);
    EXPECT_EQ(failures.size(), 3);
}

TEST_F(Notifications, RefusalIsReportedAndLeavesNoOldQuestionBehind)
{
    startWithDaemon();
    const auto id = shown("a");
    daemon.answers = Answers::WithAnError;
    notifications.update(question("a", u"new"_s));
    ASSERT_TRUE(waitUntil([&] { return failures.size() == 1; }));
    EXPECT_EQ(failures.first(), u"a no room, token=abc123"_s);
    ASSERT_TRUE(waitUntil([&] { return daemon.closed.contains(id); }));
    EXPECT_EQ(notifications.state().kind, Kind::Present);

    daemon.answers = Answers::AtOnce;
    EXPECT_NE(shown("a"), 0U);
}

TEST_F(Notifications, DoNotDisturbIsFollowed)
{
    daemon.inhibited = true;
    daemon.appear();
    start();
    ASSERT_TRUE(waitForState(Kind::DoNotDisturb));
    daemon.setInhibited(false);
    ASSERT_TRUE(waitForState(Kind::Present));
    daemon.setInhibited(true);
    ASSERT_TRUE(waitForState(Kind::DoNotDisturb));
    EXPECT_EQ(notifications.state().capabilities, daemon.capabilities);
    // Changed without a word: seen with the next notification.
    daemon.inhibited = false;
    notifications.show(question("a"));
    ASSERT_TRUE(waitForState(Kind::Present));
}

TEST_F(Notifications, FloodGoesAtTheSpeedOfTheService)
{
    startWithDaemon();
    daemon.answers = Answers::OnDemand;
    constexpr int count = 500;
    for (int i = 0; i < count; ++i) {
        notifications.show(question(qPrintable(QString::number(i))));
    }
    ASSERT_TRUE(waitUntil([&] { return !daemon.held.isEmpty(); }));
    settle();
    for (int i = 10; i < count; ++i) {
        notifications.withdraw(QString::number(i));
    }
    ASSERT_TRUE(waitUntil([&] {
        daemon.answerHeld();
        return daemon.shown.size() >= 10;
    }));
    settle();
    EXPECT_EQ(daemon.shown.size(), 10);
    EXPECT_LE(daemon.mostHeld, 4);
    EXPECT_THAT(daemon.closed, testing::IsEmpty());
}

TEST_F(Notifications, WithoutAServiceOrABusEachIsReportedOnce)
{
    start();
    ASSERT_TRUE(waitForState(Kind::Absent));
    EXPECT_EQ(notifications.state().reason, u"no notification service is running"_s);
    notifications.show(question("a"));
    ASSERT_TRUE(waitUntil([&] { return failures.size() == 1; }));

    DesktopNotifications busless({.connectionName = u"no such connection"_s});
    listen(busless);
    busless.show(question("b"));
    EXPECT_EQ(failures.size(), 1);
    busless.start();
    EXPECT_EQ(busless.state().reason, u"there is no session bus"_s);
    ASSERT_TRUE(waitUntil([&] { return failures.size() == 2; }));
    busless.show(question("c"));
    ASSERT_TRUE(waitUntil([&] { return failures.size() == 3; }));
    EXPECT_EQ(failures,
              QStringList({u"a no notification service is running"_s,
                           u"b there is no session bus"_s, u"c there is no session bus"_s}));
}
