// SPDX-License-Identifier: Apache-2.0
#include "app/LaunchOptions.h"

#include <gtest/gtest.h>

using namespace bram;
using namespace Qt::StringLiterals;
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
        const auto options = parseLaunchOptions(QStringList(QStringLiteral("bram")) + words, {});
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
        const auto options
            = parseLaunchOptions({QStringLiteral("bram"), QString::fromUtf8(text)}, {});
        EXPECT_TRUE(options && std::holds_alternative<LaunchText>(*options)) << text;
    }
}

TEST(LaunchOptions, ExercisesAreAskedForByOptionOrEnvironment)
{
    struct Case {
        QStringList words;
        QMap<QString, QString> variables;
        bool selfTest;
        std::optional<QString> output;
        bool simulation;
        bool menu;
    };
    const std::vector<Case> cases {
        {{}, {}, false, {}, false, false},
        {{u"--self-test"_s}, {}, true, {}, false, false},
        {{u"--self-test"_s, u"--self-test-output"_s, u"a b"_s},
         {{u"BRACKWEN_SELF_TEST_OUTPUT"_s, u"/tmp/other"_s}},
         true,
         u"a b"_s,
         false,
         false},
        {{u"--startup-simulation"_s}, {}, false, {}, true, false},
        {{},
         {{u"BRACKWEN_RUN_SELF_TEST"_s, u" Yes "_s},
          {u"BRACKWEN_SELF_TEST_OUTPUT"_s, u" /tmp/r "_s},
          {u"BRACKWEN_RUN_STARTUP_SIMULATION"_s, u"1"_s},
          {u"BRACKWEN_ENABLE_SIMULATION_MENU"_s, u"TRUE"_s}},
         true,
         u"/tmp/r"_s,
         true,
         true},
        {{},
         {{u"BRACKWEN_RUN_SELF_TEST"_s, u"0"_s},
          {u"BRACKWEN_RUN_STARTUP_SIMULATION"_s, u"no"_s},
          {u"BRACKWEN_ENABLE_SIMULATION_MENU"_s, u"maybe"_s}},
         false,
         {},
         false,
         false},
    };
    for (const Case &row : cases) {
        const auto options = parseLaunchOptions(QStringList(u"bram"_s) + row.words,
                                                Environment().overriddenBy(row.variables));
        ASSERT_TRUE(options);
        const auto &read = std::get<LaunchOptions>(*options);
        EXPECT_EQ(read.selfTest, row.selfTest);
        EXPECT_EQ(read.selfTestOutput, row.output);
        EXPECT_EQ(read.startupSimulation, row.simulation);
        EXPECT_EQ(read.simulationMenuEnabled, row.menu);
    }
    for (const QStringList &words :
         {QStringList {u"--self-test-output"_s}, QStringList {u"--self-test-output"_s, u" "_s},
          QStringList {u"--self-test=1"_s}}) {
        EXPECT_FALSE(parseLaunchOptions(QStringList(u"bram"_s) + words, {}));
    }
}
