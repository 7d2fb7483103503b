// SPDX-License-Identifier: Apache-2.0
#include "system/linux/TerminationSignals.h"

#include "support/Waiting.h"

#include <gtest/gtest.h>

#include <csignal>

namespace bram
{

TEST(TerminationSignals, AnIgnoredSignalStaysIgnoredAndTheOthersArrive)
{
    const auto hangup = std::signal(SIGHUP, SIG_IGN);
    const auto terminate = std::signal(SIGTERM, SIG_DFL);
    {
        TerminationSignals signals;
        int requests = 0;
        QObject::connect(&signals, &TerminationSignals::requested, &signals, [&] { ++requests; });
        std::raise(SIGHUP);
        std::raise(SIGTERM);
        ASSERT_TRUE(test::waitUntil([&] { return requests > 0; }));
        EXPECT_EQ(requests, 1);
        // A second hangup would have its default action, if the first had been taken.
        std::raise(SIGHUP);
    }
    EXPECT_EQ(std::signal(SIGHUP, hangup), SIG_IGN);
    EXPECT_EQ(std::signal(SIGTERM, terminate), SIG_DFL);
}

} // namespace bram
