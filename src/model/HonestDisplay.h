// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

namespace bram
{

/// A text as an operator may read it: nothing in it is invisible, reorders its neighbours or
/// controls a terminal.
struct HonestText {
    QString text; ///< plain text with marks such as ⟨U+202E⟩ and ⟨12 blanks⟩
    bool marked = false; ///< whether anything had to be marked
    /// Whether a mark is worth a warning: any but that of an ordinary indentation, a run of at most 16
    /// blanks at the start of a line.
    bool suspicious = false;

    bool operator==(const HonestText &) const = default;
};

/// Shows a command, whose line feeds stay line breaks.
///
/// Every character that could mislead is replaced by a mark ⟨U+XXXX⟩ with its code point in upper-case
/// hexadecimal, four digits at least: control characters (tab included), format and other invisible
/// characters, bidirectional controls and right-to-left letters and digits (they reorder their
/// neighbours), blanks other than U+0020, fillers, variation selectors, private-use and unassigned
/// code points, lone surrogates, enclosing marks, combining characters (conjoining Hangul letters too)
/// with nothing before them to combine with or more than four in a row, and U+27E8 itself with its
/// look-alikes, so that a mark cannot be forged. A run of four or more blanks, and any run of blanks
/// at the end of a line, where it could not be seen, is shown as ⟨N blanks⟩ (⟨1 blank⟩); four or more
/// line feeds in a row as ⟨N line feeds⟩ followed by one line break.
///
/// What would run can be rebuilt exactly from the result: replace each mark by what it names.
HonestText honestDisplay(QStringView command);

/// The same for a text that belongs on one line (an id, an agent's name): line feeds are marked too.
HonestText honestLine(QStringView text);

} // namespace bram
