// SPDX-License-Identifier: Apache-2.0
// The real program on a real desktop against the practice gateway, each in a process of its own: keys and
// clicks come from the X server, the menu is the one the panel gets, notifications are the daemon's.
#include "desktop/ExportedMenu.h"
#include "support/ProgramFixture.h"

#include <QRect>

#include <tuple>

using namespace bram;
using namespace bram::test;
using namespace Qt::StringLiterals;
using testing::Contains;
using testing::Not;

namespace
{

const QString popupTitle = u"승인 요청"_s;

class DesktopRoad : public ProgramFixture
{
protected:
    void SetUp() override
    {
        ProgramFixture::SetUp();
        for (const char *kept :
             {"DISPLAY", "XAUTHORITY", "DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR"}) {
            environment.insert(QString::fromLatin1(kept), qEnvironmentVariable(kept));
        }
        ASSERT_FALSE(qEnvironmentVariableIsEmpty("BRAM_TEST_SESSION"))
            << "needs tests/desktop/session";
    }

    void TearDown() override
    {
        // What a test has ended is there again for the next one.
        run({u"start-tray"_s});
        run({u"start-notifications"_s});
    }

    /// What a command prints; it is waited for while the event loop turns.
    static QString run(const QStringList &command)
    {
        QProcess process;
        process.start(command.constFirst(), command.sliced(1));
        EXPECT_TRUE(waitUntil([&] { return process.state() == QProcess::NotRunning; }))
            << qPrintable(command.join(u' '));
        return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
    }

    /// The visible window with this title, as the X server numbers it; empty when there is none.
    static QString windowTitled(const QString &title)
    {
        return run({u"xdotool"_s, u"search"_s, u"--onlyvisible"_s, u"--name"_s,
                    u'^' + title + u'$'})
            .section(u'\n', 0, 0);
    }
    [[nodiscard]] static bool popupIsThere()
    {
        return waitUntil([] { return !windowTitled(popupTitle).isEmpty(); });
    }
    /// Repeats what takes the popup away, which it does only once the popup has been there for a while.
    template<typename Act>
    [[nodiscard]] static bool popupGoesBy(Act act)
    {
        return waitUntil([&] {
            act();
            return waitUntil([] { return windowTitled(popupTitle).isEmpty(); }, 1200);
        });
    }

    static QRect geometry(const QString &window)
    {
        QMap<QString, int> values;
        for (const QString &line :
             run({u"xdotool"_s, u"getwindowgeometry"_s, u"--shell"_s, window}).split(u'\n')) {
            values.insert(line.section(u'=', 0, 0), line.section(u'=', 1).toInt());
        }
        return {values.value(u"X"_s), values.value(u"Y"_s), values.value(u"WIDTH"_s),
                values.value(u"HEIGHT"_s)};
    }

    /// The popup's rightmost button, "거부".
    static void clickDeny()
    {
        const QRect popup = geometry(windowTitled(popupTitle));
        run({u"xdotool"_s, u"mousemove"_s, QString::number(popup.right() - 40),
             QString::number(popup.bottom() - 30), u"click"_s, u"1"_s});
    }

    static void key(const QString &keys) { run({u"xdotool"_s, u"key"_s, keys}); }

    /// The nth picture of the notification daemon's menu is answered with this entry, once there was time to read.
    static void chooseInNotification(const QString &action)
    {
        std::ignore = waitUntil([] { return false; }, 1500);
        QFile choice(qEnvironmentVariable("BRAM_TEST_SESSION") + u"/notification-choice"_s);
        ASSERT_TRUE(choice.open(QFile::WriteOnly | QFile::Truncate));
        choice.write(action.toUtf8());
        choice.close();
        run({u"dunstctl"_s, u"context"_s});
    }
    static int shownNotifications()
    {
        return run({u"dunstctl"_s, u"count"_s, u"displayed"_s}).toInt();
    }

    /// Repeats what a person may have to repeat: a hand that just moved keeps the popup unarmed.
    template<typename Act>
    [[nodiscard]] static bool decidesBy(ProgramUnderTest &gateway, const QString &decision, Act act)
    {
        for (int attempt = 0; attempt < 8; ++attempt) {
            act();
            if (waitUntil([&] { return gateway.output().contains(decision); }, 1200)) {
                return true;
            }
        }
        return false;
    }
};

} // namespace

