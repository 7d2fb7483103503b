// SPDX-License-Identifier: Apache-2.0
#include "telegram/TokenMask.h"

#include "audit/Redaction.h"
#include "model/TextRules.h"

#include <QList>

#include <algorithm>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr qsizetype shortestPiece = 8;
constexpr qsizetype maxReadCharacters = 4096; // of a text that a broken server may have made
constexpr qsizetype maxShownCharacters = 400;

/// A byte that a text stands for, and where it is written.
struct WrittenByte {
    char value;
    qsizetype end;
};

bool isEncodedByte(QByteArrayView text, qsizetype at)
{
    const auto isHex = [&](qsizetype i) {
        return i < text.size() && std::isxdigit(static_cast<unsigned char>(text[i])) != 0;
    };
    return isHex(at) && isHex(at + 1);
}

/// "%41" is an A, and so is "%2541", which was encoded twice.
WrittenByte byteAt(QByteArrayView text, qsizetype at)
{
    if (text[at] != '%' || !isEncodedByte(text, at + 1)) {
        return {text[at], at + 1};
    }
    qsizetype digits = at + 1;
    while (text.sliced(digits).startsWith("25") && isEncodedByte(text, digits + 2)) {
        digits += 2;
    }
    return {static_cast<char>(text.sliced(digits, 2).toByteArray().toInt(nullptr, 16)), digits + 2};
}
} // namespace

TokenMask::TokenMask(const QString &token)
    : m_pieceBytes(std::min(shortestPiece, token.toUtf8().size()))
{
    const QByteArray bytes = token.toUtf8();
    for (qsizetype i = 0; i + m_pieceBytes <= bytes.size(); ++i) {
        m_pieces.insert(bytes.sliced(i, m_pieceBytes));
    }
}

QByteArray TokenMask::withoutToken(const QByteArray &text) const
{
    QByteArray meant;
    QList<qsizetype> starts;
    for (qsizetype at = 0; at < text.size();) {
        const WrittenByte byte = byteAt(text, at);
        meant.append(byte.value);
        starts.append(at);
        at = byte.end;
    }
    starts.append(text.size());

    QByteArray result;
    qsizetype hiddenUntil = 0; // in `meant`
    for (qsizetype i = 0; i < meant.size(); ++i) {
        if (m_pieceBytes > 0 && i + m_pieceBytes <= meant.size()
            && m_pieces.contains(meant.sliced(i, m_pieceBytes))) {
            if (i >= hiddenUntil) {
                result.append("[REDACTED_BOT_TOKEN]");
            }
            hiddenUntil = i + m_pieceBytes;
        }
        if (i >= hiddenUntil) {
            result.append(text.sliced(starts.at(i), starts.at(i + 1) - starts.at(i)));
        }
    }
    return result;
}

QString TokenMask::masked(const QString &text) const
{
    const QByteArray bytes = firstCharacters(text, maxReadCharacters).simplified().toUtf8();
    return firstCharacters(redacted(QString::fromUtf8(withoutToken(bytes))), maxShownCharacters);
}

} // namespace bram
