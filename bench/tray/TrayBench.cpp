// SPDX-License-Identifier: Apache-2.0
// What the program costs until its tray icon is there, and while nothing happens, against the least program
// with a tray icon (FloorTray.cpp):
//   bench_tray [--check] [--rounds N] [--seconds N] FLOOR PROGRAM
// Both run by turns, with the environment and on the session bus of this one, which stands in for the panel.
// bench/tray/run gives it a desktop session of its own, and the program a gateway. --check ends with 1 when a
// limit is broken.
#include "support/Figures.h"
#include "tray/ProcessFigures.h"
#include "tray/TrayRegistry.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QProcess>
#include <QTimer>

#include <cstdio>
#include <optional>

namespace bram::bench
{

using namespace Qt::StringLiterals;

namespace
{
constexpr double startLimit = 1.6;
constexpr double memoryLimit = 1.9;
constexpr double switchesLimit = 0.5;
constexpr int patienceMs = 15'000;
constexpr int settleMs = 2'000; // what belongs to the start is over
constexpr int attempts = 30; // only one copy of the program may run for each user
const QString connectedLine = u"connect handshake success"_s;

/// Turns the event loop until `isDone` or the time is over.
template<typename Condition>
bool turnUntil(Condition isDone, int milliseconds)
{
    QElapsedTimer clock;
    clock.start();
    QTimer end;
    end.start(milliseconds);
    while (!isDone()) {
        if (clock.elapsed() >= milliseconds) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

void pause(int milliseconds)
{
    turnUntil([] { return false; }, milliseconds);
}

/// One run of a program, from its start to its end at the end of this object.
class Run
{
public:
    Run(TrayRegistry &registry, const QString &program)
    {
        QObject::connect(&registry, &TrayRegistry::registered, &m_process, [this] {
            if (m_startMs == 0) {
                m_startMs = static_cast<double>(m_clock.nsecsElapsed()) / 1e6;
            }
        });
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.setStandardInputFile(QProcess::nullDevice());
        QObject::connect(&m_process, &QProcess::readyRead, &m_process,
                         [this] { m_output += QString::fromUtf8(m_process.readAll()); });
        m_clock.start();
        m_process.start(program, QStringList());
    }
    ~Run()
    {
        m_process.terminate();
        if (!turnUntil([this] { return hasEnded(); }, 5'000)) {
            m_process.kill();
            m_process.waitForFinished();
        }
    }
    Q_DISABLE_COPY_MOVE(Run)

    /// Nothing when the program ends, or shows no icon in time.
    std::optional<double> millisecondsToIcon()
    {
        turnUntil([this] { return m_startMs > 0 || hasEnded(); }, patienceMs);
        return m_startMs > 0 && !hasEnded() ? std::optional(m_startMs) : std::nullopt;
    }
    bool connects()
    {
        return turnUntil([this] { return m_output.contains(connectedLine) || hasEnded(); },
                         patienceMs)
            && !hasEnded();
    }
    bool hasEnded() const { return m_process.state() == QProcess::NotRunning; }
    qint64 pid() const { return m_process.processId(); }
    QString output() const { return m_output; }

private:
    QProcess m_process;
    QElapsedTimer m_clock;
    double m_startMs = 0;
    QString m_output;
};

struct Figures {
    std::vector<double> startMs;
    std::vector<double> mebibytes;
    double switchesPerSecond = 0;
};

enum class Depth {
    Start, ///< only until the icon is there
    Idle, ///< and the memory
    Long, ///< and the context switches for some time
};

/// False when the program could not be measured.
bool measure(TrayRegistry &registry, const QString &program, bool isFloor, Depth depth, int seconds,
             Figures &figures)
{
    QString output;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        Run run(registry, program);
        const auto startMs = run.millisecondsToIcon();
        if (!startMs && run.hasEnded()) {
            output = run.output();
            pause(1'000);
            continue;
        }
        if (!startMs || (!isFloor && !run.connects())) {
            output = run.output();
            break;
        }
        figures.startMs.push_back(*startMs);
        if (depth >= Depth::Idle) {
            pause(settleMs);
            figures.mebibytes.push_back(proportionalMebibytes(run.pid()));
        }
        if (depth >= Depth::Long) {
            const ThreadSwitches before = threadSwitches(run.pid());
            pause(seconds * 1'000);
            figures.switchesPerSecond
                = static_cast<double>(switchesBetween(before, threadSwitches(run.pid()))) / seconds;
        }
        return !run.hasEnded();
    }
    std::fprintf(stderr, "%s shows no tray icon or does not connect; is another copy running?\n%s",
                 qPrintable(program), qPrintable(output));
    return false;
}

bool report(const char *what, double floor, double program, double limit, const char *unit)
{
    const double ratio = program / floor;
    const bool holds = ratio <= limit;
    std::printf("%-28s floor %7.2f %s  program %7.2f %s  ratio %.2f, limit %.2f%s\n", what, floor,
                unit, program, unit, ratio, limit, holds ? "" : "  ABOVE");
    return holds;
}

int run(const QString &floorProgram, const QString &program, int rounds, int seconds, bool check)
{
    TrayRegistry registry;
    Figures floor;
    Figures ours;
    // The first round fills the caches of the machine and does not count.
    for (int round = -1; round < rounds; ++round) {
        const Depth depth = round < rounds - 3 ? Depth::Start : Depth::Idle;
        const Depth ownDepth = round == rounds - 1 ? Depth::Long : depth;
        if (!measure(registry, floorProgram, true, depth, seconds, floor)
            || !measure(registry, program, false, ownDepth, seconds, ours)) {
            return 2;
        }
        if (round < 0) {
            floor = {};
            ours = {};
        }
    }
    bool holds = report("start to tray item", median(floor.startMs), median(ours.startMs),
                        startLimit, "ms");
    holds &= report("memory, idle (PSS)", median(floor.mebibytes), median(ours.mebibytes),
                    memoryLimit, "MiB");
    const bool isQuiet = ours.switchesPerSecond <= switchesLimit;
    std::printf("idle and connected for %d s: %.2f context switches a second, limit %.2f%s\n",
                seconds, ours.switchesPerSecond, switchesLimit, isQuiet ? "" : "  ABOVE");
    return check && !(holds && isQuiet) ? 1 : 0;
}
} // namespace

} // namespace bram::bench

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption check(QStringLiteral("check"));
    const QCommandLineOption rounds(QStringLiteral("rounds"), {}, QStringLiteral("N"),
                                    QStringLiteral("15"));
    const QCommandLineOption seconds(QStringLiteral("seconds"), {}, QStringLiteral("N"),
                                     QStringLiteral("30"));
    parser.addOptions({check, rounds, seconds});
    parser.process(application);
    const QStringList programs = parser.positionalArguments();
    if (programs.size() != 2 || parser.value(rounds).toInt() < 3
        || parser.value(seconds).toInt() < 1) {
        std::fputs("usage: bench_tray [--check] [--rounds N] [--seconds N] FLOOR PROGRAM\n",
                   stderr);
        return 2;
    }
    return bram::bench::run(programs[0], programs[1], parser.value(rounds).toInt(),
                            parser.value(seconds).toInt(), parser.isSet(check));
}
