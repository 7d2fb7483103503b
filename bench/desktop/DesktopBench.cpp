// SPDX-License-Identifier: Apache-2.0

// How fast the desktop answers: from the frame that announces a request until its popup is painted, and
// how long the status menu takes to open with 50 pending requests and 300 rows of history, drawn by this
// program and sent to a panel. To be run in a desktop session, see tests/desktop/session.
//
// Then how long each window takes to open, with 10,000 entries on the always-allow list.
//
//   bench_desktop [--check] [--popups N] [--menus N] [--windows N]
//
// --check ends with 1 when a limit is broken. State goes to a temporary folder, log lines to syslog.

#include "desktop/PaintWatch.h"
#include "desktop/WindowTimes.h"
#include "support/BenchServer.h"
#include "support/Figures.h"

#include "app/Core.h"
#include "app/DesktopSession.h"
#include "system/Clock.h"
#include "system/MemorySecretStore.h"
#include "system/linux/SyslogLog.h"
#include "ui/desktop/DesktopActions.h"
#include "ui/desktop/StatusMenu.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QElapsedTimer>
#include <QEvent>
#include <QEventLoop>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <QWidget>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>

using namespace Qt::StringLiterals;
using namespace bram::bench;

namespace
{
constexpr double limitMs = 50;

double percentile99(std::vector<double> values)
{
    std::ranges::sort(values);
    return values[std::min(values.size() - 1, values.size() * 99 / 100)];
}

bool report(const char *what, const std::vector<double> &values)
{
    const bool holds = percentile99(values) <= limitMs;
    std::printf("%-44s median %6.1f ms, 99 %% %6.1f ms, limit %.0f%s\n", what, median(values),
                percentile99(values), limitMs, holds ? "" : "  ABOVE");
    return holds;
}

/// The program on the desktop, and the gateway that asks it.
class Desktop
{
public:
    Desktop()
        : m_log(bram::SyslogLog::Targets(bram::SyslogLog::Syslog))
        , m_session(m_clock, m_log, bram::SimulationEntry::Hidden)
        , m_core({.places = bram::Places::ofPractice(m_folder.path(), m_server.url(u"bram"_s)),
                  .secrets = m_secrets,
                  .clock = m_clock,
                  .log = m_log,
                  .ports = m_session.ports(),
                  .commandLine = bram::CommandLineUse::Never})
    {
        bool isReady = false;
        QObject::connect(&m_server, &BenchServer::clientReady, &m_server, [&] { isReady = true; });
        m_session.start(m_core, nullptr);
        m_core.start();
        waitUntil([&] { return isReady; });
    }
    ~Desktop() { m_session.finish(); }
    Q_DISABLE_COPY_MOVE(Desktop)

    std::vector<double> popupTimes(int count)
    {
        PaintWatch watch(
            [](const QWidget &window) { return window.windowTitle() == u"승인 요청"_s; });
        std::vector<double> times;
        for (int i = 0; i < count; ++i) {
            watch.restart();
            request(i);
            waitUntil([&] { return watch.elapsedMs() > 0 && watch.hasPainted(); });
            times.push_back(watch.elapsedMs());
            m_core.monitor().clearPendingApprovals();
            waitUntil([&] { return !watch.painted()->isVisible(); });
        }
        return times;
    }

    /// 50 pending requests and 300 rows of history.
    void fill()
    {
        for (int i = 0; i < 300; ++i) {
            request(1000 + i);
        }
        waitUntil([&] { return board().find(u"request-1299"_s) != nullptr; });
        // Those that wait for the popup beyond the 50 of the list.
        m_core.monitor().clearPendingApprovals();
        for (int i = 0; i < 50; ++i) {
            request(2000 + i);
        }
        waitUntil([&] { return board().displayItems().size() == 50; });
    }

    std::vector<double> drawnMenuTimes(int count)
    {
        bram::DesktopActions actions({.monitor = m_core.monitor(),
                                      .bulkAllow = m_core.bulkAllow(),
                                      .allowPartlyShown = m_core.allowPartlyShown(),
                                      .record = m_core.record(),
                                      .prompts = m_session.prompts(),
                                      .tasks = m_core.tasks(),
                                      .language = m_core.language(),
                                      .environment = m_core.environment(),
                                      .clock = m_clock,
                                      .surface = [] { return bram::SurfaceFacts(); }});
        std::vector<double> times;
        for (int i = 0; i < count; ++i) {
            // From nothing: the first opening of a window's menu is the slowest.
            PaintWatch watch([](const QWidget &window) {
                return qobject_cast<const QMenu *>(&window) != nullptr;
            });
            watch.restart();
            bram::StatusMenu menu(actions, m_core.language(), bram::MenuDrawing::OwnWindow);
            menu.update({.status = bram::statusLines(m_core.status().lines(), {}, {}, {},
                                                     bram::MenuLanguage::English),
                         .pending = board().displayItems(),
                         .history = board().history()});
            menu.menu().popup({50, 50});
            waitUntil([&] { return watch.elapsedMs() > 0 && watch.hasPainted(); });
            times.push_back(watch.elapsedMs());
            menu.menu().close();
        }
        return times;
    }

