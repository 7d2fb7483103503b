// SPDX-License-Identifier: Apache-2.0
#include "allowlist/CommandDigest.h"

#include <QCryptographicHash>

#include <algorithm>

namespace bram
{

namespace
{
constexpr qsizetype digestLength = 64;

constexpr bool isBlank(QChar character)
{
    return character == u' ' || (character >= u'\t' && character <= u'\r');
}

QStringView withoutBlanksAround(QStringView text)
{
    while (!text.isEmpty() && isBlank(text.front())) {
        text = text.sliced(1);
    }
    while (!text.isEmpty() && isBlank(text.back())) {
        text.chop(1);
    }
    return text;
}

/// One space for each run of blanks.
QString folded(QStringView text)
{
    QString result;
    result.reserve(text.size());
    for (const QChar character : text) {
        if (!isBlank(character)) {
            result += character;
        } else if (!result.endsWith(u' ')) {
            result += u' ';
        }
    }
    return result;
}
} // namespace

std::optional<QString> normalizedCommandDigest(QStringView command)
{
    const QStringView trimmed = withoutBlanksAround(command);
    if (trimmed.trimmed().isEmpty() || !trimmed.isValidUtf16()) {
        return std::nullopt;
    }
    const auto hash
        = QCryptographicHash::hash(folded(trimmed).toUtf8(), QCryptographicHash::Sha256);
    return QString::fromLatin1(hash.toHex());
}

bool isCommandDigest(QStringView text)
{
    return text.size() == digestLength && std::ranges::all_of(text, [](QChar character) {
               return (character >= u'0' && character <= u'9')
                   || (character >= u'a' && character <= u'f');
           });
}

bool hasInnerLineBreak(QStringView command)
{
    return std::ranges::any_of(withoutBlanksAround(command), isLineBreak);
}

} // namespace bram
