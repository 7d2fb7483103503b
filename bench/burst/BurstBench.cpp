// SPDX-License-Identifier: Apache-2.0

// What a burst of requests does to the program: they are sent back to back by a process of their own,
// then announced as resolved, all of them. Measured is how long the event loop was held at a stretch,
// how long it took until the last request was listed, and what memory is left in use afterwards, against
// the memory before the first round. Of each round the longest stretch counts, of the rounds the median.
//
//   bench_burst [--desktop] [--check] [--requests N] [--rounds N] [--directory DIR]
//
// --desktop shows the requests on the desktop as well: tray icon, menu, popup, notifications; without it
// nobody looks. --check ends with 1 when a limit is broken. The audit log goes to a temporary folder inside DIR, by
// default the system's folder for temporary files; the log lines go to syslog and /dev/null.

#include "burst/BurstRequests.h"
#include "burst/BurstServer.h"
#include "burst/LoopWatch.h"
#include "support/Figures.h"

#include "app/Core.h"
#include "app/DesktopSession.h"
#include "system/Clock.h"
#include "system/MemorySecretStore.h"
#include "system/linux/SyslogLog.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>

#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace bram::bench;

namespace
{
constexpr double heldLimitMs = 50;
constexpr double memoryLimitMiB = 10;
constexpr int quietMs = 1000;
constexpr int patienceMs = 60'000;

[[noreturn]] void fail(const QString &what)
{
    std::printf("%s\n", qPrintable(what));
    std::exit(2);
}

/// What of the process is in memory, shared pages by their share.
double memoryMiB()
{
    QFile file(u"/proc/self/smaps_rollup"_s);
    if (file.open(QIODevice::ReadOnly)) {
        for (const QByteArray &line : file.readAll().split('\n')) {
            if (line.startsWith("Pss:")) {
                return line.simplified().split(' ').value(1).toDouble() / 1024;
            }
        }
    }
    fail(u"no figure for the memory in use"_s);
}

/// The core under test, its server and what happens between them.
class Burst
{
public:
    Burst(const QString &folder, int requests, bool onDesktop)
        : m_requests(requests)
        , m_log(bram::SyslogLog::Syslog | bram::SyslogLog::StandardError)
    {
        m_server.setStandardErrorFile(QProcess::nullDevice());
        m_server.start(QCoreApplication::applicationFilePath(), {u"--server"_s});
        while (!m_server.canReadLine()) {
            if (!m_server.waitForReadyRead(patienceMs)) {
                fail(u"the server does not start"_s);
            }
        }
        const QString url = QString::fromUtf8(m_server.readLine()).trimmed();
        if (onDesktop) {
            m_desktop.emplace(m_clock, m_log, bram::SimulationEntry::Hidden);
        }
        m_core.emplace(
            bram::Core::World {.places = bram::Places::ofPractice(folder, url),
                               .secrets = m_secrets,
                               .clock = m_clock,
                               .log = m_log,
                               .ports = m_desktop ? m_desktop->ports() : bram::MonitorPorts {},
                               .commandLine = bram::CommandLineUse::Never});
        if (m_desktop) {
            m_desktop->start(*m_core, nullptr);
        }
        QEventLoop loop;
        QObject::connect(&m_core->status(), &bram::GatewayStatus::statusLinesChanged, &loop, [&] {
            if (m_core->status().lines().connectionIndicator == bram::IndicatorState::Green) {
                loop.quit();
            }
        });
        m_core->monitor().start();
        run(loop);
    }

    ~Burst()
    {
        if (m_desktop) {
            m_desktop->finish();
        }
        m_server.closeWriteChannel();
        m_server.waitForFinished();
    }

    /// Returns when the list is as wanted: with the last request in it, or empty.
    void request()
    {
        order("request", [this] { return lastIsListed(); });
        const auto &items = board().displayItems();
        if (items.size() != m_requests || board().items().constFirst().approvalId != lastId()
            || board().history().constFirst().approvalId != lastId()) {
            fail(u"%1 requests listed, not %2, or in the wrong order"_s.arg(items.size())
                     .arg(m_requests));
        }
    }
    void resolve()
    {
        order("resolve", [this] { return board().displayItems().isEmpty(); });
    }

private:
    const bram::ApprovalBoard &board() { return m_core->monitor().board(); }
    QString lastId() const { return burstId(m_requests - 1); }

    /// The list is in the order of arrival as long as no popup is there.
    bool lastIsListed()
    {
        return !board().displayItems().isEmpty() && isLast(board().displayItems().constLast());
    }

    bool isLast(const bram::ApprovalItem &item) const
    {
        return item.approvalId == lastId() && item.command == burstCommand(m_requests - 1)
            && item.agentId == u"main"_s;
    }

    template<typename Condition>
    void order(const char *what, Condition condition)
    {
        QEventLoop loop;
        QObject::connect(&m_core->monitor().board(), &bram::ApprovalBoard::displayItemsChanged,
                         &loop, [&] {
                             if (condition()) {
                                 loop.quit();
                             }
                         });
        m_server.write(QByteArray(what) + ' ' + QByteArray::number(m_requests) + '\n');
        run(loop);
    }

