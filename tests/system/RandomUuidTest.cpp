// SPDX-License-Identifier: Apache-2.0
#include "system/RandomUuid.h"

#include <QSet>
#include <QUuid>

#include <gtest/gtest.h>

namespace bram
{
namespace
{

TEST(RandomUuid, IsCanonicalAndNeverTheSame)
{
    QSet<QString> seen;
    for (int i = 0; i < 10'000; ++i) {
        const QString text = randomUuid();
        const QUuid uuid(text);
        ASSERT_EQ(uuid.version(), QUuid::Random) << qPrintable(text);
        ASSERT_EQ(uuid.variant(), QUuid::DCE) << qPrintable(text);
        ASSERT_EQ(uuid.toString(QUuid::WithoutBraces), text);
        seen.insert(text);
    }
    EXPECT_EQ(seen.size(), 10'000);
}

} // namespace
} // namespace bram
