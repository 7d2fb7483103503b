// SPDX-License-Identifier: Apache-2.0
#include "desktop/WindowTimes.h"

#include "desktop/PaintWatch.h"
#include "support/Figures.h"

#include "app/Core.h"
#include "monitor/ApprovalNotifications.h"
#include "system/linux/DesktopNotifications.h"
#include "system/linux/XdgFileOpener.h"
#include "ui/desktop/AlwaysAllowListPane.h"
#include "ui/desktop/AlwaysAllowWindowPresenter.h"
#include "ui/desktop/DesktopActions.h"
#include "ui/desktop/RequestDetailsWindow.h"
#include "ui/desktop/StatusWindow.h"
#include "ui/desktop/UtilityWindows.h"

#include <QDir>
#include <QFile>
#include <QScrollBar>
#include <QTableView>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

namespace bram::bench
{

using namespace Qt::StringLiterals;

namespace
{
constexpr int entryCount = 10'000;
constexpr double limitMs = 150;
constexpr double frameLimitMs = 16;

/// What keeps an open window; its end closes it.
using Opened = std::shared_ptr<void>;

template<typename Open>
std::vector<double> openingTimes(int count, Open open)
{
    PaintWatch watch([](const QWidget &window) {
        return window.isWindow() && window.windowType() == Qt::Window && window.isVisible();
    });
    std::vector<double> times;
    for (int i = 0; i < count; ++i) {
        watch.restart();
        Opened window = open();
        waitUntil([&] { return watch.elapsedMs() > 0 && watch.hasPainted(); });
        times.push_back(watch.elapsedMs());
        window.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
    }
    return times;
}

bool print(const char *what, std::vector<double> times, double floorMs, double limit = limitMs)
{
    const double middle = median(times);
    std::ranges::sort(times);
    const double worst = times[std::min(times.size() - 1, times.size() * 99 / 100)];
    std::printf("%-44s median %6.1f ms (%4.1f floors), 99 %% %6.1f ms, limit %.0f%s\n", what,
                middle, middle / floorMs, worst, limit, worst <= limit ? "" : "  ABOVE");
    return worst <= limit;
}

Opened openEmptyWindow()
{
    auto window = std::make_shared<QWidget>();
    window->resize(940, 700);
    window->show();
    return window;
}

/// Each step of a page, painted: what a frame of scrolling through the whole list takes.
std::vector<double> scrollTimes(int count)
{
    std::vector<double> times;
    for (QWidget *window : QApplication::topLevelWidgets()) {
        const auto *pane = window->findChild<AlwaysAllowListPane *>();
        if (pane == nullptr || !window->isVisible()) {
            continue;
        }
        auto *table = pane->findChild<QTableView *>();
        QScrollBar *bar = table->verticalScrollBar();
        PaintWatch watch([window](const QWidget &painted) { return &painted == window; });
        for (int i = 1; i <= count; ++i) {
            watch.restart();
            bar->setValue(static_cast<int>(static_cast<qint64>(bar->maximum()) * i / count));
            waitUntil([&] { return watch.elapsedMs() > 0 && watch.hasPainted(); });
            times.push_back(watch.elapsedMs());
        }
    }
    return times;
}
} // namespace

void fillAlwaysAllowList(Core &core, const QString &homeFolder)
{
    QDir(homeFolder).mkpath(u".brackwen"_s);
    QFile file(homeFolder + u"/.brackwen/exec-approvals.json"_s);
    if (!file.open(QFile::WriteOnly)) {
        fail("the exec-approvals file cannot be written");
    }
    QStringList commands;
    for (int i = 0; i < entryCount; ++i) {
        commands.append(u"\"make -C /srv/projects/number-%1 --jobs 4 check install\""_s.arg(i));
    }
    file.write("{\"agents\":{\"main\":{\"allowlist\":[" + commands.join(u',').toUtf8() + "]}}}");
    file.close();
    AlwaysAllowOperations &operations = core.alwaysAllow();
    waitUntil([&] { return operations.list().entries().size() == entryCount; });
    operations.addToAppList(operations.list().entries().first(entryCount / 2));
}

bool measureWindows(Core &core, OperatorPrompts &prompts, const Clock &clock, SystemLog &log,
                    int count)
{
    DesktopActions actions({.monitor = core.monitor(),
                            .bulkAllow = core.bulkAllow(),
                            .allowPartlyShown = core.allowPartlyShown(),
                            .record = core.record(),
                            .prompts = prompts,
                            .tasks = core.tasks(),
                            .language = core.language(),
                            .environment = core.environment(),
                            .clock = clock,
                            .surface = [] { return SurfaceFacts(); }});
    const ApprovalBoard &board = core.monitor().board();
    const double floorMs = median(openingTimes(count, openEmptyWindow));
    std::printf("%-44s median %6.1f ms\n", "an empty window opened (floor)", floorMs);

    const auto openManager = [&] {
        auto presenter = std::make_shared<AlwaysAllowWindowPresenter>(
            AlwaysAllowWindow::Collaborators {.operations = core.alwaysAllow(),
                                              .record = actions.record(),
                                              .board = board,
                                              .audit = core.audit(),
                                              .prompts = prompts,
                                              .tasks = core.tasks(),
                                              .clock = clock,
                                              .log = log});
        presenter->show();
        return presenter;
    };
    bool holds
        = print("list manager opened, 10,000 entries", openingTimes(count, openManager), floorMs);
    {
        PaintWatch watch([](const QWidget &window) { return window.isVisible(); });
        watch.restart();
        const auto manager = openManager();
        waitUntil([&] { return watch.elapsedMs() > 0 && watch.hasPainted(); });
        holds = print("list manager, a frame of scrolling", scrollTimes(300), floorMs, frameLimitMs)
            && holds;
    }
    const auto openStatus = [&] {
        auto window
            = std::make_shared<StatusWindow>(actions, core.language(), SimulationEntry::Hidden);
        window->update({.status = statusLines(core.status().lines(), {}, {}, {}, MenuLanguage::English),
                        .pending = board.displayItems(),
                        .history = board.history()});
        window->show();
        return window;
    };
    holds = print("status window opened", openingTimes(count, openStatus), floorMs) && holds;
    const auto openDetails = [&] {
        auto window = std::make_shared<RequestDetailsWindow>(clock);
        window->open(RequestDetails::of(board.history().constFirst()));
        return window;
    };
    holds = print("request details opened", openingTimes(count, openDetails), floorMs) && holds;

    DesktopNotifications service;
    const ApprovalNotifications notifications(service, clock, log);
    XdgFileOpener opener;
    const auto makeUtilities = [&] {
        return std::make_shared<UtilityWindows>(UtilityWindows::Collaborators {
            .actions = actions,
            .agents = core.agents(),
            .language = core.language(),
            .tasks = core.tasks(),
            .notificationService = service,
            .notifications = notifications,
            .settings = {.allowPartlyShown = core.allowPartlyShown(),
                         .unencryptedGateway = core.unencryptedGateway(),
                         .sharedPolling = core.sharedPolling(),
                         .telegram = core.telegram(),
                         .loginStart = nullptr,
                         .opener = opener,
                         .places = [] { return QList<FilePlace>(); }}});
    };
    const auto openSettings = [&] {
        auto windows = makeUtilities();
        windows->showSettings();
        return windows;
    };
    holds = print("settings opened", openingTimes(count, openSettings), floorMs) && holds;
    const auto openAbout = [&] {
        auto windows = makeUtilities();
        windows->showAbout();
        return windows;
    };
    return print("about opened", openingTimes(count, openAbout), floorMs) && holds;
}

} // namespace bram::bench
