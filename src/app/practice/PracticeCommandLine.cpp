// SPDX-License-Identifier: Apache-2.0
#include "app/practice/PracticeCommandLine.h"

#include "system/Files.h"

#include <QCommandLineParser>

#include <limits>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr qint64 maxScriptBytes = 1024 * 1024;
constexpr double maxIntervalSeconds = 86'400;

struct PracticeOptions {
    QCommandLineOption help {{u"h"_s, u"help"_s}, u"Shows this text."_s};
    QCommandLineOption version {u"version"_s, u"Shows the version."_s};
    QCommandLineOption port {
        u"port"_s, u"Listens on this loopback port; 0, the default, is any free one."_s, u"PORT"_s};
    QCommandLineOption token {u"token"_s, u"Lets only clients in that show this token."_s,
                              u"TOKEN"_s};
    QCommandLineOption password {u"password"_s, u"The same with a password."_s, u"PASSWORD"_s};
    QCommandLineOption requireNonce {
        u"require-nonce"_s, u"Refuses a handshake that does not sign the challenge's nonce."_s};
    QCommandLineOption interval {u"interval"_s, u"Time between sample requests (default: 12)."_s,
                                 u"SECONDS"_s};
    QCommandLineOption count {u"count"_s, u"Sends this many sample requests (default: no end)."_s,
                              u"N"_s};
    QCommandLineOption script {
        u"script"_s, u"Plays the steps in this file in place of the sample requests."_s, u"FILE"_s};

    QList<QCommandLineOption> all() const
    {
        return {help, version, port, token, password, requireNonce, interval, count, script};
    }
};

std::unexpected<CommandLineEnd> usageError(const QString &text)
{
    return std::unexpected(CommandLineEnd {text, 2});
}

/// The whole number that an option carries, between 0 and `highest`; absent when not given.
std::expected<std::optional<int>, CommandLineEnd>
numberOf(const QCommandLineParser &parser, const QCommandLineOption &option, int highest)
{
    if (!parser.isSet(option)) {
        return std::nullopt;
    }
    bool isNumber = false;
    const int number = parser.value(option).toInt(&isNumber);
    if (!isNumber || number < 0 || number > highest) {
        return usageError(u"--%1 needs a whole number from 0 to %2"_s.arg(
            option.names().constFirst(), QString::number(highest)));
    }
    return number;
}

std::expected<std::vector<ScriptStep>, CommandLineEnd> readScript(const QString &path)
{
    const auto content = readRegularFile(path, maxScriptBytes);
    if (!content) {
        return usageError(content.error().message);
    }
    auto steps = parsePracticeScript(QString::fromUtf8(*content));
    if (!steps) {
        return usageError(u"%1: %2"_s.arg(path, steps.error().message));
    }
    return std::move(*steps);
}

std::expected<PracticeSessionOptions, CommandLineEnd> readSession(const QCommandLineParser &parser,
                                                                  const PracticeOptions &options)
{
    PracticeSessionOptions session;
    const auto count = numberOf(parser, options.count, std::numeric_limits<int>::max());
    if (!count) {
        return std::unexpected(count.error());
    }
    session.count = *count;
    if (parser.isSet(options.interval)) {
        bool isNumber = false;
        const double seconds = parser.value(options.interval).toDouble(&isNumber);
        if (!isNumber || !(seconds > 0 && seconds <= maxIntervalSeconds)) {
            return usageError(u"--interval needs a number of seconds over 0, at most %1"_s.arg(
                static_cast<int>(maxIntervalSeconds)));
        }
        session.intervalMs = qMax(1, static_cast<int>(seconds * 1000));
        session.firstDelayMs = qMin(session.firstDelayMs, session.intervalMs);
    }
    return session;
}
} // namespace

std::expected<PracticeProgram, CommandLineEnd>
parsePracticeCommandLine(const QStringList &arguments)
{
    const PracticeOptions options;
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"A practice gateway for BRAM: sends sample requests, prints decisions, runs nothing."_s);
    parser.addOptions(options.all());
    if (!parser.parse(arguments)) {
        return usageError(parser.errorText());
    }
    if (parser.isSet(options.help)) {
        return std::unexpected(CommandLineEnd {parser.helpText().trimmed(), 0});
    }
    if (parser.isSet(options.version)) {
        return std::unexpected(CommandLineEnd {u"bram-practice-gateway " BRAM_VERSION ""_s, 0});
    }
    if (!parser.positionalArguments().isEmpty()) {
        return usageError(
            u"Unexpected argument '%1'."_s.arg(parser.positionalArguments().constFirst()));
    }

    PracticeProgram program;
    const auto port = numberOf(parser, options.port, std::numeric_limits<quint16>::max());
    if (!port) {
        return std::unexpected(port.error());
    }
    program.gateway.port = static_cast<quint16>(port->value_or(0));
    program.gateway.requireNonce = parser.isSet(options.requireNonce);
    if (parser.isSet(options.token)) {
        program.gateway.token = parser.value(options.token);
    }
    if (parser.isSet(options.password)) {
        program.gateway.password = parser.value(options.password);
    }
    const auto session = readSession(parser, options);
    if (!session) {
        return std::unexpected(session.error());
    }
    program.session = *session;
    if (parser.isSet(options.script)) {
        if (parser.isSet(options.interval) || parser.isSet(options.count)) {
            return usageError(u"--script cannot be combined with --interval or --count"_s);
        }
        auto script = readScript(parser.value(options.script));
        if (!script) {
            return std::unexpected(script.error());
        }
        program.script = std::move(*script);
    }
    return program;
}

} // namespace bram
