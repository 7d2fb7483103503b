// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QStringView>

namespace bram
{

/// Whether a surface that gives a command one line of `maxCharacters` characters, as a reader counts them, shows
/// all of it there: nothing is cut, no line break is hidden, and nothing in it needs a mark.
///
/// A surface that does not show all of a command offers to deny and to show it, never to allow it.
bool isShownWholeOnOneLine(QStringView command, qsizetype maxCharacters);

} // namespace bram
