// SPDX-License-Identifier: Apache-2.0
#include "Fuzz.h"

#include "ui/terminal/KeyDecoder.h"

#include <algorithm>

using namespace bram;
using bram::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes = fuzz::toBytes(data, size);
    KeyDecoder whole;
    const QList<char32_t> keys = whole.take(bytes);
    require(std::ranges::none_of(keys,
                                 [](char32_t key) {
                                     return key == 0 || key == 0x1B || (key >= 0x80 && key < 0xA0)
                                         || key > KeyDecoder::deleteHere;
                                 }),
            "no escape sequence reaches the editor");

    // Where a read ends may change how many marks stand for broken bytes, but no key.
    const auto withoutMarks = [](QList<char32_t> list) {
        list.removeAll(0xFFFD);
        return list;
    };
    KeyDecoder byteByByte;
    QList<char32_t> pieces;
    for (const char &byte : bytes) {
        pieces += byteByByte.take(QByteArrayView(&byte, 1));
    }
    require(withoutMarks(keys) == withoutMarks(pieces),
            "where a read ends does not change the keys");
    return 0;
}
