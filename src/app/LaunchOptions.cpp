// SPDX-License-Identifier: Apache-2.0
#include "app/LaunchOptions.h"

#include <QCommandLineParser>

namespace bram
{

using namespace Qt::StringLiterals;

std::expected<std::variant<LaunchOptions, LaunchText>, Error>
parseLaunchOptions(const QStringList &arguments)
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
    parser.addOptions({terminal, practice, practiceIfUnconfigured});

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
    return options;
}

} // namespace bram
