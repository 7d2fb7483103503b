// SPDX-License-Identifier: Apache-2.0
#include "gateway/TokenSyncState.h"

#include <gtest/gtest.h>

namespace bram
{
namespace
{

using namespace Qt::StringLiterals;

TEST(TokenSyncState, ComparesTrimmedTextsExactly)
{
    using State = TokenSyncState;
    using Credentials = GatewayCredentials;
    const std::optional<QString> none;
    const struct {
        const char *name;
        Credentials inUse;
        std::optional<Credentials> reference;
        State expected;
    } cases[] = {
        {"no reference", {u"t"_s, none}, std::nullopt, State::NoReference},
        {"equal token", {u"t"_s, none}, Credentials {u"t"_s, none}, State::Matching},
        {"equal but for blanks", {u" t\n"_s, u" "_s}, Credentials {u"t"_s, none}, State::Matching},
        {"equal pair", {u"t"_s, u"p"_s}, Credentials {u"t"_s, u"p"_s}, State::Matching},
        {"other case", {u"T"_s, none}, Credentials {u"t"_s, none}, State::Mismatch},
        {"only the password is in use",
         {none, u"p"_s},
         Credentials {u"t"_s, u"p"_s},
         State::Mismatch},
        {"password not in the file", {u"t"_s, u"p"_s}, Credentials {u"t"_s, none}, State::Mismatch},
        {"exchanged", {u"p"_s, u"t"_s}, Credentials {u"t"_s, u"p"_s}, State::Mismatch},
        {"nothing in use", {none, none}, Credentials {u"t"_s, none}, State::Mismatch},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(tokenSyncState(c.inUse, c.reference), c.expected) << c.name;
    }
}

} // namespace
} // namespace bram
