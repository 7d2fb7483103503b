// SPDX-License-Identifier: Apache-2.0
#include "telegram/ChatText.h"

#include "model/HonestDisplay.h"
#include "model/ShownWhole.h"
#include "model/TextRules.h"
#include "telegram/TokenMask.h"

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr qsizetype lineCharacters = 60;
// Marks make a text longer; of this length eight lines and all around them fit into a message.
constexpr qsizetype maxLineUnits = 260;
/// Whatever comes after that has no room in a line.
constexpr qsizetype maxReadUnits = 1024;

QString cutMarked(const QString &shown, qsizetype maxUnits)
{
    return shown.size() <= maxUnits ? shown : shown.first(cutBefore(shown, maxUnits - 1)) + u'…';
}

/// Without its misleading characters, and with an ellipsis if it is cut.
QString honestStart(const QString &source, qsizetype maxCharacters)
{
    const QString start = firstCharacters(source, maxCharacters);
    // With the ellipsis already there, a blank before it does not count as one at the end.
    return honestLine(start.size() < source.size() ? start + u'…' : start).text;
}
} // namespace

QString honestCut(const QString &source, qsizetype maxCharacters, qsizetype maxUnits)
{
    return cutMarked(honestStart(source, maxCharacters), maxUnits);
}

QString commandLineForChat(const QString &command, const TokenMask *mask)
{
    QString start = command.first(std::min(command.size(), maxReadUnits));
    start = withoutToken(start, mask).value_or(start);
    start.replace("\r\n"_L1, "\n"_L1);
    start.replace(u'\r', u'\n');
    QString shown = honestStart(start, lineCharacters);
    // Marks cannot be forged, so this one stands for a line break and the sign itself for nothing else.
    shown.replace(lineBreakSign, u"⟨U+23CE⟩"_s);
    shown.replace(u"⟨U+000A⟩"_s, QString(lineBreakSign));
    return cutMarked(shown, maxLineUnits);
}

bool isShownWholeInList(const QString &command, const TokenMask *mask)
{
    return isShownWholeOnOneLine(command, lineCharacters)
        && commandLineForChat(command, mask) == command;
}

std::optional<QString> withoutToken(const QString &text, const TokenMask *mask)
{
    if (mask == nullptr) {
        return std::nullopt;
    }
    const QByteArray bytes = text.toUtf8();
    const QByteArray clean = mask->withoutToken(bytes);
    return clean == bytes ? std::nullopt : std::optional(QString::fromUtf8(clean));
}

qsizetype cutBefore(const QString &shown, qsizetype end)
{
    const auto joinsWhatIsBefore
        = [&](qsizetype at) { return shown.at(at).isLowSurrogate() || shown.at(at).isMark(); };
    while (end > 0 && end < shown.size() && joinsWhatIsBefore(end)) {
        --end;
    }
    // A ⟨ in an honest text always opens a mark.
    const qsizetype lastMark = end > 0 ? shown.lastIndexOf(u'⟨', end - 1) : -1;
    return lastMark >= 0 && shown.indexOf(u'⟩', lastMark) >= end ? lastMark : end;
}

} // namespace bram
