// SPDX-License-Identifier: Apache-2.0

// What the Telegram bridge costs, against the practice Bot API, which answers in 50 ms:
//  - idle: the calls of a bridge in whose chats nothing happens, and the context switches of its process,
//    against the least program that waits for updates with the same class, in the same time;
//  - a burst: how many calls a chat needs for 1,000 requests that arrive within a second, with three
//    chats, and when after the last request each shows the right list.
//
//   bench_telegram [--check] [--seconds N]
//
// --check ends with 1 when a limit is broken.

#include "practice/PracticeBotApi.h"
#include "support/BenchClient.h"
#include "system/Clock.h"
#include "telegram/PendingMessage.h"
#include "telegram/TelegramClients.h"
#include "tray/ProcessFigures.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QEventLoop>
#include <QProcess>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>

using namespace Qt::StringLiterals;
using namespace bram;
using namespace bram::bench;

namespace
{
constexpr int apiDelayMs = 50;
constexpr int restMs = 1500;
constexpr int patienceMs = 20'000;
constexpr int callLimit = 10;
constexpr qint64 latenessLimitMs = 2000;
constexpr double secondsAPoll = 25;
constexpr double switchLimit = 2; ///< times the floor's, and a few for what happens once
constexpr qint64 switchAllowance = 10;
const QList<qint64> chatIds {501, 502, 503};
const QString token = u"123456:bench"_s;

[[noreturn]] void fail(const char *what)
{
    std::fprintf(stderr, "%s\n", what);
    std::exit(2);
}

void turnFor(int ms)
{
    QEventLoop loop;
    QTimer::singleShot(ms, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

void turnUntil(const std::function<bool()> &holds, const char *what)
{
    for (int turned = 0; !holds(); turned += 10) {
        if (turned > patienceMs) {
            fail(what);
        }
        turnFor(10);
    }
}

/// A client in a process of its own, with a Bot API of its own.
struct Client {
    explicit Client(const QString &name)
    {
        if (!api.listen()) {
            fail("no port for the practice Bot API");
        }
        api.setBehaviour({}, {.delayMs = apiDelayMs});
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.start(QCoreApplication::applicationFilePath(),
                      {u"--client"_s, name, u"--url"_s, api.url().toString()});
        turnUntil([this] { return api.isPolled(); }, "the client does not poll");
    }
    ~Client()
    {
        process.kill();
        process.waitForFinished();
    }
    Q_DISABLE_COPY_MOVE(Client)

    SystemClock clock;
    PracticeBotApi api {{.token = token, .chatIds = chatIds}, clock};
    QProcess process;
};

bool report(const char *what, double value, const char *unit, double limit)
{
    const bool holds = value <= limit;
    std::printf("%-40s %8.1f %s, limit %.1f%s\n", what, value, unit, limit,
                holds ? "" : "  BROKEN");
    return holds;
}

bool measureIdle(Client &bridge, Client &floor, int seconds)
{
    turnFor(restMs);
    const auto bridgeBefore = threadSwitches(bridge.process.processId());
    const auto floorBefore = threadSwitches(floor.process.processId());
    const qsizetype callsBefore = bridge.api.calls().size();
    turnFor(seconds * 1000);
    const qint64 switches
        = switchesBetween(bridgeBefore, threadSwitches(bridge.process.processId()));
    const qint64 floorSwitches
        = switchesBetween(floorBefore, threadSwitches(floor.process.processId()));
    const auto calls = static_cast<double>(bridge.api.calls().size() - callsBefore);
    std::printf("idle for %d s: %.0f calls, %lld context switches; floor %lld\n", seconds, calls,
                static_cast<long long>(switches), static_cast<long long>(floorSwitches));
    const bool isFew = report("idle, calls", calls, "calls", seconds / secondsAPoll + 1);
    return report("idle, context switches", static_cast<double>(switches), "switches",
                  switchLimit * static_cast<double>(floorSwitches) + switchAllowance)
        && isFew;
}

bool measureBurst(Client &bridge)
{
    PracticeBotApi &api = bridge.api;
    const QString wanted = renderPendingText(pendingAfter(burstRequests), {.mode = TelegramMode::Polling});
    const auto showsAll = [&] {
        return std::ranges::all_of(chatIds, [&](qint64 chatId) {
            const auto messages = api.chats().messages(chatId);
            return !messages.isEmpty() && messages.constLast().text == wanted;
        });
    };
    bridge.process.write("go\n");
    turnUntil([&] { return bridge.process.canReadLine(); }, "the burst does not end");
    const qint64 lastMs = bridge.process.readLine().trimmed().toLongLong();
    turnUntil(showsAll, "the chats do not show the right list");
    turnFor(restMs); // there shall be no further call

    bool holds = true;
    for (const qint64 chatId : chatIds) {
        qint64 calls = 0;
        qint64 latestMs = 0;
        for (const BotCall &call : api.calls()) {
            if (call.chatId == chatId) {
                ++calls;
                latestMs = call.atMs + apiDelayMs;
            }
        }
        std::printf("chat %lld, %d requests in %d ms:\n", static_cast<long long>(chatId),
                    burstRequests, burstMs);
        holds &= report("  calls", static_cast<double>(calls), "calls", callLimit);
        holds &= report("  right list after the last request",
                        static_cast<double>(latestMs - lastMs), "ms", latenessLimitMs);
        if (api.chats().messages(chatId).size() != 1) {
            fail("a chat has more than one status message");
        }
    }
    return holds;
}

int runServer(const QCommandLineParser &parser)
{
    Client bridge(u"bridge"_s);
    Client floor(u"floor"_s);
    bool holds = measureIdle(bridge, floor, std::max(1, parser.value(u"seconds"_s).toInt()));
    holds &= measureBurst(bridge);
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
        {u"seconds"_s, u"How long the bridge is watched while it is idle."_s, u"N"_s, u"51"_s},
    });
    parser.addOptions(clientOptions());
    parser.process(application);
    const QString role = clientRole(parser);
    if (role == "bridge"_L1) {
        return runBridgeClient(parser.value(u"url"_s), token, chatIds);
    }
    if (role == "floor"_L1) {
        return runFloorPoller(parser.value(u"url"_s), token);
    }
    return runServer(parser);
}
