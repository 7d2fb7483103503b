// SPDX-License-Identifier: Apache-2.0
#include "app/practice/PracticeCommandLine.h"
#include "app/practice/PracticeReport.h"
#include "practice/PracticeScriptRunner.h"
#include "system/Clock.h"
#include "system/linux/StandardStreams.h"
#include "system/linux/TerminationSignals.h"

#include <QCoreApplication>

#include <cstdio>
#include <optional>

namespace
{
using namespace Qt::StringLiterals;

void printError(const QString &text)
{
    std::fprintf(stderr, "bram-practice-gateway: %s\n", qPrintable(text));
}

int run(QCoreApplication &application, const bram::PracticeProgram &program)
{
    const bram::SystemClock clock;
    bram::PracticeGateway gateway(program.gateway, clock);
    if (const auto listening = gateway.listen(); !listening) {
        printError(listening.error().message);
        return 1;
    }
    bram::printLine(u"listening on "_s + gateway.url().toString());
    bram::reportGateway(gateway, &application);

    std::optional<bram::PracticeSession> session;
    std::optional<bram::PracticeScriptRunner> script;
    if (program.script) {
        script.emplace(gateway, clock, *program.script);
        QObject::connect(&*script, &bram::PracticeScriptRunner::finished, &application,
                         [] { bram::printLine(u"script finished"_s); });
        QObject::connect(&*script, &bram::PracticeScriptRunner::quitRequested, &application,
                         &QCoreApplication::quit, Qt::QueuedConnection);
        QObject::connect(&*script, &bram::PracticeScriptRunner::failed, &application,
                         [](const QString &message) {
                             printError(message);
                             QCoreApplication::exit(1);
                         });
        script->start();
    } else {
        session.emplace(gateway, clock, program.session);
    }
    return QCoreApplication::exec();
}
} // namespace

int main(int argc, char **argv)
{
    bram::openClosedStandardStreams();
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"bram-practice-gateway"_s);

    const auto program = bram::parsePracticeCommandLine(QCoreApplication::arguments());
    if (!program) {
        if (program.error().status == 0) {
            bram::printLine(program.error().text);
        } else {
            printError(program.error().text);
        }
        return program.error().status;
    }
    const bram::TerminationSignals stopSignals;
    QObject::connect(&stopSignals, &bram::TerminationSignals::requested, &application,
                     &QCoreApplication::quit);
    return run(application, *program);
}
