// SPDX-License-Identifier: Apache-2.0
#include "practice/PracticeScript.h"

#include <QByteArray>
#include <QStringList>

#include <algorithm>
#include <array>
#include <optional>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
struct VerbRow {
    ScriptVerb verb;
    QLatin1StringView word;
    QLatin1StringView arguments; ///< names of what follows, in order, as the error texts show them
};

constexpr std::array rows {
    VerbRow {ScriptVerb::Request, "request"_L1, "ID AGENT COMMAND"_L1},
    VerbRow {ScriptVerb::RequestFor, "request-for"_L1, "SECONDS ID AGENT COMMAND"_L1},
    VerbRow {ScriptVerb::Sample, "sample"_L1, ""_L1},
    VerbRow {ScriptVerb::Resolve, "resolve"_L1, "ID"_L1},
    VerbRow {ScriptVerb::Wait, "wait"_L1, "MS"_L1},
    VerbRow {ScriptVerb::WaitClient, "wait-client"_L1, ""_L1},
    VerbRow {ScriptVerb::WaitDecision, "wait-decision"_L1, "ID"_L1},
    VerbRow {ScriptVerb::Answer, "answer"_L1, ""_L1},
    VerbRow {ScriptVerb::ResolvedFirst, "resolved-first"_L1, ""_L1},
    VerbRow {ScriptVerb::Delay, "delay"_L1, "MS"_L1},
    VerbRow {ScriptVerb::NeverAnswer, "never-answer"_L1, ""_L1},
    VerbRow {ScriptVerb::DropAnswer, "drop-answer"_L1, ""_L1},
    VerbRow {ScriptVerb::AnswerError, "error"_L1, "TEXT"_L1},
    VerbRow {ScriptVerb::Reject, "reject"_L1, "TEXT"_L1},
    VerbRow {ScriptVerb::Drop, "drop"_L1, ""_L1},
    VerbRow {ScriptVerb::Close, "close"_L1, ""_L1},
    VerbRow {ScriptVerb::Listen, "listen"_L1, ""_L1},
    VerbRow {ScriptVerb::Raw, "raw"_L1, "TEXT"_L1},
    VerbRow {ScriptVerb::RawBinary, "raw-binary"_L1, "HEX"_L1},
    VerbRow {ScriptVerb::Quit, "quit"_L1, ""_L1},
};

/// Takes the first word off `rest`, and the blanks behind it.
QString takeWord(QStringView &rest)
{
    const auto isBlank = [](QChar c) { return c.isSpace(); };
    const auto end = std::ranges::find_if(rest, isBlank);
    const QString word = rest.first(end - rest.begin()).toString();
    rest = rest.sliced(word.size()).trimmed();
    return word;
}

/// The character that an escape names and how many characters follow the backslash; nothing when there
/// is no such escape.
std::optional<std::pair<QChar, qsizetype>> readEscape(QStringView behindBackslash)
{
    if (behindBackslash.isEmpty()) {
        return std::nullopt;
    }
    switch (behindBackslash.front().unicode()) {
    case u'n':
        return std::pair(QChar(u'\n'), 1);
    case u't':
        return std::pair(QChar(u'\t'), 1);
    case u'\\':
        return std::pair(QChar(u'\\'), 1);
    case u'u': {
        bool isNumber = false;
        const QStringView digits = behindBackslash.sliced(1).left(4);
        const ushort unit = digits.toUShort(&isNumber, 16);
        if (isNumber && digits.size() == 4) {
            return std::pair(QChar(unit), 5);
        }
        return std::nullopt;
    }
    default:
        return std::nullopt;
    }
}

std::optional<QString> unescaped(QStringView text)
{
    QString result;
    while (!text.isEmpty()) {
        const QChar first = text.front();
        text = text.sliced(1);
        if (first != u'\\') {
            result.append(first);
            continue;
        }
        const auto escape = readEscape(text);
        if (!escape) {
            return std::nullopt;
        }
        result.append(escape->first);
        text = text.sliced(escape->second);
    }
    return result;
}

/// Reads one argument off `rest` into its field; what is wrong, or nothing.
std::optional<QString> readArgument(QStringView name, QStringView &rest, ScriptStep &step)
{
    if (rest.isEmpty()) {
        return u"%1 is missing"_s.arg(name);
    }
    if (name == u"COMMAND" || name == u"TEXT") {
        const auto text = unescaped(rest);
        rest = {};
        if (!text) {
            return u"bad escape in %1 (known: \\n \\t \\\\ \\uXXXX)"_s.arg(name);
        }
        step.text = *text;
        return std::nullopt;
    }
    const QString word = takeWord(rest);
    if (name == u"ID") {
        step.id = word;
    } else if (name == u"AGENT") {
        step.agent = word == "-"_L1 ? QString() : word;
    } else if (name == u"HEX") {
        const QByteArray bytes = QByteArray::fromHex(word.toLatin1());
        if (QString::fromLatin1(bytes.toHex()) != word.toLower()) {
            return u"HEX must be pairs of hexadecimal digits"_s;
        }
        step.text = word;
    } else {
        bool isNumber = false;
        step.number = word.toInt(&isNumber);
        if (!isNumber || step.number < 0) {
            return u"%1 must be a whole number, not \"%2\""_s.arg(name, word.left(40));
        }
    }
    return std::nullopt;
}

std::expected<ScriptStep, QString> parseLine(QStringView line)
{
    QStringView rest = line;
    const QString word = takeWord(rest);
    const auto row = std::ranges::find(rows, word, &VerbRow::word);
    if (row == rows.end()) {
        return std::unexpected(u"unknown step \"%1\""_s.arg(word.left(40)));
    }
    ScriptStep step {.verb = row->verb};
    const QStringList names = QString(row->arguments).split(u' ', Qt::SkipEmptyParts);
    for (const QString &name : names) {
        if (const auto fault = readArgument(name, rest, step)) {
            return std::unexpected(u"%1: %2"_s.arg(word, *fault));
        }
    }
    if (!rest.isEmpty()) {
        return std::unexpected(u"%1: unexpected \"%2\""_s.arg(word, rest.left(40)));
    }
    return step;
}
} // namespace

std::expected<std::vector<ScriptStep>, Error> parsePracticeScript(const QString &text)
{
    std::vector<ScriptStep> steps;
    int lineNumber = 0;
    for (const QStringView rawLine : QStringView(text).split(u'\n')) {
        ++lineNumber;
        const QStringView line = rawLine.trimmed();
        if (line.isEmpty() || line.startsWith(u'#')) {
            continue;
        }
        auto step = parseLine(line);
        if (!step) {
            return std::unexpected(
                Error {u"line %1: %2"_s.arg(QString::number(lineNumber), step.error())});
        }
        step->line = lineNumber;
        steps.push_back(std::move(*step));
    }
    return steps;
}

} // namespace bram
