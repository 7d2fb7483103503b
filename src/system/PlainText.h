// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QStringView>

#include <array>
#include <concepts>
#include <cstring>

namespace bram
{

/// Copies the units at the beginning of `text` that `isPlain` accepts, one byte each, and returns how many
/// they are: what is written for every event is nearly always plain ASCII. `isPlain` accepts ASCII units
/// only and is cheap; `out` has room for all of `text`.
template<std::predicate<char16_t> Predicate>
qsizetype copyPlainUnits(QStringView text, char *out, Predicate isPlain)
{
    // In blocks of a fixed size on the stack, which a compiler turns into a few instructions each.
    constexpr qsizetype blockSize = 16;
    const char16_t *const units = text.utf16();
    qsizetype copied = 0;
    while (text.size() - copied >= blockSize) {
        std::array<char16_t, blockSize> block;
        std::memcpy(block.data(), units + copied, sizeof block);
        char16_t others = 0;
        std::array<char, blockSize> bytes;
        for (std::size_t i = 0; i < blockSize; ++i) {
            others |= static_cast<char16_t>(!isPlain(block[i]));
            bytes[i] = static_cast<char>(block[i]);
        }
        if (others != 0) {
            break;
        }
        std::memcpy(out + copied, bytes.data(), sizeof bytes);
        copied += blockSize;
    }
    while (copied < text.size() && isPlain(units[copied])) {
        out[copied] = static_cast<char>(units[copied]);
        ++copied;
    }
    return copied;
}

} // namespace bram