    static void run(QEventLoop &loop)
    {
        QTimer::singleShot(patienceMs, &loop,
                           [] { fail(u"what was waited for did not happen"_s); });
        loop.exec();
    }

    const int m_requests;
    bram::SystemClock m_clock;
    bram::SyslogLog m_log;
    bram::MemorySecretStore m_secrets;
    QProcess m_server;
    std::optional<bram::DesktopSession> m_desktop;
    std::optional<bram::Core> m_core;
};

struct Figures {
    std::vector<double> heldMs;
    std::vector<double> heldProcessorMs;
    std::vector<double> listedMs;
    std::vector<double> resolvedMs;
    std::vector<double> memoryMiB; ///< above what there was before the first round
};

void rest()
{
    QEventLoop loop;
    QTimer::singleShot(quietMs, &loop, &QEventLoop::quit);
    loop.exec();
}

double worst(const std::vector<double> &values)
{
    return *std::ranges::max_element(values);
}

Figures measure(const QString &folder, int requests, int rounds, bool onDesktop)
{
    Burst burst(folder, requests, onDesktop);
    if (onDesktop) {
        // The windows that a first request opens are there from then on.
        burst.request();
        burst.resolve();
    }
    rest();
    const double memoryBefore = memoryMiB();
    Figures figures;
    for (int round = 0; round < rounds; ++round) {
        loopwatch::takeLongestMs();
        loopwatch::takeLongestProcessorMs();
        QElapsedTimer timer;
        timer.start();
        burst.request();
        figures.listedMs.push_back(static_cast<double>(timer.restart()));
        burst.resolve();
        figures.resolvedMs.push_back(static_cast<double>(timer.elapsed()));
        rest();
        figures.heldMs.push_back(loopwatch::takeLongestMs());
        figures.heldProcessorMs.push_back(loopwatch::takeLongestProcessorMs());
        figures.memoryMiB.push_back(memoryMiB() - memoryBefore);
    }
    return figures;
}

/// The median is what counts: a round in which another program had the processor says nothing about
/// this one.
bool report(const char *what, const std::vector<double> &values, const char *unit, double limit)
{
    const bool holds = median(values) <= limit;
    std::printf("%-34s %7.1f %s, worst %7.1f, limit %.0f%s\n", what, median(values), unit,
                worst(values), limit, holds ? "" : "  ABOVE");
    return holds;
}

void report(const char *what, const std::vector<double> &values, const char *unit)
{
    std::printf("%-34s %7.1f %s, worst %7.1f\n", what, median(values), unit, worst(values));
}

/// The log lines are written as always, but to nobody's screen.
void sendStandardErrorToNull()
{
    const int null = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    ::dup2(null, STDERR_FILENO);
    ::close(null);
}
} // namespace

int main(int argc, char **argv)
{
    const bool onDesktop = std::any_of(argv, argv + argc, [](const char *argument) {
        return std::strcmp(argument, "--desktop") == 0;
    });
    std::unique_ptr<QCoreApplication> application;
    if (onDesktop) {
        application = std::make_unique<QApplication>(argc, argv);
        QApplication::setQuitOnLastWindowClosed(false);
    } else {
        application = std::make_unique<QCoreApplication>(argc, argv);
    }
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOptions({
        {u"desktop"_s, u"With the desktop front-end."_s},
        {u"check"_s, u"End with 1 when a limit is broken."_s},
        {u"requests"_s, u"How many requests a burst."_s, u"N"_s, u"10000"_s},
        {u"rounds"_s, u"How many bursts."_s, u"N"_s, u"5"_s},
        {u"directory"_s, u"Where to write."_s, u"DIR"_s, QDir::tempPath()},
        {u"server"_s, u"Used by the benchmark itself: be the server."_s},
    });
    parser.process(*application);
    if (parser.isSet(u"server"_s)) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        return runBurstServer();
    }
    sendStandardErrorToNull();
    const QTemporaryDir folder(parser.value(u"directory"_s) + "/bench-burst-XXXXXX"_L1);
    const int requests = std::max(1, parser.value(u"requests"_s).toInt());
    const int rounds = std::max(1, parser.value(u"rounds"_s).toInt());
    const Figures figures = measure(folder.path(), requests, rounds, onDesktop);

    std::printf("%d bursts of %d requests; medians, and the worst of all\n", rounds, requests);
    report("until the last request is listed", figures.listedMs, "ms ");
    report("until all are gone again", figures.resolvedMs, "ms ");
    report("loop held, processor time alone", figures.heldProcessorMs, "ms ");
    const bool heldHolds = report("loop held at most", figures.heldMs, "ms ", heldLimitMs);
    const bool memoryHolds
        = report("memory above that before", figures.memoryMiB, "MiB", memoryLimitMiB);
    return parser.isSet(u"check"_s) && !(heldHolds && memoryHolds) ? 1 : 0;
}
