// SPDX-License-Identifier: Apache-2.0
#include "model/HonestDisplay.h"

#include <QChar>

#include <algorithm>
#include <array>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr qsizetype longRun = 4;
constexpr qsizetype deepestIndentation = 64;
constexpr int mostCombiningInARow = 4;
constexpr char16_t markOpen = u'\u27E8';
constexpr char16_t markClose = u'\u27E9';

struct CodePointRange {
    char32_t first;
    char32_t last;
};

template<std::size_t N>
bool isIn(const std::array<CodePointRange, N> &ranges, char32_t c)
{
    return std::ranges::any_of(
        ranges, [c](const CodePointRange &r) { return c >= r.first && c <= r.last; });
}

/// What is drawn as nothing, or as a blank, although its category is that of a letter, a symbol or an
/// accent. (Categories that are never drawn are dealt with as a whole.)
constexpr std::array invisible {
    CodePointRange {0x034F, 0x034F}, // grapheme joiner
    CodePointRange {0x115F, 0x1160}, // Hangul fillers
    CodePointRange {0x17B4, 0x17B5}, // inherent Khmer vowels
    CodePointRange {0x180B, 0x180F}, // Mongolian variation selectors
    CodePointRange {0x2800, 0x2800}, // empty Braille cell
    CodePointRange {0x2D7F, 0x2D7F}, // Tifinagh joiner
    CodePointRange {0x3164, 0x3164}, // Hangul filler
    CodePointRange {0xFE00, 0xFE0F}, // variation selectors
    CodePointRange {0xFFA0, 0xFFA0}, // half-width Hangul filler
    CodePointRange {0xFFFC, 0xFFFC}, // place of an embedded object
    CodePointRange {0x1107F, 0x1107F}, // Brahmi number joiner
    CodePointRange {0x16FE4, 0x16FE4}, // Khitan filler
    CodePointRange {0x1D159, 0x1D159}, // null note head
    CodePointRange {0xE0000, 0xE0FFF}, // tags, more variation selectors
};

/// U+27E8 opens a mark; the others look the same in many faces.
constexpr std::array<char32_t, 4> markOpeners {markOpen, 0x2329, 0x276C, 0x3008};

/// U+2192 is how a tab is drawn; the others look the same in many faces.
constexpr std::array<char32_t, 4> tabSigns {0x2192, 0x27F6, 0xFFEB, 0x1F852};

bool isMisleadingCategory(char32_t c)
{
    switch (QChar::category(c)) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Other_Surrogate:
    case QChar::Other_PrivateUse:
    case QChar::Other_NotAssigned:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
    case QChar::Mark_Enclosing: // drawn over the character before it
        return true;
    case QChar::Separator_Space:
        return c != U' ';
    default:
        return false;
    }
}

bool reordersNeighbours(char32_t c)
{
    const auto direction = QChar::direction(c);
    return direction == QChar::DirR || direction == QChar::DirAL || direction == QChar::DirAN;
}

/// Never marked, and joins nothing.
bool isVisibleAscii(QChar c)
{
    return c >= u'!' && c <= u'~';
}

bool isAlwaysMarked(char32_t c)
{
    return isMisleadingCategory(c) || isIn(invisible, c) || reordersNeighbours(c)
        || std::ranges::find(markOpeners, c) != markOpeners.end();
}

/// Whether `c` is drawn together with the character before it, given what that is.
enum class Joining {
    None,
    Accent, ///< joins anything that is drawn
    HangulVowel, ///< a conjoining letter: alone it may take no room at all
    HangulFinal,
};

Joining joiningOf(char32_t c)
{
    if (QChar::isMark(c)) {
        return Joining::Accent;
    }
    if ((c >= 0x1161 && c <= 0x11A7) || (c >= 0xD7B0 && c <= 0xD7C6)) {
        return Joining::HangulVowel;
    }
    if ((c >= 0x11A8 && c <= 0x11FF) || (c >= 0xD7CB && c <= 0xD7FB)) {
        return Joining::HangulFinal;
    }
    return Joining::None;
}

/// Whether a conjoining vowel or final may stand after `previous` and be drawn within its syllable.
bool joinsSyllable(Joining kind, char32_t previous)
{
    const bool isInitial
        = (previous >= 0x1100 && previous <= 0x115E) || (previous >= 0xA960 && previous <= 0xA97C);
    const bool isSyllable = previous >= 0xAC00 && previous <= 0xD7A3;
    const bool isOpenSyllable = isSyllable && (previous - 0xAC00) % 28 == 0;
    const Joining before = joiningOf(previous);
    if (kind == Joining::HangulVowel) {
        return isInitial || isOpenSyllable || before == Joining::HangulVowel;
    }
    return isSyllable || before == Joining::HangulVowel || before == Joining::HangulFinal;
}

enum class LineFeeds {
    AreLineBreaks,
    AreMarked,
};

enum class Suspicion {
    None,
    Some,
};

class HonestWriter
{
public:
    HonestWriter(QStringView source, LineFeeds lineFeeds)
        : m_source(source)
        , m_lineFeeds(lineFeeds)
        , m_startsLine(lineFeeds == LineFeeds::AreLineBreaks)
    {
        m_result.text.reserve(source.size());
    }

