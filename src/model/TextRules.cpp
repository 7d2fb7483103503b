// SPDX-License-Identifier: Apache-2.0
#include "model/TextRules.h"

#include <QStringBuilder>
#include <QTextBoundaryFinder>

namespace bram
{

std::optional<QString> trimmedOrAbsent(const QString &text)
{
    const QString trimmed = text.trimmed();
    return trimmed.isEmpty() ? std::nullopt : std::optional(trimmed);
}

std::optional<QString> trimmedOrAbsent(const std::optional<QString> &text)
{
    return text ? trimmedOrAbsent(*text) : std::nullopt;
}

QString firstCharacters(const QString &text, qsizetype count)
{
    if (text.size() <= count) {
        return text;
    }
    // The finder goes through all it is given first, so it gets as much as may be needed, not a whole long text.
    for (qsizetype window = 2 * count + 64;; window *= 2) {
        const QString head = text.left(window);
        QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, head);
        qsizetype found = 0;
        while (found < count && finder.toNextBoundary() >= 0) {
            ++found;
        }
        // What follows the last unit may belong to the character before it, or be half of a surrogate pair.
        if (found == count && finder.position() < head.size() - 1) {
            return text.first(finder.position());
        }
        if (head.size() == text.size()) {
            return found == count ? text.first(finder.position()) : text;
        }
    }
}

QString shortened(QStringView text, qsizetype maxUnits)
{
    if (text.size() <= maxUnits) {
        return text.toString();
    }
    const bool splitsPair = maxUnits > 0 && text[maxUnits - 1].isHighSurrogate();
    return text.first(splitsPair ? maxUnits - 1 : maxUnits) % u'…';
}

qsizetype characterCount(const QString &text)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype count = 0;
    while (finder.toNextBoundary() > 0) {
        ++count;
    }
    return count;
}

} // namespace bram
