// SPDX-License-Identifier: Apache-2.0

// What an automatic answer costs, against the least program on the same socket class that knows a frame by
// a substring and sends a canned answer. Both are processes of their own, measured in turns by the process
// that plays their gateway:
//  - one request at a time, from sending it to having the decision: median and 99th percentile;
//  - a flood, sent back to back: decisions a second; that each request is decided once and is on record
//    with all its events; what memory is left in use when it is over.
// And how long loading and merging 10,000 always-allow entries takes.
//
//   bench_allow [--check] [--requests N] [--flood N] [--rounds N] [--directory DIR]
//
// --check ends with 1 when a limit is broken. The state goes to a temporary folder inside DIR, by default
// the system's folder for temporary files; the log lines go to syslog and /dev/null.

#include "allow/AllowClients.h"
#include "road/Clients.h"
#include "support/BenchClient.h"
#include "support/BenchServer.h"
#include "support/Figures.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QProcess>
#include <QSet>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>
#include <cstdlib>

using namespace Qt::StringLiterals;
using namespace bram::bench;

namespace
{
constexpr double medianLimit = 1.5;
constexpr double percentileLimit = 2;
constexpr double rateLimit = 0.5;
constexpr double memoryLimitMiB = 10;
constexpr double loadingLimitMs = 100;
constexpr int loadedEntries = 10'000;
constexpr int pauseMs = 1;
constexpr int restMs = 1500;
constexpr int patienceMs = 120'000;

[[noreturn]] void fail(const QString &what)
{
    std::fprintf(stderr, "%s\n", qPrintable(what));
    std::exit(2);
}

void turnFor(int ms)
{
    QEventLoop loop;
    QTimer::singleShot(ms, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

double percentile99(std::vector<double> values)
{
    std::ranges::sort(values);
    return values[values.size() * 99 / 100];
}

double memoryMiB(const QProcess &process)
{
    QFile file(u"/proc/%1/smaps_rollup"_s.arg(process.processId()));
    if (file.open(QIODevice::ReadOnly)) {
        for (const QByteArray &line : file.readAll().split('\n')) {
            if (line.startsWith("Pss:")) {
                return line.simplified().split(' ').value(1).toDouble() / 1024;
            }
        }
    }
    fail(u"no figure for the memory in use"_s);
}

struct Client {
    QString name;
    QProcess process {};
    std::vector<double> medianUs {};
    std::vector<double> percentileUs {};
    std::vector<double> perSecond {};
};

/// Sends requests and takes the decisions, as a gateway does.
class Dispatcher final : public QObject
{
public:
    explicit Dispatcher(BenchServer &server)
        : m_server(server)
    {
        connect(&server, &BenchServer::frameReceived, this,
                [this](const QString &client, const QString &frame) { take(client, frame); });
    }

    void one(Client &client, const QString &id, std::vector<double> &timesUs)
    {
        const QString frame = requestFrame(id, allowedCommand);
        m_wanted = {id};
        QElapsedTimer timer;
        timer.start();
        m_server.send(client.name, frame);
        wait();
        timesUs.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e3);
        answerAll(client);
        turnFor(pauseMs);
    }

    /// Seconds from the first request to the last decision.
    double flood(Client &client, const QStringList &ids)
    {
        QStringList frames;
        for (const QString &id : ids) {
            frames.append(requestFrame(id, allowedCommand));
        }
        m_wanted = QSet<QString>(ids.begin(), ids.end());
        m_answersAtOnce = true;
        QElapsedTimer timer;
        timer.start();
        for (const QString &frame : std::as_const(frames)) {
            m_server.send(client.name, frame);
        }
        wait();
        m_answersAtOnce = false;
        return static_cast<double>(timer.nsecsElapsed()) / 1e9;
    }

private:
    void take(const QString &client, const QString &frame)
    {
        // The floor writes the members of the parameters in another order.
        static constexpr QLatin1StringView before("\"id\":\"");
        const qsizetype parameters = frame.indexOf("\"params\""_L1);
        const qsizetype begin = frame.indexOf(before, parameters) + before.size();
        const QString id = frame.mid(begin, frame.indexOf(u'"', begin) - begin);
        if (!frame.contains("\"allow-once\""_L1) || !m_wanted.remove(id)) {
            fail(u"not a decision that was waited for: "_s + frame);
        }
        m_answers += {answerFrame(frameId(frame)), resolvedFrame(id)};
        if (m_answersAtOnce) {
            for (const QString &answer : std::exchange(m_answers, {})) {
                m_server.send(client, answer);
            }
        }
        if (m_wanted.isEmpty()) {
            m_loop.quit();
        }
    }

    void wait()
    {
        if (m_wanted.isEmpty()) {
            return;
        }
        QTimer patience;
        connect(&patience, &QTimer::timeout, this,
                [this] { fail(u"%1 requests undecided"_s.arg(m_wanted.size())); });
        patience.start(patienceMs);
        m_loop.exec();
    }

    void answerAll(Client &client)
    {
        for (const QString &answer : std::exchange(m_answers, {})) {
            m_server.send(client.name, answer);
        }
    }

    BenchServer &m_server;
    QEventLoop m_loop;
    QSet<QString> m_wanted;
    QStringList m_answers;
    bool m_answersAtOnce = false;
};

/// How many records of each kind the audit log in `folder` holds; torn lines count for nothing.
int recordsOf(const QString &folder, const QByteArray &kind)
{
    int count = 0;
    const QDir files(folder);
    for (const QString &name : files.entryList({u"audit-events*.jsonl"_s}, QDir::Files)) {
        QFile file(files.filePath(name));
        if (file.open(QFile::ReadOnly)) {
            count += int(file.readAll().count("\"kind\":\"" + kind + '"'));
        }
    }
    return count;
}

bool report(const char *what, double value, const char *unit, double limit, bool holds)
{
    std::printf("%-34s %9.2f %s, limit %.1f%s\n", what, value, unit, limit,
                holds ? "" : "  BROKEN");
    return holds;
}

double medianRatio(const std::vector<double> &values, const std::vector<double> &floors)
{
    std::vector<double> ratios;
    for (std::size_t i = 0; i < values.size(); ++i) {
        ratios.push_back(values[i] / floors[i]);
    }
    return median(ratios);
}

void measureSingly(Dispatcher &dispatcher, Client &client, int round, int requests)
{
    std::vector<double> timesUs;
    for (int i = 0; i < requests; ++i) {
        dispatcher.one(client, u"one-%1-%2"_s.arg(round).arg(i), timesUs);
    }
    if (round > 0) {
        client.medianUs.push_back(median(timesUs));
        client.percentileUs.push_back(percentile99(timesUs));
    }
}

void measureFlood(Dispatcher &dispatcher, Client &client, int round, int requests)
{
    QStringList ids;
    for (int i = 0; i < requests; ++i) {
        ids.append(u"flood-%1-%2"_s.arg(round).arg(i));
    }
    const double seconds = dispatcher.flood(client, ids);
    turnFor(restMs);
    client.perSecond.push_back(requests / seconds);
}

int runServer(const QCommandLineParser &parser)
{
    const QTemporaryDir folder(parser.value(u"directory"_s) + "/bench-allow-XXXXXX"_L1);
    const int rounds = std::max(1, parser.value(u"rounds"_s).toInt());
    const int requests = std::max(1, parser.value(u"requests"_s).toInt());
    const int flood = std::max(1, parser.value(u"flood"_s).toInt());
    BenchServer server;
    Dispatcher dispatcher(server);
    Client core {.name = u"core"_s};
    Client floor {.name = u"floor"_s};
    int ready = 0;
    QEventLoop start;
    QObject::connect(&server, &BenchServer::clientReady, &start, [&] {
        if (++ready == 2) {
            start.quit();
        }
    });
    for (Client *client : {&core, &floor}) {
        client->process.setStandardOutputFile(QProcess::nullDevice());
        client->process.setStandardErrorFile(QProcess::nullDevice());
        client->process.start(QCoreApplication::applicationFilePath(),
                              {u"--client"_s, client->name, u"--url"_s, server.url(client->name),
                               u"--directory"_s, folder.path()});
    }
    start.exec();
    turnFor(restMs);

    for (int round = 0; round <= rounds; ++round) { // the first is for warming up
        measureSingly(dispatcher, core, round, requests);
        measureSingly(dispatcher, floor, round, requests);
    }
    turnFor(restMs);
    const double memoryBefore = memoryMiB(core.process);
    constexpr int floods = 7;
    for (int round = 0; round < floods; ++round) {
        measureFlood(dispatcher, core, round, flood);
        measureFlood(dispatcher, floor, round, flood);
    }
    const double memoryLeft = memoryMiB(core.process) - memoryBefore;
    for (Client *client : {&core, &floor}) {
        client->process.kill();
        client->process.waitForFinished();
    }
    const int wanted = floods * flood + (rounds + 1) * requests;
    for (const char *kind :
         {"approval_requested", "approval_decision_requested", "approval_resolved"}) {
        if (const int found = recordsOf(folder.path(), kind); found != wanted) {
            fail(u"%1 of %2 requests are on record as %3"_s.arg(found).arg(wanted).arg(
                QLatin1StringView(kind)));
        }
    }
    std::vector<double> loading;
    for (int i = 0; i < 5; ++i) {
        const QTemporaryDir own(folder.path() + "/load-XXXXXX"_L1);
        loading.push_back(loadingMs(own.path(), loadedEntries));
    }

    std::printf("one at a time: %.1f us, 99th percentile %.1f us; floor %.1f us, %.1f us\n",
                median(core.medianUs), median(core.percentileUs), median(floor.medianUs),
                median(floor.percentileUs));
    std::printf("a flood of %d: %.0f a second, floor %.0f; every event on record\n", flood,
                median(core.perSecond), median(floor.perSecond));
    const double middle = medianRatio(core.medianUs, floor.medianUs);
    const double slow = medianRatio(core.percentileUs, floor.percentileUs);
    const double rate = medianRatio(core.perSecond, floor.perSecond);
    bool holds
        = report("one at a time, median", middle, "times", medianLimit, middle <= medianLimit);
    holds &= report("one at a time, 99th percentile", slow, "times", percentileLimit,
                    slow <= percentileLimit);
    holds &= report("rate of the flood", rate, "times", rateLimit, rate >= rateLimit);
    holds &= report("memory left in use", memoryLeft, "MiB", memoryLimitMiB,
                    memoryLeft <= memoryLimitMiB);
    holds &= report("loading 10,000 entries", median(loading), "ms", loadingLimitMs,
                    median(loading) < loadingLimitMs);
    return parser.isSet(u"check"_s) && !holds ? 1 : 0;
}
} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOptions({
        {u"check"_s, u"End with 1 when a limit is broken."_s},
        {u"requests"_s, u"How many requests a round, one at a time."_s, u"N"_s, u"300"_s},
        {u"flood"_s, u"How many requests in a flood."_s, u"N"_s, u"20000"_s},
        {u"rounds"_s, u"How many rounds, one at a time; medians count."_s, u"N"_s, u"9"_s},
        {u"directory"_s, u"Where to write."_s, u"DIR"_s, QDir::tempPath()},
    });
    parser.addOptions(clientOptions());
    parser.process(application);
    const QString role = clientRole(parser);
    if (role == "core"_L1) {
        return runAllowingClient(parser.value(u"url"_s), parser.value(u"directory"_s));
    }
    if (role == "floor"_L1) {
        return runFloorClient(parser.value(u"url"_s));
    }
    return runServer(parser);
}