    HonestText write()
    {
        while (m_position < m_source.size()) {
            const QChar c = m_source[m_position];
            if (m_startsLine && (c == u' ' || c == u'\t')) {
                writeIndentation();
            } else if (isVisibleAscii(c)) {
                writeVisibleAscii();
            } else if (c == u' ') {
                writeBlanks(Suspicion::Some);
            } else if (c == u'\n' && m_lineFeeds == LineFeeds::AreLineBreaks) {
                writeLineFeeds();
            } else {
                writeCodePoint(takeCodePoint());
            }
        }
        return m_result;
    }

private:
    qsizetype takeRunOf(QChar c)
    {
        const qsizetype start = m_position;
        while (m_position < m_source.size() && m_source[m_position] == c) {
            ++m_position;
        }
        return m_position - start;
    }

    char32_t takeCodePoint()
    {
        const QChar c = m_source[m_position++];
        if (c.isHighSurrogate() && m_position < m_source.size()
            && m_source[m_position].isLowSurrogate()) {
            return QChar::surrogateToUcs4(c, m_source[m_position++]);
        }
        return c.unicode();
    }

    bool isLineEnd(qsizetype position) const
    {
        return position == m_source.size()
            || (m_lineFeeds == LineFeeds::AreLineBreaks && m_source[position] == u'\n');
    }

    void writeIndentation()
    {
        qsizetype end = m_position;
        qsizetype columns = 0;
        while (end < m_source.size() && (m_source[end] == u' ' || m_source[end] == u'\t')) {
            columns += m_source[end] == u'\t' ? tabColumns - columns % tabColumns : 1;
            ++end;
        }
        const bool isOrdinary = columns <= deepestIndentation;
        if (isOrdinary && !isLineEnd(end)) {
            drawIndentation(end);
            return;
        }
        const Suspicion suspicion = isOrdinary ? Suspicion::None : Suspicion::Some;
        while (m_position < end) {
            if (m_source[m_position] == u' ') {
                writeBlanks(suspicion);
            } else {
                markCodePoint(takeCodePoint(), suspicion);
            }
        }
    }

    void drawIndentation(qsizetype end)
    {
        qsizetype column = 0;
        for (; m_position < end; ++m_position) {
            const bool isTab = m_source[m_position] == u'\t';
            const qsizetype width = isTab ? tabColumns - column % tabColumns : 1;
            m_result.text.append(isTab ? tabSign : u' ');
            m_result.text.append(QString(width - 1, u' '));
            column += width;
        }
        m_previous = 0;
    }

    void writeBlanks(Suspicion suspicion)
    {
        const qsizetype count = takeRunOf(u' ');
        if (isLineEnd(m_position) || count >= longRun) {
            mark(count == 1 ? u"1 blank"_s : QString::number(count) + " blanks"_L1, suspicion);
        } else {
            m_result.text.append(QString(count, u' '));
            m_previous = 0;
        }
    }

    void writeLineFeeds()
    {
        const qsizetype count = takeRunOf(u'\n');
        if (count >= longRun) {
            mark(QString::number(count) + " line feeds"_L1, Suspicion::Some);
            m_result.text.append(u'\n');
        } else {
            m_result.text.append(QString(count, u'\n'));
        }
        m_previous = 0;
        m_startsLine = true;
    }

    /// In one go: a command may be megabytes of it.
    void writeVisibleAscii()
    {
        const qsizetype start = m_position;
        while (m_position < m_source.size() && isVisibleAscii(m_source[m_position])) {
            ++m_position;
        }
        m_result.text.append(m_source.sliced(start, m_position - start));
        m_previous = m_source[m_position - 1].unicode();
        m_combiningInARow = 0;
        m_startsLine = false;
    }

    void writeCodePoint(char32_t c)
    {
        if (isAlwaysMarked(c) || !canStandHere(c)) {
            markCodePoint(c, Suspicion::Some);
            return;
        }
        if (m_startsLine && std::ranges::find(tabSigns, c) != tabSigns.end()) {
            markCodePoint(c, Suspicion::None);
            return;
        }
        m_startsLine = false;
        m_combiningInARow = joiningOf(c) == Joining::None ? 0 : m_combiningInARow + 1;
        m_previous = c == markClose ? 0 : c;
        m_result.text.append(QChar::fromUcs4(c));
    }

    bool canStandHere(char32_t c) const
    {
        const Joining kind = joiningOf(c);
        if (kind == Joining::None) {
            return true;
        }
        if (m_previous == 0 || m_combiningInARow >= mostCombiningInARow) {
            return false;
        }
        return kind == Joining::Accent || joinsSyllable(kind, m_previous);
    }

    void markCodePoint(char32_t c, Suspicion suspicion)
    {
        mark("U+"_L1 + QString::number(c, 16).toUpper().rightJustified(4, u'0'), suspicion);
    }

    void mark(const QString &name, Suspicion suspicion)
    {
        m_result.text.append(QChar(markOpen) + name + QChar(markClose));
        m_result.marked = true;
        m_result.suspicious = m_result.suspicious || suspicion == Suspicion::Some;
        m_previous = 0;
        m_combiningInARow = 0;
        m_startsLine = false;
    }

    QStringView m_source;
    LineFeeds m_lineFeeds;
    bool m_startsLine; ///< nothing but an indentation is before it in the line
    qsizetype m_position = 0;
    char32_t m_previous
        = 0; ///< the character just written; 0 when there is nothing to combine with
    int m_combiningInARow = 0;
    HonestText m_result;
};
} // namespace

HonestText honestDisplay(QStringView command)
{
    return HonestWriter(command, LineFeeds::AreLineBreaks).write();
}

qsizetype indentationLength(QStringView shownLine)
{
    const auto *end
        = std::ranges::find_if_not(shownLine, [](QChar c) { return c == u' ' || c == tabSign; });
    return end - shownLine.begin();
}

HonestText honestLine(QStringView text)
{
    return HonestWriter(text, LineFeeds::AreMarked).write();
}

} // namespace bram
