// SPDX-License-Identifier: Apache-2.0
#include "road/Clients.h"

#include "app/Core.h"
#include "system/Clock.h"
#include "system/MemorySecretStore.h"
#include "system/linux/SyslogLog.h"

#include <QCoreApplication>
#include <QWebSocket>

namespace bram::bench
{

using namespace Qt::StringLiterals;

int runCoreClient(const QString &url, const QString &folder)
{
    const SystemClock clock;
    SyslogLog log(SyslogLog::Syslog | SyslogLog::StandardError);
    MemorySecretStore secrets;
    Core core({.places = Places::ofPractice(folder, url),
               .secrets = secrets,
               .clock = clock,
               .log = log,
               .commandLine = CommandLineUse::Never});
    auto &monitor = core.monitor();
    QObject::connect(&monitor.board(), &ApprovalBoard::displayItemsChanged, &monitor, [&monitor] {
        for (const auto &item : monitor.board().displayItems()) {
            if (!monitor.decisions().isResolving(item.approvalId)) {
                monitor.decisions().resolve(item.approvalId, ApprovalDecision::AllowOnce,
                                            DecisionOrigin::local(), ActivityTracking::Record);
            }
        }
    });
    monitor.start();
    return QCoreApplication::exec();
}

int runFloorClient(const QString &url)
{
    QWebSocket socket;
    QObject::connect(&socket, &QWebSocket::connected, &socket, [&socket] {
        socket.sendTextMessage(u"{\"id\":\"0\",\"method\":\"connect\",\"type\":\"req\"}"_s);
    });
    QObject::connect(
        &socket, &QWebSocket::textMessageReceived, &socket, [&socket](const QString &frame) {
            if (!frame.contains("exec.approval.requested"_L1)) {
                return;
            }
            constexpr QLatin1StringView before("\"id\":\"");
            const qsizetype begin = frame.indexOf(before) + before.size();
            const qsizetype end = frame.indexOf(u'"', begin);
            socket.sendTextMessage(u"{\"id\":\"1\",\"method\":\"exec.approval.resolve\",\"params\":"
                                   "{\"decision\":\"allow-once\",\"id\":\""_s
                                   + frame.mid(begin, end - begin) + "\"},\"type\":\"req\"}"_L1);
        });
    QObject::connect(&socket, &QWebSocket::disconnected, &socket,
                     [] { QCoreApplication::exit(2); });
    socket.open(QUrl(url));
    return QCoreApplication::exec();
}

} // namespace bram::bench
