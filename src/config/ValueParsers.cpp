// SPDX-License-Identifier: Apache-2.0
#include "config/ValueParsers.h"

#include <QStringList>

#include <algorithm>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
/// The digits and nothing but them: `toLongLong` alone would also take blanks and other signs.
std::optional<qint64> parseDigits(const QString &text)
{
    const qsizetype signs = text.startsWith(u'-') || text.startsWith(u'+') ? 1 : 0;
    for (const QChar c : QStringView(text).sliced(signs)) {
        if (c < u'0' || c > u'9') {
            return std::nullopt;
        }
    }
    bool isNumber = false;
    const qint64 number = text.toLongLong(&isNumber, 10);
    return isNumber ? std::optional(number) : std::nullopt;
}
} // namespace

std::optional<bool> parseBool(const QJsonValue &value)
{
    if (value.isBool()) {
        return value.toBool();
    }
    if (value.isDouble()) {
        return value.toDouble() != 0.0;
    }
    const QString text = value.toString().trimmed().toLower();
    if (QStringList {u"1"_s, u"true"_s, u"yes"_s, u"y"_s, u"on"_s}.contains(text)) {
        return true;
    }
    if (QStringList {u"0"_s, u"false"_s, u"no"_s, u"n"_s, u"off"_s}.contains(text)) {
        return false;
    }
    return std::nullopt;
}

std::optional<qint64> parseInt64(const QJsonValue &value)
{
    if (value.isString()) {
        return parseDigits(value.toString().trimmed());
    }
    // What is no whole number gives the value that is asked for in its place.
    const qint64 number = value.toInteger(0);
    return value.isDouble() && value.toInteger(1) == number ? std::optional(number) : std::nullopt;
}

QList<qint64> parseInt64List(const std::optional<QString> &text)
{
    QList<qint64> numbers;
    QString pieces = text.value_or(QString());
    for (QChar &c : pieces) {
        c = c == u',' || c == u';' || c.isSpace() ? u' ' : c;
    }
    for (const QString &piece : pieces.split(u' ', Qt::SkipEmptyParts)) {
        if (const auto number = parseDigits(piece)) {
            numbers.append(*number);
        }
    }
    std::ranges::sort(numbers);
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    return numbers;
}

} // namespace bram
