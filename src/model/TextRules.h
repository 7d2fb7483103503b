// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

#include <optional>

namespace bram
{

/// `text` without blanks and line breaks at both ends; nothing when that leaves it empty. The rule
/// for every value read from the environment, a file or the keychain.
std::optional<QString> trimmedOrAbsent(const QString &text);
std::optional<QString> trimmedOrAbsent(const std::optional<QString> &text);

/// The first `count` characters as a reader counts them (grapheme clusters); all of a shorter text.
QString firstCharacters(const QString &text, qsizetype count);

/// All of `text` when it has at most `maxUnits` UTF-16 units; else as many, or one less where that would split a
/// character, and "…".
QString shortened(QStringView text, qsizetype maxUnits);

/// How many characters a reader counts in `text`.
qsizetype characterCount(const QString &text);

} // namespace bram
