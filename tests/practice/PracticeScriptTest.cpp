// SPDX-License-Identifier: Apache-2.0
#include "practice/PracticeScript.h"

#include <gtest/gtest.h>

namespace bram
{
namespace
{
using namespace Qt::StringLiterals;

TEST(PracticeScript, ReadsEveryShapeOfStep)
{
    const auto steps = parsePracticeScript(u"# a morning\n"
                                           "\n"
                                           "request  r-1 main   echo  'a  b' \\n\\\\n \\u202E!\r\n"
                                           "request-for 5 r-2 - ls\n"
                                           "  wait 20\n"
                                           "wait-decision r-1\n"
                                           "reject unauthorized: token revoked\n"
                                           "raw {\"type\":1}\n"
                                           "raw-binary 00fF\n"
                                           "never-answer\n"
                                           "quit"_s);
    ASSERT_TRUE(steps) << qPrintable(steps.error().message);
    const std::vector<ScriptStep> expected {
        {.verb = ScriptVerb::Request,
         .id = u"r-1"_s,
         .agent = u"main"_s,
         .text = u"echo  'a  b' \n\\n \u202E!"_s,
         .line = 3},
        {.verb = ScriptVerb::RequestFor, .id = u"r-2"_s, .text = u"ls"_s, .number = 5, .line = 4},
        {.verb = ScriptVerb::Wait, .number = 20, .line = 5},
        {.verb = ScriptVerb::WaitDecision, .id = u"r-1"_s, .line = 6},
        {.verb = ScriptVerb::Reject, .text = u"unauthorized: token revoked"_s, .line = 7},
        {.verb = ScriptVerb::Raw, .text = u"{\"type\":1}"_s, .line = 8},
        {.verb = ScriptVerb::RawBinary, .text = u"00fF"_s, .line = 9},
        {.verb = ScriptVerb::NeverAnswer, .line = 10},
        {.verb = ScriptVerb::Quit, .line = 11},
    };
    EXPECT_EQ(*steps, expected);
    EXPECT_TRUE(parsePracticeScript(u""_s)->empty());
}

TEST(PracticeScript, RefusesABadLineByItsNumber)
{
    const std::pair<QString, QString> rows[] {
        {u"explode"_s, u"line 1: unknown step \"explode\""_s},
        {u"quit\n\nQuit"_s, u"line 3: unknown step \"Quit\""_s},
        {u"request r-1 main"_s, u"line 1: request: COMMAND is missing"_s},
        {u"request"_s, u"line 1: request: ID is missing"_s},
        {u"wait soon"_s, u"line 1: wait: MS must be a whole number, not \"soon\""_s},
        {u"wait -1"_s, u"line 1: wait: MS must be a whole number, not \"-1\""_s},
        {u"wait 99999999999"_s, u"line 1: wait: MS must be a whole number, not \"99999999999\""_s},
        {u"drop everything"_s, u"line 1: drop: unexpected \"everything\""_s},
        {u"raw-binary 0"_s, u"line 1: raw-binary: HEX must be pairs of hexadecimal digits"_s},
        {u"raw-binary zz"_s, u"line 1: raw-binary: HEX must be pairs of hexadecimal digits"_s},
        {u"raw a\\"_s, u"line 1: raw: bad escape in TEXT (known: \\n \\t \\\\ \\uXXXX)"_s},
        {u"raw \\u12"_s, u"line 1: raw: bad escape in TEXT (known: \\n \\t \\\\ \\uXXXX)"_s},
        {u"error \\x"_s, u"line 1: error: bad escape in TEXT (known: \\n \\t \\\\ \\uXXXX)"_s},
    };
    for (const auto &[script, message] : rows) {
        const auto steps = parsePracticeScript(script);
        ASSERT_FALSE(steps) << qPrintable(script);
        EXPECT_EQ(steps.error().message, message);
    }
}

} // namespace
} // namespace bram
