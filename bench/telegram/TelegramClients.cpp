// SPDX-License-Identifier: Apache-2.0
#include "telegram/TelegramClients.h"

#include "system/BackgroundTasks.h"
#include "system/Clock.h"
#include "system/SystemLog.h"
#include "telegram/TelegramApprovalBridge.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSocketNotifier>
#include <QTimer>

#include <algorithm>
#include <cstdio>

#include <unistd.h>

namespace bram::bench
{

using namespace Qt::StringLiterals;

namespace
{
constexpr int longestList = 50;

class StandardErrorLog final : public SystemLog
{
public:
    void write(QStringView line) override
    {
        std::fprintf(stderr, "%s\n", line.toUtf8().constData());
    }
};

void poll(QNetworkAccessManager &network, const QNetworkRequest &request)
{
    QNetworkReply *reply
        = network.post(request, R"({"offset":0,"timeout":25,"allowed_updates":["message"]})");
    QObject::connect(reply, &QNetworkReply::finished, &network, [&network, request, reply] {
        reply->readAll();
        reply->deleteLater();
        poll(network, request);
    });
}
} // namespace

QList<TelegramApprovalEntry> pendingAfter(int requests)
{
    QList<TelegramApprovalEntry> entries;
    for (int i = requests; i > std::max(0, requests - longestList); --i) {
        entries.append({.approvalId = u"request-%1"_s.arg(i),
                        .command = u"git commit -m 'step %1'"_s.arg(i),
                        .agentId = u"main"_s});
    }
    return entries;
}

int runBridgeClient(const QString &url, const QString &token, const QList<qint64> &chatIds)
{
    StandardErrorLog log;
    BackgroundTasks tasks(log);
    const SystemClock clock;
    QNetworkAccessManager network;
    TelegramBotConfig config;
    config.token = token;
    config.chatIds = chatIds;
    config.enablePolling = true;
    ChatMemories memories;
    TelegramApprovalBridge bridge(config, QUrl(url), [](const TelegramDecision &) { return RemoteVerdict::NotPending; },
                                  {network, memories, clock, log, tasks});
    bridge.start();

    QElapsedTimer sinceStart;
    int arrived = 0;
    QTimer arrival;
    arrival.setTimerType(Qt::PreciseTimer);
    QObject::connect(&arrival, &QTimer::timeout, &bridge, [&] {
        const int due = std::min<int>(
            burstRequests, static_cast<int>(sinceStart.elapsed() * burstRequests / burstMs));
        while (arrived < due) {
            bridge.updatePending(pendingAfter(++arrived));
        }
        if (arrived == burstRequests) {
            arrival.stop();
            std::printf("%lld\n", static_cast<long long>(SystemClock().nowMs()));
            std::fflush(stdout);
        }
    });
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &bridge, [&] {
        input.setEnabled(false);
        sinceStart.start();
        arrival.start(1);
    });
    return QCoreApplication::exec();
}

int runFloorPoller(const QString &url, const QString &token)
{
    QNetworkAccessManager network;
    QNetworkRequest request(QUrl(url + u"/bot"_s + token + u"/getUpdates"_s));
    request.setHeader(QNetworkRequest::ContentTypeHeader, u"application/json"_s);
    poll(network, request);
    return QCoreApplication::exec();
}

} // namespace bram::bench
