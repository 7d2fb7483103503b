// SPDX-License-Identifier: Apache-2.0
#include "allowlist/CommandDigest.h"

#include <QCryptographicHash>

#include <algorithm>

namespace bram
{

namespace
{
constexpr qsizetype digestLength = 64;

/// One space for each run of blanks.
QString folded(QStringView text)
{
    QString result;
    result.reserve(text.size());
    for (const QChar character : text) {
        if (!character.isSpace()) {
            result += character;
        } else if (!result.endsWith(u' ')) {
            result += u' ';
        }
    }
    return result;
}

/// What around a command makes no difference to a shell.
bool isPassedOver(QChar character)
{
    return character == u' ' || character == u'\t' || character == u'\n' || character == u'\r';
}
} // namespace

std::optional<QString> normalizedCommandDigest(QStringView command)
{
    const QStringView trimmed = command.trimmed();
    if (trimmed.isEmpty() || !trimmed.isValidUtf16()) {
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

bool hasAmbiguousBlank(QStringView command)
{
    // Not `trimmed`: at the ends, too, a shell passes over usual blanks and line breaks only.
    while (!command.isEmpty() && isPassedOver(command.front())) {
        command = command.sliced(1);
    }
    while (!command.isEmpty() && isPassedOver(command.back())) {
        command.chop(1);
    }
    return std::ranges::any_of(command, [](QChar character) {
        return character.isSpace() && character != u' ' && character != u'\t';
    });
}

} // namespace bram
