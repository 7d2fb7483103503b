// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

#include <optional>

namespace bram
{

/// What a remembered command is known by: the SHA-256 of the command without blanks and line breaks at
/// its ends and with one space for each run of them inside, as 64 lower-case hexadecimal digits. Blanks
/// are all that Unicode calls so, though most of them are part of a word to a shell; see
/// `hasAmbiguousBlank`. Nothing for a blank command, and for a text with half a surrogate pair, which has no
/// bytes of its own.
std::optional<QString> normalizedCommandDigest(QStringView command);

/// Whether `text` is 64 lower-case hexadecimal digits.
bool isCommandDigest(QStringView text);

/// Line feed, carriage return and whatever else may begin a line.
constexpr bool isLineBreak(QChar character)
{
    return (character >= u'\n' && character <= u'\r') || character == u'\x85'
        || character == u'\u2028' || character == u'\u2029';
}

/// Whether a line break stands inside the command, or another blank than space and tab anywhere in it: the
/// digest takes that for a space, or for nothing at the ends; a shell does not.
bool hasAmbiguousBlank(QStringView command);

} // namespace bram
