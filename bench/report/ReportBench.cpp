// SPDX-License-Identifier: Apache-2.0

// What the weekly report's way through a full audit log costs, against the least that the same counts can
// cost: one thread, one line at a time. Both are measured in the same run, in turns, over the same files,
// which the machine has in memory.
//
//   bench_report [--check] [--rounds N] [--directory DIR]
//
// --check ends with 1 when a figure is above its limit. The log, 262 MB, goes to a temporary folder inside DIR,
// by default the system's folder for temporary files.

#include "audit/WeeklyAuditAggregation.h"
#include "audit/WeeklyAuditReport.h"
#include "report/FloorFold.h"
#include "report/FullLog.h"
#include "support/Figures.h"
#include "system/Memory.h"
#include "system/SystemLog.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <vector>

using namespace Qt::StringLiterals;
using namespace bram;

namespace
{
constexpr double twoThreadsLimit = 0.85;
constexpr double oneThreadLimit = 1.5;
constexpr double memoryLimitMiB = 48;

class FatalLog final : public SystemLog
{
public:
    void write(QStringView line) override
    {
        std::fprintf(stderr, "%s\n", qPrintable(line.toString()));
        std::exit(2);
    }
};

double milliseconds(const QElapsedTimer &timer)
{
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

/// A line of /proc/self/status, in MiB.
double statusMiB(const char *name)
{
    QFile file(u"/proc/self/status"_s);
    if (file.open(QIODevice::ReadOnly)) {
        for (const QByteArray &line : file.readAll().split('\n')) {
            if (line.startsWith(name)) {
                return line.mid(qstrlen(name) + 1).trimmed().split(' ').first().toDouble() / 1024;
            }
        }
    }
    std::fprintf(stderr, "no %s\n", name);
    std::exit(2);
}

/// Begins a new highest mark of memory, and gives what is in use.
double markMemory()
{
    returnFreeMemory();
    QFile file(u"/proc/self/clear_refs"_s);
    if (!file.open(QIODevice::WriteOnly) || file.write("5") != 1) {
        std::fprintf(stderr, "clear_refs cannot be written\n");
        std::exit(2);
    }
    return statusMiB("VmRSS");
}

WeeklyAuditFindings measured(const std::vector<AuditLogFile> &files, int threads, double &elapsed)
{
    FatalLog log;
    AggregationProgress progress;
    const AggregationOptions options {
        .sinceMs = bench::firstTimestampMs, .maxRows = weeklyAuditMaxRows, .threads = threads};
    QElapsedTimer timer;
    timer.start();
    auto findings = aggregateAuditLog(files, options, progress, log);
    elapsed = milliseconds(timer);
    return *std::move(findings);
}

bool report(const char *what, double value, double ratio, double limit, const char *unit)
{
    const bool holds = ratio <= limit;
    std::printf("%-28s %8.1f %-4s %6.2f, limit %.2f%s\n", what, value, unit, ratio, limit,
                holds ? "" : "  ABOVE");
    return holds;
}
} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOptions({
        {u"check"_s, u"End with 1 when a figure is above its limit."_s},
        {u"rounds"_s, u"How many rounds; medians count."_s, u"N"_s, u"9"_s},
        {u"directory"_s, u"Where to write."_s, u"DIR"_s, QDir::tempPath()},
    });
    parser.process(application);

    const QTemporaryDir folder(parser.value(u"directory"_s) + "/bench-report-XXXXXX"_L1);
    const auto files = bench::writeFullLog(folder.path());
    const double idle = markMemory();
    double ignored = 0;
    const WeeklyAuditFindings findings = measured(files, 2, ignored);
    const double memory = statusMiB("VmHWM") - idle;

    std::vector<double> floors;
    std::vector<double> ones;
    std::vector<double> twos;
    const int rounds = std::max(1, parser.value(u"rounds"_s).toInt());
    for (int round = 0; round < rounds; ++round) {
        QElapsedTimer timer;
        timer.start();
        const WeeklyAuditSummary floor = bench::floorFold(files, bench::firstTimestampMs);
        floors.push_back(milliseconds(timer));
        if (floor != measured(files, 1, ones.emplace_back()).summary
            || floor != measured(files, 2, twos.emplace_back()).summary) {
            std::fprintf(stderr, "floor and program count differently\n");
            return 2;
        }
    }
    const double floor = bench::median(floors);
    std::printf("%lld records in %zu files, medians of %d rounds\n",
                static_cast<long long>(findings.summary.totalEvents), files.size(), rounds);
    std::printf("%-28s %8.1f ms\n", "floor: one line at a time", floor);
    const double two = bench::median(twos);
    const double one = bench::median(ones);
    const std::array holds {
        report("two threads, to the floor", two, two / floor, twoThreadsLimit, "ms"),
        report("one thread, to the floor", one, one / floor, oneThreadLimit, "ms"),
        report("memory above idle", memory, memory, memoryLimitMiB, "MiB"),
    };
    const bool all = holds[0] && holds[1] && holds[2];
    return parser.isSet(u"check"_s) && !all ? 1 : 0;
}