TEST_F(DesktopRoad, popupNotificationAndMenuEachTakeADecisionToTheGateway)
{
    auto gateway = startGateway(u"wait-client\n"
                                "request popup-1 main ls -la\n"
                                "wait-decision popup-1\n"
                                "request shortcut-2 main sudo make_all && install\n"
                                "wait-decision shortcut-2\n"
                                "request notice-3 main curl http://localhost/\n"
                                "wait-decision notice-3\n"
                                "request menu-4 main echo a_b & c\n"
                                "wait-decision menu-4\n"_s);
    auto bram = startBram();
    ExportedMenu tray(bram->processId());
    ASSERT_TRUE(tray.waitForItem());

    ASSERT_TRUE(popupIsThere());
    EXPECT_TRUE(decidesBy(*gateway, u"decision popup-1 deny accepted"_s, [] { clickDeny(); }));

    ASSERT_TRUE(popupIsThere());
    EXPECT_TRUE(decidesBy(*gateway, u"decision shortcut-2 allow-always accepted"_s,
                          [] { key(u"ctrl+alt+shift+a"_s); }));

    ASSERT_TRUE(waitUntil([&] { return bram->errors().contains(u"requested id=notice-3"_s); }));
    ASSERT_TRUE(waitUntil([] { return shownNotifications() == 1; }));
    ASSERT_TRUE(decidesBy(*gateway, u"decision notice-3 allow-once accepted"_s,
                          [] { chooseInNotification(u"Allow once"_s); }));
    EXPECT_TRUE(waitUntil(
        [&] { return tray.labels({u"Pending approvals"_s}).join(u'|').contains(u"echo"_s); }));

    // Escape closes the popup and decides nothing; the request stays in the menu.
    ASSERT_TRUE(popupIsThere());
    ASSERT_TRUE(popupGoesBy([] { key(u"Escape"_s); }));
    EXPECT_TRUE(tray.itemProperty(u"ToolTip"_s).isValid());
    ASSERT_TRUE(tray.click({u"Pending approvals (1)"_s, u"main: echo a__b & c"_s, u"Deny"_s}));
    ASSERT_TRUE(gateway->says(u"decision menu-4 deny accepted"_s));
    EXPECT_TRUE(waitUntil(
        [&] { return tray.labels({u"Pending approvals"_s}).contains(u"No pending approvals"_s); }));
    EXPECT_TRUE(waitUntil([] { return shownNotifications() == 0; }));

    ASSERT_TRUE(tray.click({u"Quit"_s}));
    EXPECT_EQ(bram->ends(), 0);
    const auto records = auditLines();
    for (const char *decided :
         {"approval_resolved popup-1 deny", "approval_resolved shortcut-2 allow-always",
          "approval_resolved notice-3 allow-once", "approval_resolved menu-4 deny"}) {
        EXPECT_THAT(records, Contains(decided));
    }
}

TEST_F(DesktopRoad, whatWasMeantForSomethingElseDecidesNothing)
{
    auto gateway = startGateway(u"wait-client\n"
                                "request first-1 main ls -la\n"
                                "wait-decision first-1\n"_s);
    auto bram = startBram();
    ExportedMenu tray(bram->processId());
    ASSERT_TRUE(tray.waitForItem());
    ASSERT_TRUE(popupIsThere());
    // The click and the keys of somebody who was busy with something else.
    clickDeny();
    for (const char *typed : {"Return", "space", "KP_Enter", "y", "ctrl+alt+shift+o", "Return"}) {
        key(QString::fromLatin1(typed));
    }
    ASSERT_FALSE(windowTitled(popupTitle).isEmpty());
    // And, when it has been armed for long, the keys that usually press a button.
    ASSERT_FALSE(waitUntil([&] { return gateway->output().contains(u"decision"_s); }, 1500));
    key(u"Return"_s);
    key(u"space"_s);
    ASSERT_FALSE(waitUntil([&] { return gateway->output().contains(u"decision"_s); }, 500));
    ASSERT_TRUE(popupGoesBy([] { key(u"Escape"_s); }));
    EXPECT_FALSE(gateway->output().contains(u"decision"_s));
    ASSERT_TRUE(tray.click({u"Pending approvals (1)"_s, u"main: ls"_s, u"Allow Once"_s}));
    EXPECT_TRUE(gateway->says(u"decision first-1 allow-once accepted"_s));
}

