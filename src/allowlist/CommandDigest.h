// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

#include <optional>

namespace bram
{

/// What a remembered command is found by: the SHA-256 of the command without blanks and line breaks at
/// its ends and with one space for each run of them inside, as 64 lower-case hexadecimal digits. Blanks
/// are all that Unicode calls so, though most of them are part of a word to a shell, and all of them where
/// they are quoted: commands that a shell reads differently can share a digest; see `commandForm`. Nothing
/// for a blank command, and for a text with half a surrogate pair, which has no bytes of its own.
std::optional<QString> normalizedCommandDigest(QStringView command);

/// Whether `text` is 64 lower-case hexadecimal digits.
bool isCommandDigest(QStringView text);

/// Whether the command is one line of words with nothing in it that keeps blanks together: no quotes,
/// backslashes, substitutions or brackets, no here-document, no unusual blanks, no control characters. A
/// shell reads it the same however many spaces and tabs stand between its words.
bool isPlainCommand(QStringView command);

/// What two commands with the same digest have in common exactly if a shell is certain to read them the
/// same: "plain" for a plain command, and for another one the SHA-256 of its very bytes in UTF-8, as 64
/// lower-case hexadecimal digits.
QString commandForm(QStringView command);

/// The form of every plain command.
constexpr QStringView plainCommandForm = u"plain";

/// Whether `text` can be a form.
bool isCommandForm(QStringView text);

/// Line feed, carriage return and whatever else may begin a line.
constexpr bool isLineBreak(QChar character)
{
    return (character >= u'\n' && character <= u'\r') || character == u'\x85'
        || character == u'\u2028' || character == u'\u2029';
}

} // namespace bram
