// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

#include <optional>

namespace bram
{

class TokenMask;

// How text from outside is written in a chat: plain, and with its misleading characters made visible.

/// A line break of a command that is written on one line.
inline constexpr char16_t lineBreakSign = u'⏎';

/// `source` on one line with its misleading characters marked; cut after so many characters, or before a
/// mark or a character that would make it longer than `maxUnits`.
QString honestCut(const QString &source, qsizetype maxCharacters, qsizetype maxUnits);

/// As much of a command as a line of a list has room for, with `lineBreakSign` for each line break in it and
/// without the bot's token. `mask` may be null.
QString commandLineForChat(const QString &command, const TokenMask *mask);

/// Whether `commandLineForChat` is the command itself: nothing cut, no line break hidden, nothing marked.
bool isShownWholeInList(const QString &command, const TokenMask *mask);

/// `text` without the bot's token; nothing when it does not hold it.
std::optional<QString> withoutToken(const QString &text, const TokenMask *mask);

/// The last place at or before `end` at which an honest text can be cut: in no mark and in no character.
qsizetype cutBefore(const QString &shown, qsizetype end);

} // namespace bram
