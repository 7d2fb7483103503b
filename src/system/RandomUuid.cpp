// SPDX-License-Identifier: Apache-2.0
#include "system/RandomUuid.h"

#include <QRandomGenerator>
#include <QUuid>

namespace bram
{

QString randomUuid()
{
    const quint64 one = QRandomGenerator::global()->generate64();
    const quint64 two = QRandomGenerator::global()->generate64();
    const auto bits = [](quint64 random, int from, int count) {
        return static_cast<uint>(random >> from & ((Q_UINT64_C(1) << count) - 1));
    };
    const auto byte = [&](int number) { return static_cast<uchar>(bits(two, 8 * number, 8)); };
    // Version 4, variant 1: what is random, and that it is.
    return QUuid(bits(one, 0, 32), static_cast<ushort>(bits(one, 32, 16)),
                 static_cast<ushort>(0x4000 | bits(one, 48, 12)),
                 static_cast<uchar>(0x80 | bits(two, 0, 6)), byte(1), byte(2), byte(3), byte(4),
                 byte(5), byte(6), byte(7))
        .toString(QUuid::WithoutBraces);
}

} // namespace bram
