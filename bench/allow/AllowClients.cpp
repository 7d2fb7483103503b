// SPDX-License-Identifier: Apache-2.0
#include "allow/AllowClients.h"

#include "allowlist/CommandDigest.h"
#include "app/Core.h"
#include "system/Clock.h"
#include "system/MemorySecretStore.h"
#include "system/linux/SyslogLog.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>

#include <cstdio>
#include <cstdlib>

namespace bram::bench
{

using namespace Qt::StringLiterals;

const QString allowedCommand = u"git push --force-with-lease origin main"_s;

int runAllowingClient(const QString &url, const QString &folder)
{
    const SystemClock clock;
    SyslogLog log(SyslogLog::Syslog | SyslogLog::StandardError);
    MemorySecretStore secrets;
    const Places places = Places::ofPractice(folder, url);
    {
        Preferences preferences(places.preferencesFile);
        AlwaysAllowList(preferences, folder, log).rememberAlwaysAllow(allowedCommand);
    }
    Core core({.places = places,
               .secrets = secrets,
               .clock = clock,
               .log = log,
               .commandLine = CommandLineUse::Never});
    core.start();
    return QCoreApplication::exec();
}

double loadingMs(const QString &folder, int entries)
{
    SyslogLog log(SyslogLog::StandardError);
    const QString path = folder + u"/preferences.ini"_s;
    const auto command = [](int i) { return u"make -C /srv/project/part-%1 all"_s.arg(i); };
    QByteArrayList patterns;
    for (int i = entries / 3; i < entries; ++i) {
        patterns.append("{\"pattern\":\"" + command(i).toUtf8() + "\"}");
    }
    QFile file(folder + u"/exec-approvals.json"_s);
    if (!file.open(QFile::WriteOnly)) {
        std::exit(2);
    }
    file.write(R"({"agents":{"main":{"allowlist":[)" + patterns.join(',') + "]}}}");
    file.close();
    {
        Preferences preferences(path);
        AppAlwaysAllowList own(preferences, log);
        for (int i = 0; i < entries * 2 / 3; ++i) {
            const QString text = command(i);
            const QString digest = *normalizedCommandDigest(text);
            own.insert(digest, text, knownCommand(text, digest));
        }
        own.persistAlwaysAllowState();
    }
    QElapsedTimer timer;
    timer.start();
    Preferences preferences(path);
    AlwaysAllowList list(preferences, folder, log);
    list.start();
    const double ms = static_cast<double>(timer.nsecsElapsed()) / 1e6;
    if (list.entries().size() != entries) {
        std::fprintf(stderr, "%lld entries were loaded\n", qlonglong(list.entries().size()));
        std::exit(2);
    }
    return ms;
}

} // namespace bram::bench
