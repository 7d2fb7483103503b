// SPDX-License-Identifier: Apache-2.0
#include "system/MemorySecretStore.h"

#include "support/Waiting.h"

#include <gtest/gtest.h>

namespace bram
{
namespace
{

using namespace Qt::StringLiterals;

TEST(KeychainError, DescribesItselfWithThePlatformsMessageWhenThereIsOne)
{
    EXPECT_EQ((KeychainError {-25308, {}}).description(), u"Keychain error (status=-25308)"_s);
    EXPECT_EQ((KeychainError {3, u"%1 access denied"_s}).description(), u"%1 access denied"_s);
}

TEST(MemorySecretStore, AddressesSecretsByServiceAndAccount)
{
    constexpr auto accessibility = SecretAccessibility::AfterFirstUnlock;
    MemorySecretStore store;
    EXPECT_TRUE(test::waitFor(store.remove(u"s"_s, u"a"_s)));
    EXPECT_TRUE(test::waitFor(store.set(u"s"_s, u"a"_s, u"1"_s, accessibility)));
    EXPECT_TRUE(test::waitFor(store.set(u"s"_s, u"a"_s, u"2"_s, accessibility)));
    EXPECT_TRUE(test::waitFor(store.set(u"s"_s, u"b"_s, u""_s, accessibility)));
    EXPECT_EQ(test::waitFor(store.get(u"s"_s, u"a"_s)).value(), u"2"_s);
    EXPECT_EQ(test::waitFor(store.get(u"s"_s, u"b"_s)).value(), u""_s);
    EXPECT_EQ(test::waitFor(store.get(u"a"_s, u"s"_s)).value(), std::nullopt);
    EXPECT_TRUE(test::waitFor(store.remove(u"s"_s, u"a"_s)));
    EXPECT_EQ(test::waitFor(store.get(u"s"_s, u"a"_s)).value(), std::nullopt);
}

} // namespace
} // namespace bram
