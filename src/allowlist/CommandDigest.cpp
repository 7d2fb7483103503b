// SPDX-License-Identifier: Apache-2.0
#include "allowlist/CommandDigest.h"

#include <QCryptographicHash>

#include <algorithm>

namespace bram
{

namespace
{
constexpr qsizetype digestLength = 64;
constexpr QStringView hereDocument = u"<<";

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

/// What a shell passes over around a command. Not `trimmed`: a carriage return, too, is part of a word.
QStringView withoutOuterBlanks(QStringView command)
{
    const auto isPassedOver = [](QChar character) {
        return character == u' ' || character == u'\t' || character == u'\n';
    };
    while (!command.isEmpty() && isPassedOver(command.front())) {
        command = command.sliced(1);
    }
    while (!command.isEmpty() && isPassedOver(command.back())) {
        command.chop(1);
    }
    return command;
}

/// Whether the number of blanks around this character can make a difference: quotes and backslashes keep
/// blanks, and so do, in one place or another, `${x:-a  b}`, `@(a  b)`, `x[a  b]=` and their like.
bool keepsBlanks(QChar character)
{
    return QStringView(u"'\"\\`$()[]{}").contains(character);
}

QString sha256(const QString &text)
{
    return QString::fromLatin1(
        QCryptographicHash::hash(text.toUtf8(), QCryptographicHash::Sha256).toHex());
}
} // namespace

std::optional<QString> normalizedCommandDigest(QStringView command)
{
    const QStringView trimmed = command.trimmed();
    if (trimmed.isEmpty() || !trimmed.isValidUtf16()) {
        return std::nullopt;
    }
    return sha256(folded(trimmed));
}

bool isCommandDigest(QStringView text)
{
    return text.size() == digestLength && std::ranges::all_of(text, [](QChar character) {
               return (character >= u'0' && character <= u'9')
                   || (character >= u'a' && character <= u'f');
           });
}

bool isPlainCommand(QStringView command)
{
    // A here-document is what follows the line, so that line breaks at the end are input: `apt remove x <<E` and
    // two of them answer its question.
    return !command.contains(hereDocument)
        && std::ranges::none_of(withoutOuterBlanks(command), [](QChar character) {
               const bool isUsualBlank = character == u' ' || character == u'\t';
               return keepsBlanks(character)
                   || (!isUsualBlank
                       && (character.isSpace() || character.category() == QChar::Other_Control));
           });
}

QString commandForm(QStringView command)
{
    return isPlainCommand(command) ? plainCommandForm.toString() : sha256(command.toString());
}

bool isCommandForm(QStringView text)
{
    return text == plainCommandForm || isCommandDigest(text);
}

} // namespace bram
