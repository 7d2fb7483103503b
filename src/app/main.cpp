// SPDX-License-Identifier: Apache-2.0
#include "app/Application.h"
#include "app/LaunchOptions.h"
#include "app/Places.h"
#include "app/PracticeWorld.h"
#include "app/SingleInstanceLock.h"
#include "system/Clock.h"
#include "system/linux/StandardStreams.h"

#include <QCoreApplication>

#include <csignal>
#include <cstdio>

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

int runApplication(QCoreApplication &application, const bram::LaunchOptions &options)
{
    // A reader that goes away is an error of that write, not the end of this program.
    std::signal(SIGPIPE, SIG_IGN);

    bram::SingleInstanceLock lock;
    std::unique_ptr<bram::PracticeWorld> practice;
    bram::Places places = bram::Places::ofOperator();
    const bram::SystemClock clock;
    if (wantsPractice(options, places)) {
        if (options.practice == bram::LaunchOptions::Practice::IfUnconfigured) {
            print(stdout,
                  QStringLiteral("No agent platform is configured here (no BRACKWEN_GATEWAY_URL, "
                                 "no readable brackwen.json): starting practice mode.\n"));
        }
        print(stdout,
              QStringLiteral("Practice mode: made-up requests; nothing is executed, nothing of "
                             "yours is touched.\n"));
        auto world = bram::PracticeWorld::create(clock);
        if (!world) {
            print(stderr, QStringLiteral("bram: ") + world.error().message + u'\n');
            return EXIT_FAILURE;
        }
        practice = *std::move(world);
    } else if (!lock.acquire()) {
        return EXIT_SUCCESS; // the copy that is running already wins, without a word
    }

    bram::Application program(std::move(places), std::move(practice), clock);
    QObject::connect(&program, &bram::Application::finished, &application, &QCoreApplication::quit,
                     Qt::QueuedConnection);
    program.start();
    return application.exec();
}

} // namespace

int main(int argc, char **argv)
{
    bram::openClosedStandardStreams();
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("bram"));
    QCoreApplication::setApplicationVersion(QStringLiteral(BRAM_VERSION));

    const auto options = bram::parseLaunchOptions(QCoreApplication::arguments());
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
    return runApplication(application, std::get<bram::LaunchOptions>(*options));
}
