// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QLatin1StringView>
#include <QString>

#include <array>
#include <optional>

namespace bram
{

/// One row of an enumeration's table of raw texts: the texts that stand in files and on wires.
template<typename Enum>
struct RawTextRow {
    Enum value;
    QLatin1StringView text;
};

/// The raw text of `value`. Every enumerator has a row, so a missing one is a fault of the table.
template<typename Enum, std::size_t N>
QString toRawText(const std::array<RawTextRow<Enum>, N> &table, Enum value)
{
    for (const auto &row : table) {
        if (row.value == value) {
            return row.text;
        }
    }
    Q_UNREACHABLE();
}

/// The enumerator with exactly this raw text (case-sensitive), or nothing.
template<typename Enum, std::size_t N>
std::optional<Enum> fromRawText(const std::array<RawTextRow<Enum>, N> &table, QStringView text)
{
    for (const auto &row : table) {
        if (text == row.text) {
            return row.value;
        }
    }
    return std::nullopt;
}

} // namespace bram
