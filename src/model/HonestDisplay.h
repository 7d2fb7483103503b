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
    /// Whether a mark is worth a warning: any but those of a line that holds nothing but an ordinary
    /// indentation, or begins with U+2192.
    bool suspicious = false;

    bool operator==(const HonestText &) const = default;
};

/// Shows a command, whose line feeds stay line breaks.
///
/// The blanks and tabs that a line begins with are an ordinary indentation when they take at most 64
/// columns and something follows them in the line. Its blanks stay; a tab is drawn as → (U+2192), followed
/// by blanks up to the next multiple of 8 columns. A → of the command's own that begins a line, or follows
/// its indentation, is shown as a mark, and so are its look-alikes there.
///
/// Every character that could mislead is replaced by a mark ⟨U+XXXX⟩ with its code point in upper-case
/// hexadecimal, four digits at least: control characters (other tabs included), format and other invisible
/// characters, bidirectional controls and right-to-left letters and digits (they reorder their
/// neighbours), blanks other than U+0020, fillers, variation selectors, private-use and unassigned
/// code points, lone surrogates, enclosing marks, combining characters (conjoining Hangul letters too)
/// with nothing before them to combine with or more than four in a row, and U+27E8 itself with its
/// look-alikes, so that a mark cannot be forged. A run of four or more other blanks, and any run of blanks
/// at the end of a line, where it could not be seen, is shown as ⟨N blanks⟩ (⟨1 blank⟩); four or more
/// line feeds in a row as ⟨N line feeds⟩ followed by one line break.
///
/// What would run can be rebuilt exactly from the result: replace each mark by what it names, and each tab
/// that is drawn, with its blanks, by a tab.
HonestText honestDisplay(QStringView command);

/// How much of a line of such a text, from its start, stands for an indentation: to be drawn faintly.
qsizetype indentationLength(QStringView shownLine);
/// What a tab of an indentation is drawn as, before the blanks of its width.
inline constexpr QChar tabSign(0x2192);
inline constexpr qsizetype tabColumns = 8;

/// The same for a text that belongs on one line (an id, an agent's name): line feeds are marked too, and
/// nothing is taken for an indentation.
HonestText honestLine(QStringView text);

} // namespace bram
