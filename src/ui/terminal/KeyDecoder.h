// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>

namespace bram
{

/// Turns what a terminal sends into keys for the line editor: a printable code point, or one of the
/// control characters below. Cursor keys become the control character that does the same; keys that the
/// editor does not know, and their escape sequences, vanish as a whole.
class KeyDecoder
{
public:
    static constexpr char32_t lineStart = 0x01;
    static constexpr char32_t left = 0x02;
    static constexpr char32_t leave = 0x03;
    static constexpr char32_t deleteOrEnd = 0x04;
    static constexpr char32_t lineEnd = 0x05;
    static constexpr char32_t right = 0x06;
    static constexpr char32_t enter = 0x0A;
    static constexpr char32_t later = 0x0E;
    static constexpr char32_t earlier = 0x10;
    static constexpr char32_t deleteHere = 0x110000; ///< not a code point

    /// Keys completed by these bytes; the beginning of another key is kept.
    QList<char32_t> take(QByteArrayView bytes);

private:
    enum class State {
        Ground,
        Escape,
        Sequence, ///< after ESC [
        Letter, ///< after ESC O
    };

    void takeCodePoint(char32_t c, QList<char32_t> &keys);
    void endSequence(char32_t c, QList<char32_t> &keys);

    QByteArray m_incomplete; ///< the beginning of a character whose other bytes are on their way
    State m_state = State::Ground;
    QString m_parameters;
};

} // namespace bram
