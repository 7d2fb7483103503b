// SPDX-License-Identifier: Apache-2.0

// What the road of a request costs, from its frame to the frame with the decision, against the least
// that a program can do on the same socket class: find the id in the frame and send a canned answer.
// Both are processes of their own, measured by the process that plays their gateway, in the same run and
// in turns: the time from sending a request to having the decision, and the processor time of all
// threads for each request, with everything that follows the decision (answer, announcement, record).
//
//   bench_road [--check] [--requests N] [--rounds N] [--pause MS] [--directory DIR]
//
// A pause of 1 ms lets what follows a decision (answer, announcement, record) end before the next request,
// so that it is not part of that one's time. With --pause 5 each request finds both programs asleep and
// their caches cold, and has the audit thread's wake-up for itself; with --pause 0 they queue up.
//
// --check ends with 1 when a ratio is above its limit. The audit log goes to a temporary folder inside
// DIR, by default the system's folder for temporary files; the log lines go to syslog and /dev/null.

#include "road/Clients.h"
#include "support/BenchClient.h"
#include "support/BenchServer.h"
#include "support/Figures.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>

using namespace Qt::StringLiterals;
using namespace bram::bench;

namespace
{
constexpr double timeLimit = 1.5;
constexpr double processorLimit = 2;
/// Before the processor time is read: lets everything come to rest.
constexpr int restMs = 100;
/// Nothing is measured until both clients have been in use for a while.
constexpr int warmUpRounds = 1;

struct Client {
    QString name;
    QProcess process {};
    std::vector<double> medianUs {}; ///< of each round
    std::vector<double> processorUs {}; ///< for each request, of each round
};

double processorUs(const QProcess &process)
{
    clockid_t clock = {};
    timespec time = {};
    if (clock_getcpuclockid(static_cast<pid_t>(process.processId()), &clock) != 0
        || clock_gettime(clock, &time) != 0) {
        std::perror("processor time");
        std::exit(2);
    }
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
}

/// Sends one client its requests of one round, one at a time.
class Round final : public QObject
{
public:
    Round(BenchServer &server, Client &client, int round, int requests, int pauseMs,
          std::function<void()> finished)
        : m_server(server)
        , m_client(client)
        , m_round(round)
        , m_requests(requests)
        , m_pauseMs(pauseMs)
        , m_finished(std::move(finished))
        , m_processorBeforeUs(processorUs(client.process))
    {
        connect(&server, &BenchServer::frameReceived, this,
                [this](const QString &name, const QString &frame) {
                    if (name == m_client.name) {
                        onDecision(frame);
                    }
                });
        m_pause.setSingleShot(true);
        m_pause.setTimerType(Qt::PreciseTimer);
        connect(&m_pause, &QTimer::timeout, this, &Round::sendNext);
        sendNext();
    }

private:
    void sendNext()
    {
        const int number = static_cast<int>(m_timesUs.size());
        if (number == m_requests) {
            QTimer::singleShot(restMs, this, &Round::finish);
            return;
        }
        m_approvalId = u"9b2f6c1e-4d7a-4c55-%1-%2"_s.arg(m_round + 1, 4, 16, QChar(u'0'))
                           .arg(number, 12, 16, QChar(u'0'));
        const QString frame
            = requestFrame(m_approvalId, u"git push --force-with-lease origin main"_s);
        m_sent.start();
        m_server.send(m_client.name, frame);
    }

    void onDecision(const QString &frame)
    {
        m_timesUs.push_back(static_cast<double>(m_sent.nsecsElapsed()) / 1e3);
        if (!frame.contains(m_approvalId) || !frame.contains("\"allow-once\""_L1)) {
            std::fprintf(stderr, "not the decision on this request: %s\n", qPrintable(frame));
            std::exit(2);
        }
        m_server.send(m_client.name, answerFrame(frameId(frame)));
        m_server.send(m_client.name, resolvedFrame(m_approvalId));
        m_pause.start(m_pauseMs);
    }

    void finish()
    {
        if (m_round >= 0) {
            m_client.medianUs.push_back(median(m_timesUs));
            m_client.processorUs.push_back((processorUs(m_client.process) - m_processorBeforeUs)
                                           / m_requests);
        }
        m_finished();
    }

