// SPDX-License-Identifier: Apache-2.0
#include "model/LeadingAssignments.h"

#include <QVarLengthArray>

#include <algorithm>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
bool isNameCharacter(QChar c)
{
    return c.unicode() < 0x80 && (c.isLetterOrNumber() || c == u'_');
}

bool isBlank(QChar c)
{
    return c == u' ' || c == u'\t' || c == u'\n';
}

bool endsWord(QChar c)
{
    return isBlank(c) || QStringView(u";&|<>()").contains(c);
}

/// The name at the beginning of `text`, if "=" follows it, and where the value begins.
struct Assignment {
    QStringView name;
    qsizetype valueAt = 0;
};

std::optional<Assignment> assignmentAt(QStringView text)
{
    const auto nameEnd = std::ranges::find_if_not(text, isNameCharacter);
    const QStringView name = text.first(nameEnd - text.begin());
    if (name.isEmpty() || name.front().isDigit()) {
        return std::nullopt;
    }
    qsizetype at = name.size();
    if (text.sliced(at).startsWith(u'[')) {
        const auto close = std::ranges::find_if(text.begin() + at, text.end(),
                                                [](QChar c) { return c == u']' || endsWord(c); });
        at = close - text.begin() + 1;
    }
    const QStringView after = text.sliced(std::min(at, text.size()));
    if (after.startsWith(u'=')) {
        return Assignment {name, at + 1};
    }
    return after.startsWith("+="_L1) ? std::optional(Assignment {name, at + 2}) : std::nullopt;
}

/// Where the text in `$'…'` ends whose first quote is at `at`: at the closing quote, or before the beginning.
qsizetype endOfEscapedQuote(QStringView text, qsizetype at)
{
    for (++at; at < text.size(); ++at) {
        if (text[at] == u'\\') {
            ++at;
        } else if (text[at] == u'\'') {
            return at;
        }
    }
    return -1;
}

/// Where a shell ends a value at the beginning of `text`.
std::optional<qsizetype> valueEnd(QStringView text)
{
    QVarLengthArray<QChar, 16> closers; // of what is open, the innermost last
    const auto isWithinCommand
        = [&closers] { // a whole grammar of its own, with comments and documents
              return closers.contains(u')') || closers.contains(u'`');
          };
    qsizetype at = 0;
    for (; at < text.size(); ++at) {
        const QChar c = text[at];
        const QChar next = at + 1 < text.size() ? text[at + 1] : QChar();
        if (c == u'\\') {
            ++at;
        } else if (!closers.isEmpty() && c == closers.last()) {
            closers.removeLast();
        } else if (c == u'`') {
            closers.append(u'`');
        } else if (c == u'$' && (next == u'(' || next == u'{')) {
            closers.append(next == u'(' ? u')' : u'}');
            ++at;
        } else if (!closers.isEmpty() && closers.last() == u'"') {
            continue;
        } else if (c == u'"') {
            closers.append(u'"');
        } else if (c == u'\'') {
            const bool isEscaped = at > 0 && text[at - 1] == u'$';
            at = isEscaped ? endOfEscapedQuote(text, at) : text.indexOf(u'\'', at + 1);
            if (at < 0) {
                return std::nullopt;
            }
        } else if (c == u'(' && (at == 0 || !closers.isEmpty())) {
            closers.append(u')');
        } else if (closers.isEmpty() && endsWord(c)) {
            break;
        } else if ((c == u'#' || (c == u'<' && next == u'<')) && isWithinCommand()) {
            return std::nullopt;
        }
    }
    const QStringView value = text.first(std::min(at, text.size()));
    const bool hasCase = value.contains(u'(') && value.contains("case"_L1);
    return closers.isEmpty() && !hasCase ? std::optional(value.size()) : std::nullopt;
}
} // namespace

LeadingAssignments leadingAssignments(QStringView command)
{
    LeadingAssignments result;
    while (const auto assignment = assignmentAt(command)) {
        result.names.append(assignment->name);
        command = command.sliced(assignment->valueAt);
        const auto end = valueEnd(command);
        if (!end) {
            return result;
        }
        command = command.sliced(*end);
        const auto next = std::ranges::find_if_not(
            command, [](QChar c) { return isBlank(c) || QStringView(u";&|").contains(c); });
        command = command.sliced(next - command.begin());
    }
    const bool beginsWithProgram = result.names.isEmpty() || command.isEmpty()
        || !(endsWord(command.front()) || command.front() == u'#');
    if (beginsWithProgram) {
        result.rest = command;
    }
    return result;
}

} // namespace bram
