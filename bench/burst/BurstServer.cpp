// SPDX-License-Identifier: Apache-2.0
#include "burst/BurstServer.h"

#include "burst/BurstRequests.h"
#include "support/BenchServer.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <cstdio>

#include <unistd.h>

namespace bram::bench
{

using namespace Qt::StringLiterals;

namespace
{
void obey(BenchServer &server, const QByteArray &order)
{
    const qsizetype blank = order.indexOf(' ');
    const bool resolves = order.first(blank) == "resolve";
    const int count = order.sliced(blank + 1).toInt();
    QStringList frames;
    for (int i = 0; i < count; ++i) {
        frames.append(resolves ? resolvedFrame(burstId(i))
                               : requestFrame(burstId(i), burstCommand(i)));
    }
    for (const QString &frame : frames) {
        server.send(QString::fromLatin1(burstClient), frame);
    }
}
} // namespace

int runBurstServer()
{
    BenchServer server;
    std::printf("%s\n", qPrintable(server.url(QString::fromLatin1(burstClient))));
    std::fflush(stdout);
    QByteArray input;
    QSocketNotifier notifier(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &server, [&] {
        char bytes[256];
        const ssize_t count = ::read(STDIN_FILENO, bytes, sizeof bytes);
        if (count <= 0) {
            QCoreApplication::quit();
            return;
        }
        input.append(bytes, count);
        for (qsizetype end = input.indexOf('\n'); end >= 0; end = input.indexOf('\n')) {
            obey(server, input.first(end));
            input.remove(0, end + 1);
        }
    });
    return QCoreApplication::exec();
}

} // namespace bram::bench