TEST_F(DesktopRoad, practiceSaysSoOnEveryWindowInTheMenuAndInNotifications)
{
    environment.insert(u"TMPDIR"_s, home.path());
    auto bram = startBram({u"--practice"_s});
    ExportedMenu tray(bram->processId());
    ASSERT_TRUE(tray.waitForItem());
    ASSERT_TRUE(popupIsThere());
    // Where panels and window managers look; xdotool searches an older property.
    EXPECT_TRUE(run({u"xprop"_s, u"-id"_s, windowTitled(popupTitle), u"_NET_WM_NAME"_s})
                    .contains(u"PRACTICE"_s));
    EXPECT_THAT(tray.labels(),
                Contains(QString(u"PRACTICE: gateway, chat, tokens and requests are made up"_s)));
}

TEST_F(DesktopRoad, endsAtOnceWhateverIsOpen)
{
    const QString script = u"wait-client\n"
                           "request one-1 main ls\n"
                           "request two-2 main ls -la\n"
                           "request three-3 main ls -la /\n"_s;
    for (const bool byMenu : {true, false}) {
        auto gateway = startGateway(script);
        auto bram = startBram();
        ExportedMenu tray(bram->processId());
        ASSERT_TRUE(tray.waitForItem());
        ASSERT_TRUE(popupIsThere());
        ASSERT_TRUE(tray.click({u"Open Window"_s}));
        ASSERT_TRUE(waitUntil([] { return !windowTitled(u"BRAM"_s).isEmpty(); }));
        ASSERT_TRUE(tray.click({u"Pending approvals (3)"_s, u"main: ls -la"_s, u"Show Details"_s}));
        ASSERT_TRUE(waitUntil([] { return !windowTitled(u"Request details"_s).isEmpty(); }));
        if (byMenu) {
            ASSERT_TRUE(tray.click({u"Quit"_s}));
        } else {
            bram->signal(SIGTERM);
        }
        EXPECT_EQ(bram->ends(), 0);
        EXPECT_FALSE(bram->errors().contains(u"presenting approval popup id=two-2"_s));
        EXPECT_FALSE(gateway->output().contains(u"decision"_s));
    }
}

TEST_F(DesktopRoad, survivesThatDaemonAndPanelDieAndReturn)
{
    auto gateway = startGateway(u"wait-client\n"
                                "request before-1 main ls\n"
                                "wait-decision before-1\n"
                                "wait 4000\n"
                                "request after-2 main ls -la\n"
                                "wait-decision after-2\n"_s);
    auto bram = startBram();
    ExportedMenu tray(bram->processId());
    ASSERT_TRUE(tray.waitForItem());
    ASSERT_TRUE(waitUntil([] { return shownNotifications() == 1; }));
    EXPECT_TRUE(
        waitUntil([&] { return tray.labels().join(u'|').contains(u"Notifications: enabled"_s); }));

    run({u"stop-notifications"_s});
    EXPECT_TRUE(waitUntil(
        [&] { return tray.labels().join(u'|').contains(u"Notifications: unavailable"_s); }, 8000))
        << qPrintable(tray.labels().join(u"|"_s));
    run({u"stop-tray"_s});
    EXPECT_TRUE(waitUntil([] { return !windowTitled(u"BRAM"_s).isEmpty(); }));
    EXPECT_TRUE(decidesBy(*gateway, u"decision before-1 allow-once accepted"_s, [] {
        run({u"xdotool"_s, u"windowactivate"_s, u"--sync"_s, windowTitled(popupTitle)});
        key(u"ctrl+alt+shift+o"_s);
    }));

    run({u"start-notifications"_s});
    // The window that stood in for the tray stays while somebody works in it, so they work in another.
    QProcess other;
    other.start(u"xmessage"_s, {u"somebody's work"_s});
    ASSERT_TRUE(waitUntil([] { return !windowTitled(u"xmessage"_s).isEmpty(); }));
    ASSERT_TRUE(waitUntil([] { return windowTitled(popupTitle).isEmpty(); }));
    run({u"xdotool"_s, u"windowactivate"_s, u"--sync"_s, windowTitled(u"xmessage"_s)});
    run({u"start-tray"_s});
    EXPECT_TRUE(waitUntil([] { return windowTitled(u"BRAM"_s).isEmpty(); }));
    other.kill();
    other.waitForFinished();
    EXPECT_TRUE(waitUntil(
        [&] { return tray.labels().join(u'|').contains(u"Notifications: enabled"_s); }, 8000));
    ASSERT_TRUE(waitUntil([] { return shownNotifications() == 1; }));
    EXPECT_TRUE(decidesBy(*gateway, u"decision after-2 allow-always accepted"_s,
                          [] { chooseInNotification(u"Always allow"_s); }));
    bram->signal(SIGTERM);
    EXPECT_EQ(bram->ends(), 0);
}
