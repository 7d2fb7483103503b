// SPDX-License-Identifier: Apache-2.0
#include "ui/terminal/KeyDecoder.h"

#include <gtest/gtest.h>

using namespace bram;

TEST(KeyDecoder, AKeyIsNeverLostToWhatCameBeforeIt)
{
    struct Case {
        QList<QByteArray> reads;
        QList<char32_t> keys;
    };
    const std::vector<Case> cases {
        {{"\xec\x8a", "\xb9"}, {U'승'}},
        {{"\xc3", "\x03"}, {0xFFFD, KeyDecoder::leave}},
        {{"\xf0\x9f", "\r"}, {0xFFFD, 0xFFFD, KeyDecoder::enter}},
        {{"\x1b", "[", "A"}, {KeyDecoder::earlier}},
        {{"\x1b[3~x"}, {KeyDecoder::deleteHere, U'x'}},
        {{"\x1b[200;5Zx"}, {U'x'}},
    };
    for (const auto &[reads, keys] : cases) {
        KeyDecoder decoder;
        QList<char32_t> decoded;
        for (const QByteArray &read : reads) {
            decoded += decoder.take(read);
        }
        EXPECT_EQ(decoded, keys) << reads.join().toHex().constData();
    }
}