    /// As a panel reads the menu before it opens it: from a connection of its own, all levels at once.
    std::vector<double> exportedMenuTimes(int count)
    {
        std::vector<double> times;
        std::unique_ptr<QThread> panel(QThread::create([&] {
            QDBusConnection bus
                = QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"bench-panel"_s);
            const QString service = registeredItem(bus);
            for (int i = 0; i < count; ++i) {
                QElapsedTimer timer;
                timer.start();
                QDBusMessage about = QDBusMessage::createMethodCall(
                    service, u"/MenuBar"_s, u"com.canonical.dbusmenu"_s, u"AboutToShow"_s);
                about << 0;
                bus.call(about);
                QDBusMessage layout = QDBusMessage::createMethodCall(
                    service, u"/MenuBar"_s, u"com.canonical.dbusmenu"_s, u"GetLayout"_s);
                layout << 0 << -1 << QStringList();
                if (bus.call(layout).type() != QDBusMessage::ReplyMessage) {
                    return;
                }
                times.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
            }
        }));
        panel->start();
        waitUntil([&] { return panel->isFinished(); });
        if (times.size() != static_cast<std::size_t>(count)) {
            fail("the tray icon's menu is not on the session bus");
        }
        return times;
    }

    /// With 10,000 entries on the always-allow list, half of them also on the own one.
    bool windowsHold(int count)
    {
        fillAlwaysAllowList(m_core, m_folder.path());
        return measureWindows(m_core, m_session.prompts(), m_clock, m_log, count);
    }

private:
    /// Who the panel of this session knows; this program is the only one there.
    static QString registeredItem(const QDBusConnection &bus)
    {
        const QString watcher = u"org.kde.StatusNotifierWatcher"_s;
        QDBusMessage question = QDBusMessage::createMethodCall(
            watcher, u"/StatusNotifierWatcher"_s, u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
        question << watcher << u"RegisteredStatusNotifierItems"_s;
        const QVariant items
            = bus.call(question).arguments().value(0).value<QDBusVariant>().variant();
        return items.toStringList().value(0).section(u'/', 0, 0);
    }

    const bram::ApprovalBoard &board() { return m_core.monitor().board(); }

    void request(int number)
    {
        m_server.send(
            u"bram"_s,
            requestFrame(u"request-%1"_s.arg(number),
                         u"find . -name '*.o' -newer stamp-%1 -exec rm {} +"_s.arg(number)));
    }

    QTemporaryDir m_folder;
    BenchServer m_server;
    bram::SystemClock m_clock;
    bram::SyslogLog m_log;
    bram::MemorySecretStore m_secrets;
    bram::DesktopSession m_session;
    bram::Core m_core;
};
} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOptions({
        {u"check"_s, u"End with 1 when a limit is broken."_s},
        {u"popups"_s, u"How many popups."_s, u"N"_s, u"200"_s},
        {u"windows"_s, u"How many times each window is opened."_s, u"N"_s, u"20"_s},
        {u"menus"_s, u"How many times the menu is opened."_s, u"N"_s, u"100"_s},
    });
    parser.process(application);
    const int popups = std::max(1, parser.value(u"popups"_s).toInt());
    const int menus = std::max(1, parser.value(u"menus"_s).toInt());

    const int windows = std::max(1, parser.value(u"windows"_s).toInt());

    Desktop desktop;
    const auto popupTimes = desktop.popupTimes(popups);
    desktop.fill();
    const bool popupsHold = report("request frame to popup painted", popupTimes);
    const bool drawnHold = report("menu opened, drawn here", desktop.drawnMenuTimes(menus));
    const bool exportedHold
        = report("menu opened, sent to a panel", desktop.exportedMenuTimes(menus));
    const bool windowsHold = desktop.windowsHold(windows);
    return parser.isSet(u"check"_s) && !(popupsHold && drawnHold && exportedHold && windowsHold)
        ? 1
        : 0;
}
