// SPDX-License-Identifier: Apache-2.0
#include "app/LaunchOptions.h"

#include "config/ValueParsers.h"
#include "model/TextRules.h"
#include "monitor/ReliabilityExercises.h"

#include <QCommandLineParser>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
bool isTrue(const Environment &environment, const QString &name)
{
    return parseBool(environment.trimmed(name).value_or(QString())).value_or(false);
}
} // namespace

std::expected<std::variant<LaunchOptions, LaunchText>, Error>
parseLaunchOptions(const QStringList &arguments, const Environment &environment)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Asks a person before a coding agent's shell command is run: shows the requests of the\n"
        "agent platform's gateway and takes back allow once, allow always or deny."_s);
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    const QCommandLineOption terminal(u"terminal"_s,
                                      u"Ask in the terminal, also where there is a display."_s);
    const QCommandLineOption practice(
        u"practice"_s,
        u"Try it: a practice gateway sends sample requests. Nothing is real, nothing is executed, "
        "and all state goes to a temporary folder."_s);
    const QCommandLineOption practiceIfUnconfigured(
        u"practice-if-unconfigured"_s,
        u"As --practice, but only when no agent platform is configured on this machine."_s);
    const QCommandLineOption selfTest(
        u"self-test"_s,
        u"Check the whole approval path unattended, with made-up requests, and end: with status 0 "
        u"if "
        "all went well, else 1. Also with BRACKWEN_RUN_SELF_TEST=1."_s);
    const QCommandLineOption selfTestOutput(
        u"self-test-output"_s,
        u"Where the self-test writes its result, a JSON file; else $BRACKWEN_SELF_TEST_OUTPUT, else "_s
            + ReliabilityExercises::defaultResultPath + u'.',
        u"FILE"_s);
    const QCommandLineOption startupSimulation(
        u"startup-simulation"_s,
        u"Show two made-up requests and a refusal by the gateway at the start. Also with "
        "BRACKWEN_RUN_STARTUP_SIMULATION=1."_s);
    parser.addOptions(
        {terminal, practice, practiceIfUnconfigured, selfTest, selfTestOutput, startupSimulation});

    if (!parser.parse(arguments)) {
        return std::unexpected(Error {parser.errorText()});
    }
    if (parser.isSet(help)) {
        return LaunchText {parser.helpText()};
    }
    if (parser.isSet(version)) {
        return LaunchText {QStringLiteral("bram " BRAM_VERSION "\n")};
    }
    if (!parser.positionalArguments().isEmpty()) {
        return std::unexpected(Error {u"Unexpected argument '"_s
                                      + parser.positionalArguments().constFirst() + u"'."_s});
    }
    LaunchOptions options;
    if (parser.isSet(practice)) {
        options.practice = LaunchOptions::Practice::Yes;
    } else if (parser.isSet(practiceIfUnconfigured)) {
        options.practice = LaunchOptions::Practice::IfUnconfigured;
    }
    options.selfTest = parser.isSet(selfTest) || isTrue(environment, u"BRACKWEN_RUN_SELF_TEST"_s);
    if (parser.isSet(selfTestOutput)) {
        options.selfTestOutput = trimmedOrAbsent(parser.value(selfTestOutput));
        if (!options.selfTestOutput) {
            return std::unexpected(Error {u"--self-test-output needs the name of a file."_s});
        }
    } else {
        options.selfTestOutput = environment.trimmed(u"BRACKWEN_SELF_TEST_OUTPUT"_s);
    }
    options.startupSimulation = parser.isSet(startupSimulation)
        || isTrue(environment, u"BRACKWEN_RUN_STARTUP_SIMULATION"_s);
    options.simulationMenuEnabled = isTrue(environment, u"BRACKWEN_ENABLE_SIMULATION_MENU"_s);
    return options;
}

} // namespace bram