    BenchServer &m_server;
    Client &m_client;
    const int m_round;
    const int m_requests;
    const int m_pauseMs;
    const std::function<void()> m_finished;
    const double m_processorBeforeUs;
    QTimer m_pause;
    QElapsedTimer m_sent;
    QString m_approvalId;
    std::vector<double> m_timesUs;
};

bool report(const char *what, const std::vector<double> &values, const std::vector<double> &floors,
            double limit)
{
    std::vector<double> ratios;
    for (std::size_t i = 0; i < values.size(); ++i) {
        ratios.push_back(values[i] / floors[i]);
    }
    const double ratio = median(ratios);
    const bool holds = ratio <= limit;
    std::printf("%-28s %8.1f us, floor %8.1f us: %5.2f times, limit %.1f%s\n", what, median(values),
                median(floors), ratio, limit, holds ? "" : "  ABOVE");
    return holds;
}

int runServer(const QCommandLineParser &parser)
{
    const QTemporaryDir folder(parser.value(u"directory"_s) + "/bench-road-XXXXXX"_L1);
    const int rounds = std::max(1, parser.value(u"rounds"_s).toInt());
    const int requests = std::max(1, parser.value(u"requests"_s).toInt());
    const int pauseMs = std::max(0, parser.value(u"pause"_s).toInt());
    BenchServer server;
    Client core {.name = u"core"_s};
    Client floor {.name = u"floor"_s};
    std::unique_ptr<Round> current;
    int turn = -2 * warmUpRounds; // two turns, one for each client, make a round
    const std::function<void()> next = [&] {
        if (turn == 2 * rounds) {
            QCoreApplication::quit();
            return;
        }
        const int round = turn >> 1;
        Client &client = (round + turn) % 2 == 0 ? core : floor;
        ++turn;
        // Not from inside the round that has just ended.
        QTimer::singleShot(0, &server, [&, round] {
            current = std::make_unique<Round>(server, client, round, requests, pauseMs, next);
        });
    };
    int ready = 0;
    QObject::connect(&server, &BenchServer::clientReady, &server, [&] {
        if (++ready == 2) {
            QTimer::singleShot(restMs, &server, next);
        }
    });
    for (Client *client : {&core, &floor}) {
        client->process.setStandardOutputFile(QProcess::nullDevice());
        client->process.setStandardErrorFile(QProcess::nullDevice());
        client->process.start(QCoreApplication::applicationFilePath(),
                              {u"--client"_s, client->name, u"--url"_s, server.url(client->name),
                               u"--directory"_s, folder.path()});
    }
    QCoreApplication::exec();
    current.reset();
    for (Client *client : {&core, &floor}) {
        client->process.kill();
        client->process.waitForFinished();
    }

    std::printf("%d requests a round, one at a time; medians of %d rounds\n", requests, rounds);
    const bool timeHolds = report("request to decision", core.medianUs, floor.medianUs, timeLimit);
    const bool processorHolds
        = report("processor time for each", core.processorUs, floor.processorUs, processorLimit);
    return parser.isSet(u"check"_s) && !(timeHolds && processorHolds) ? 1 : 0;
}
} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOptions({
        {u"check"_s, u"End with 1 when a ratio is above its limit."_s},
        {u"requests"_s, u"How many requests a round, for each program."_s, u"N"_s, u"300"_s},
        {u"rounds"_s, u"How many rounds; medians count."_s, u"N"_s, u"31"_s},
        {u"pause"_s, u"Between two requests, in milliseconds."_s, u"MS"_s, u"1"_s},
        {u"directory"_s, u"Where to write."_s, u"DIR"_s, QDir::tempPath()},
    });
    parser.addOptions(clientOptions());
    parser.process(application);
    const QString role = clientRole(parser);
    if (role == "core"_L1) {
        return runCoreClient(parser.value(u"url"_s), parser.value(u"directory"_s));
    }
    if (role == "floor"_L1) {
        return runFloorClient(parser.value(u"url"_s));
    }
    return runServer(parser);
}
