// SPDX-License-Identifier: Apache-2.0
#include "model/TextRules.h"

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
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    for (qsizetype i = 0; i < count; ++i) {
        if (finder.toNextBoundary() < 0) {
            return text;
        }
    }
    return text.first(finder.position());
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
