// SPDX-License-Identifier: Apache-2.0
#include "app/Application.h"
#include "app/LaunchOptions.h"
#include "app/Places.h"
#include "app/PracticeWorld.h"
#include "app/SingleInstanceLock.h"
#include "system/Clock.h"
#include "system/ProcessPrivacy.h"
#include "system/linux/DisplayServer.h"
#include "system/linux/StandardStreams.h"

#include <QApplication>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <memory>
#include <string_view>

#include <unistd.h>

namespace
{

constexpr int usageError = 2;

void print(FILE *stream, const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stream);
    std::fflush(stream);
}

bool wantsPractice(const bram::LaunchOptions &options, const bram::Places &places)
{
    using Practice = bram::LaunchOptions::Practice;
    if (options.practice != Practice::IfUnconfigured) {
        return options.practice == Practice::Yes;
    }
    return !places.environment.trimmed(QStringLiteral("BRACKWEN_GATEWAY_URL"))
        && !bram::BrackwenConfig(places.environment, places.account).isPresent();
}

/// Why the program does not start, and with which status it ends.
int endWithoutLock(const bram::SingleInstanceLock &lock, bram::SingleInstanceLock::Result result,
                   const bram::LaunchOptions &options)
{
    if (result == bram::SingleInstanceLock::Result::Impossible) {
        print(stderr,
              QStringLiteral("bram: not started, because nothing would keep a second copy from "
                             "running beside this one: ")
                  + lock.reason() + u'\n');
        return EXIT_FAILURE;
    }
    if (options.selfTest) {
        // Success would tell a script that the test was made.
        print(stderr, QStringLiteral("bram: not tested: another copy is running.\n"));
        return EXIT_FAILURE;
    }
    // The copy that is running already wins: without a word, unless a person waits for one.
    if (FILE *terminal = isatty(STDERR_FILENO) != 0 ? stderr
            : isatty(STDOUT_FILENO) != 0            ? stdout
                                                    : nullptr) {
        const QString process
            = lock.holder() ? QStringLiteral(" (process %1)").arg(*lock.holder()) : QString();
        print(terminal,
              QStringLiteral("bram: BRAM is running already%1; this copy ends.\n").arg(process));
    }
    return EXIT_SUCCESS;
}

int runProgram(QCoreApplication &application, const bram::LaunchOptions &options,
               bram::SurfaceKind surface)
{
    // A reader that goes away is an error of that write, not the end of this program.
    std::signal(SIGPIPE, SIG_IGN);

    std::unique_ptr<bram::PracticeWorld> practice;
    bram::Places places = bram::Places::ofOperator();
    bram::SingleInstanceLock lock(bram::SingleInstanceLock::Paths::of(places.environment));
    const bram::SystemClock clock;
    if (wantsPractice(options, places)) {
        if (options.practice == bram::LaunchOptions::Practice::IfUnconfigured) {
            print(stdout,
                  QStringLiteral("No agent platform is configured here (no BRACKWEN_GATEWAY_URL,\n"
                                 "no readable brackwen.json): starting practice mode.\n"));
        }
        print(stdout,
              QStringLiteral("Practice mode: made-up requests; nothing is executed,\n"
                             "nothing of yours is touched.\n"));
        if (surface == bram::SurfaceKind::Desktop) {
            print(stdout,
                  QStringLiteral("The first request comes in a popup;\n"
                                 "the menu of the shield in the tray has everything else.\n"));
        }
        auto world = bram::PracticeWorld::create(clock);
        if (!world) {
            print(stderr, QStringLiteral("bram: ") + world.error().message + u'\n');
            return EXIT_FAILURE;
        }
        practice = *std::move(world);
    } else if (const auto result = lock.acquire();
               result != bram::SingleInstanceLock::Result::Acquired) {
        return endWithoutLock(lock, result, options);
    } else {
        places.lockFile = lock.path();
        // From here on there are secrets, unless the developer wants to look.
        if (!places.environment.trimmed(QStringLiteral("BRACKWEN_APPROVALS_TRACEABLE"))) {
            bram::keepProcessPrivate();
        }
    }

    bram::Application program({.places = std::move(places),
                               .practice = std::move(practice),
                               .surface = surface,
                               .options = options},
                              clock);
    // Not quit(): with a desktop that would first close the windows one by one, and a window that is asking
    // would answer, and the next request would be shown.
    QObject::connect(
        &program, &bram::Application::finished, &application,
        [] { QCoreApplication::exit(EXIT_SUCCESS); }, Qt::QueuedConnection);
    program.start();
    const int status = application.exec();
    if (!program.verdict().isEmpty()) {
        print(stdout, program.verdict() + u'\n');
    }
    return status == EXIT_SUCCESS ? program.exitStatus() : status;
}

/// Decided before the command line can be read properly, because that needs an application object, and
/// which one is the question.
bram::SurfaceKind surfaceFor(int argc, char **argv)
{
    constexpr std::array<std::string_view, 6> forTerminal {"--terminal", "-terminal", "--help",
                                                           "-h",         "--version", "-v"};
    for (int i = 1; i < argc; ++i) {
        if (std::ranges::find(forTerminal, argv[i]) != forTerminal.end()) {
            return bram::SurfaceKind::Terminal;
        }
    }
    return bram::isDisplayUsable() ? bram::SurfaceKind::Desktop : bram::SurfaceKind::Terminal;
}

std::unique_ptr<QCoreApplication> makeApplication(int &argc, char **argv, bram::SurfaceKind surface)
{
    if (surface == bram::SurfaceKind::Terminal) {
        return std::make_unique<QCoreApplication>(argc, argv);
    }
    auto application = std::make_unique<QApplication>(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QGuiApplication::setDesktopFileName(QStringLiteral("bram"));
    return application;
}

} // namespace

int main(int argc, char **argv)
{
    bram::openClosedStandardStreams();
    const bram::SurfaceKind surface = surfaceFor(argc, argv);
    const auto application = makeApplication(argc, argv, surface);
    QCoreApplication::setApplicationName(QStringLiteral("bram"));
    QCoreApplication::setApplicationVersion(QStringLiteral(BRAM_VERSION));

    const auto options
        = bram::parseLaunchOptions(QCoreApplication::arguments(), bram::Environment::ofProcess());
    if (!options) {
        print(stderr,
              QStringLiteral("bram: ") + options.error().message
                  + QStringLiteral(" See 'bram --help'.\n"));
        return usageError;
    }
    if (const auto *text = std::get_if<bram::LaunchText>(&*options)) {
        print(stdout, text->text);
        return EXIT_SUCCESS;
    }
    return runProgram(*application, std::get<bram::LaunchOptions>(*options), surface);
}
