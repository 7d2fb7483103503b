// SPDX-License-Identifier: Apache-2.0
#include "app/LaunchOptions.h"

#include <gtest/gtest.h>

using namespace bram;
using Practice = LaunchOptions::Practice;

TEST(LaunchOptions, WhatIsAskedForIsReadAndAnythingElseIsOneLine)
{
    struct Case {
        QStringList words;
        std::optional<Practice> practice; ///< nothing: an error
    };
    const std::vector<Case> cases {
        {{}, Practice::No},
        {{QStringLiteral("--terminal")}, Practice::No},
        {{QStringLiteral("--practice")}, Practice::Yes},
        {{QStringLiteral("--practice-if-unconfigured")}, Practice::IfUnconfigured},
        {{QStringLiteral("--practice-if-unconfigured"), QStringLiteral("--practice")},
         Practice::Yes},
        {{QStringLiteral("--unknown")}, std::nullopt},
        {{QStringLiteral("--practice=yes")}, std::nullopt},
        {{QStringLiteral("stray")}, std::nullopt},
        {{QStringLiteral("-")}, std::nullopt},
    };
    for (const auto &[words, practice] : cases) {
        const auto options = parseLaunchOptions(QStringList(QStringLiteral("bram")) + words);
        const auto name = words.join(u' ').toStdString();
        ASSERT_EQ(options.has_value(), practice.has_value()) << name;
        if (options) {
            EXPECT_EQ(std::get<LaunchOptions>(*options).practice, practice) << name;
        } else {
            EXPECT_FALSE(options.error().message.isEmpty()) << name;
            EXPECT_FALSE(options.error().message.contains(u'\n')) << name;
        }
    }
    for (const char *text : {"--help", "-h", "--version", "-v"}) {
        const auto options = parseLaunchOptions({QStringLiteral("bram"), QString::fromUtf8(text)});
        EXPECT_TRUE(options && std::holds_alternative<LaunchText>(*options)) << text;
    }
}
