// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QJsonValue>
#include <QList>
#include <QString>

#include <optional>

namespace bram
{

// How values are read that people write in more than one way, in the platform's configuration and in the
// environment. Nothing is the answer to everything else.

/// A boolean as it is; a number: whether it is not zero; a text, without blanks around it and in any case:
/// "1", "true", "yes", "y", "on" or "0", "false", "no", "n", "off".
std::optional<bool> parseBool(const QJsonValue &value);

/// A whole number as it is; a text, without blanks around it: an optional sign and decimal digits.
std::optional<qint64> parseInt64(const QJsonValue &value);

/// The numbers of a list that commas, semicolons and blanks divide: ascending and without duplicates. What is
/// no number in it is left out.
QList<qint64> parseInt64List(const std::optional<QString> &text);

} // namespace bram
