// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QSet>
#include <QString>

namespace bram
{

/// Takes one bot token out of texts in which it may stand in any form that an address can have: whole, in
/// part, percent-encoded, more than once so. The general redaction does not find it there, because nothing
/// separates it from the "bot" before it.
class TokenMask
{
public:
    explicit TokenMask(const QString &token);

    /// `text` with every eight or more successive characters of the token masked, wherever in it they stand,
    /// and with the general redaction after that; on one line, and at most some 400 characters of it.
    QString masked(const QString &text) const;

    /// All of the text, with only the token masked.
    QByteArray withoutToken(const QByteArray &text) const;

private:
    qsizetype m_pieceBytes;
    QSet<QByteArray> m_pieces; ///< every run of `m_pieceBytes` bytes in the token
};

} // namespace bram
