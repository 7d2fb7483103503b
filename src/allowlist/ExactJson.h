// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/Error.h"

#include <QByteArray>
#include <QString>

#include <expected>
#include <vector>

namespace bram
{

/// A JSON value that is written back as it was read: numbers digit for digit, strings with their
/// escapes, members that stand twice. For files that belong to another program.
struct ExactJson {
    enum class Kind {
        Object,
        Array,
        String,
        Other, ///< a number, true, false or null
    };

    Kind kind = Kind::Other;
    QByteArray token {}; ///< of `String` (with its quotes) and `Other`: as it stands in the file
    std::vector<QByteArray> keys {}; ///< of `Object`: the tokens, in the order of `values`
    std::vector<ExactJson> values {}; ///< of `Object` and `Array`

    static ExactJson object() { return {.kind = Kind::Object}; }
    static ExactJson array() { return {.kind = Kind::Array}; }
    static ExactJson string(const QString &text);

    bool isObject() const { return kind == Kind::Object; }
    bool isArray() const { return kind == Kind::Array; }
    bool isNull() const { return kind == Kind::Other && token == "null"; }

    /// Of `String`: what it says.
    QString text() const;

    /// Of `Object`: the member with this name, the last where there are several, as most readers have
    /// it. Null when there is none.
    ExactJson *member(const QString &name);
    const ExactJson *member(const QString &name) const;
    /// Sets the member, which is new or takes the place of the one that `member` finds.
    ExactJson &setMember(const QString &name, ExactJson value);
};

/// A JSON text with everything in it. The values refer to `source`, which therefore stays with them.
struct ExactJsonDocument {
    QByteArray source;
    ExactJson root;
};

/// With which some programs begin a text in UTF-8.
constexpr QByteArrayView byteOrderMark = "\xef\xbb\xbf";

/// Takes exactly what the JSON grammar allows, in UTF-8, up to 256 levels deep; and passes over a byte-order mark
/// before it.
std::expected<ExactJsonDocument, Error> parseExactJson(const QByteArray &source);

/// Two spaces for a level, members in the order of their names, a line feed at the end.
QByteArray prettyText(const ExactJson &value);

} // namespace bram
