// SPDX-License-Identifier: Apache-2.0

// What the audit store costs, against the least that keeping the same lines can cost: one plain
// write a line to an open file. Both are measured in the same run, on the same disk, in turns.
//
//   bench_audit [--check] [--records N] [--rounds N] [--directory DIR]
//
// --check ends with 1 when a ratio is above its limit. The files go to a temporary folder inside
// DIR, by default the system's folder for temporary files.

#include "audit/AuditLogStore.h"
#include "audit/AuditRecordCodec.h"
#include "system/SystemLog.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <unistd.h>
#include <vector>

using namespace Qt::StringLiterals;

namespace
{
constexpr double wholeLimit = 2.5;
constexpr double callerLimit = 1.5;
constexpr qint64 firstTimestampMs = 1'718'000'000'000;

class FatalLog final : public bram::SystemLog
{
public:
    void write(QStringView line) override
    {
        std::fprintf(stderr, "%s\n", qPrintable(line.toString()));
        std::exit(2);
    }
};

/// The events of requests that are asked, decided and resolved, with some Korean and some quotes.
std::vector<bram::AuditEventRecord> sampleRecords(int count)
{
    std::vector<bram::AuditEventRecord> records(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        auto &record = records[static_cast<std::size_t>(i)];
        record.timestampMs = firstTimestampMs + i;
        record.approvalId = u"9b2f6c1e-4d7a-4c55-8f0e-%1"_s.arg(i / 3, 12, 16, QChar(u'0'));
        record.agentId = u"agent-%1"_s.arg(i % 7);
        record.risk = i % 5 == 0 ? u"high"_s : u"low"_s;
        record.commandPreview = i % 2 == 0 ? u"git …"_s : u"python3 …"_s;
        if (i % 3 == 0) {
            record.kind = bram::AuditKind::approvalRequested;
            record.source = u"gateway"_s;
            continue;
        }
        record.kind = i % 3 == 1 ? bram::AuditKind::approvalDecisionRequested
                                 : bram::AuditKind::approvalResolved;
        record.decision = u"allow-once"_s;
        record.source = u"app-local"_s;
        record.actor = u"app-user"_s;
        if (i % 3 == 2) {
            record.latencyMs = 1200 + i % 1000;
            record.note = u"decisionSource=\"app-local\" actor=app-user 승인"_s;
        }
    }
    return records;
}

double milliseconds(const QElapsedTimer &timer)
{
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

double median(std::vector<double> values)
{
    std::ranges::sort(values);
    return values[values.size() / 2];
}

double measureFloor(const QString &folder, const std::string &lines)
{
    QDir().mkpath(folder);
    const QByteArray path = QFile::encodeName(folder + "/floor.jsonl"_L1);
    const int file = ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    QElapsedTimer timer;
    timer.start();
    for (std::size_t begin = 0; begin < lines.size();) {
        const std::size_t end = lines.find('\n', begin) + 1;
        if (::write(file, lines.data() + begin, end - begin) != static_cast<ssize_t>(end - begin)) {
            std::perror("write");
            std::exit(2);
        }
        begin = end;
    }
    const double elapsed = milliseconds(timer);
    ::close(file);
    return elapsed;
}

struct StoreTimes {
    double caller = 0; ///< the calling thread's share: encoding and handing over
    double whole = 0; ///< until all is written
};

StoreTimes measureStore(const QString &folder, const std::vector<bram::AuditEventRecord> &records,
                        qint64 expectedBytes)
{
    FatalLog log;
    bram::AuditLogStore store(folder, {}, log);
    StoreTimes times;
    QElapsedTimer timer;
    timer.start();
    for (const auto &record : records) {
        store.append(record);
    }
    times.caller = milliseconds(timer);
    store.flush();
    times.whole = milliseconds(timer);

    qint64 bytes = 0;
    for (const QUrl &url : store.diagnosticLogFileURLs()) {
        bytes += QFileInfo(url.toLocalFile()).size();
    }
    if (bytes != expectedBytes) {
        std::fprintf(stderr, "%lld bytes written instead of %lld\n", static_cast<long long>(bytes),
                     static_cast<long long>(expectedBytes));
        std::exit(2);
    }
    return times;
}

/// Figures without a limit: an event that comes alone, until it is written, and reading all back.
void printOtherFigures(const QString &folder, const std::vector<bram::AuditEventRecord> &records)
{
    constexpr std::size_t aloneCount = 2000;
    FatalLog log;
    bram::AuditLogStore store(folder, {}, log);
    QElapsedTimer timer;
    timer.start();
    for (std::size_t i = 0; i < std::min(aloneCount, records.size()); ++i) {
        store.append(records[i]);
        store.flush();
    }
    std::printf("one event alone, until written  %8.1f us\n",
                milliseconds(timer) * 1000 / aloneCount);
    for (const auto &record : records) {
        store.append(record);
    }
    store.flush();
    timer.start();
    const auto count = store.records(0).size();
    const double elapsed = milliseconds(timer);
    std::printf("reading %lld records          %8.1f ms\n", static_cast<long long>(count), elapsed);
}

bool report(const char *what, double value, double floor, double limit)
{
    const double ratio = value / floor;
    const bool holds = ratio <= limit;
    std::printf("%-31s %8.1f ms  %5.2f times the floor, limit %.1f%s\n", what, value, ratio, limit,
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
        {u"check"_s, u"End with 1 when a ratio is above its limit."_s},
        {u"records"_s, u"How many records."_s, u"N"_s, u"200000"_s},
        {u"rounds"_s, u"How many rounds; medians count."_s, u"N"_s, u"9"_s},
        {u"directory"_s, u"Where to write."_s, u"DIR"_s, QDir::tempPath()},
    });
    parser.process(application);

    const auto records = sampleRecords(std::max(1, parser.value(u"records"_s).toInt()));
    std::string lines;
    for (const auto &record : records) {
        bram::appendAuditLine(record, lines);
    }
    std::vector<double> floors;
    std::vector<double> callers;
    std::vector<double> wholes;
    const int rounds = std::max(1, parser.value(u"rounds"_s).toInt());
    // The first round warms up and does not count.
    for (int round = -1; round < rounds; ++round) {
        const QTemporaryDir folder(parser.value(u"directory"_s) + "/bench-audit-XXXXXX"_L1);
        double floor = 0;
        StoreTimes store;
        for (int turn = 0; turn < 2; ++turn) {
            if ((round + turn) % 2 == 0) {
                floor = measureFloor(folder.filePath(u"floor"_s), lines);
            } else {
                store = measureStore(folder.filePath(u"store"_s), records,
                                     static_cast<qint64>(lines.size()));
            }
        }
        if (round >= 0) {
            floors.push_back(floor);
            callers.push_back(store.caller);
            wholes.push_back(store.whole);
        }
    }
    const double floor = median(floors);
    std::printf("%zu records, %zu bytes, medians of %d rounds\n", records.size(), lines.size(),
                rounds);
    std::printf("floor: one write a line         %8.1f ms\n", floor);
    const bool wholeHolds
        = report("store, until all are written", median(wholes), floor, wholeLimit);
    const bool callerHolds = report("the caller's share", median(callers), floor, callerLimit);
    const QTemporaryDir folder(parser.value(u"directory"_s) + "/bench-audit-XXXXXX"_L1);
    printOtherFigures(folder.path(), records);
    return parser.isSet(u"check"_s) && !(wholeHolds && callerHolds) ? 1 : 0;
}
