// SPDX-License-Identifier: Apache-2.0
#include "ui/terminal/KeyDecoder.h"

#include <QStringDecoder>

#include <algorithm>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr char32_t escape = 0x1B;
constexpr qsizetype longestSequence = 16;
/// Go to the editor as they are: moving, deleting, yanking, redrawing.
constexpr QStringView editingControls = u"\u0001\u0002\u0003\u0004\u0005\u0006\u0008\u000A\u000B"
                                        u"\u000C\u000E\u0010\u0014\u0015\u0017\u0019\u007F";
/// How many bytes at the end are the beginning of a longer UTF-8 sequence.
qsizetype incompleteBytes(QByteArrayView bytes)
{
    for (qsizetype count = 1; count <= std::min<qsizetype>(3, bytes.size()); ++count) {
        const auto byte = static_cast<unsigned char>(bytes[bytes.size() - count]);
        if ((byte & 0xC0) == 0x80) {
            continue;
        }
        const int length = byte >= 0xF5 ? 1
            : byte >= 0xF0              ? 4
            : byte >= 0xE0              ? 3
            : byte >= 0xC0              ? 2
                                        : 1;
        return length > count ? count : 0;
    }
    return 0;
}
} // namespace

/// A decoder that keeps its own state would swallow the key that comes behind a broken sequence.
QList<char32_t> KeyDecoder::take(QByteArrayView bytes)
{
    const QByteArray known = m_incomplete + bytes.toByteArray();
    const qsizetype complete = known.size() - incompleteBytes(known);
    m_incomplete = known.sliced(complete);
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::ConvertInitialBom
                               | QStringDecoder::Flag::Stateless);
    const QString text = decoder(known.first(complete));
    QList<char32_t> keys;
    for (const char32_t c : text.toUcs4()) {
        takeCodePoint(c, keys);
    }
    return keys;
}

void KeyDecoder::takeCodePoint(char32_t c, QList<char32_t> &keys)
{
    if (c == escape) {
        m_state = State::Escape;
        return;
    }
    switch (m_state) {
    case State::Escape:
        if (c == U'[' || c == U'O') {
            m_state = c == U'[' ? State::Sequence : State::Letter;
            m_parameters.clear();
            return;
        }
        m_state = State::Ground; // the escape key by itself, and then this one
        break;
    case State::Sequence:
        if (c >= 0x20 && c <= 0x3F && m_parameters.size() < longestSequence) {
            m_parameters.append(QChar(char16_t(c)));
            return;
        }
        endSequence(c, keys);
        return;
    case State::Letter:
        endSequence(c, keys);
        return;
    case State::Ground:
        break;
    }
    if (c == U'\r') {
        keys.append(enter);
    } else if (c >= 0x20 && c != 0x7F && !(c >= 0x80 && c <= 0x9F)) {
        keys.append(c);
    } else if (c < 0x80 && editingControls.contains(QChar(char16_t(c)))) {
        keys.append(c);
    }
}

void KeyDecoder::endSequence(char32_t c, QList<char32_t> &keys)
{
    m_state = State::Ground;
    const QString number = m_parameters.section(u';', 0, 0);
    switch (c) {
    case U'A':
        keys.append(earlier);
        break;
    case U'B':
        keys.append(later);
        break;
    case U'C':
        keys.append(right);
        break;
    case U'D':
        keys.append(left);
        break;
    case U'H':
        keys.append(lineStart);
        break;
    case U'F':
        keys.append(lineEnd);
        break;
    case U'~':
        if (number == "1"_L1 || number == "7"_L1) {
            keys.append(lineStart);
        } else if (number == "4"_L1 || number == "8"_L1) {
            keys.append(lineEnd);
        } else if (number == "3"_L1) {
            keys.append(deleteHere);
        }
        break;
    default:
        break;
    }
}

} // namespace bram
