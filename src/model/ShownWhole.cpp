// SPDX-License-Identifier: Apache-2.0
#include "model/ShownWhole.h"

#include "model/HonestDisplay.h"
#include "model/TextRules.h"

namespace bram
{

namespace
{
/// A character that needs no mark is written with at most this many units: its own two, and four accents.
constexpr qsizetype maxUnitsPerCharacter = 10;
} // namespace

bool isShownWholeOnOneLine(QStringView command, qsizetype maxCharacters)
{
    // Long ones are sorted out before anything walks through them.
    if (command.size() > maxCharacters * maxUnitsPerCharacter || command.contains(u'\n')) {
        return false;
    }
    return characterCount(command.toString()) <= maxCharacters && !honestLine(command).marked;
}

} // namespace bram
