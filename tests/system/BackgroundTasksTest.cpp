// SPDX-License-Identifier: Apache-2.0
#include "system/BackgroundTasks.h"

#include "support/Doubles.h"
#include "support/Waiting.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace bram
{
namespace
{

using namespace Qt::StringLiterals;

QCoro::Task<> await(Reply<int> reply, QString failure)
{
    const int answer = co_await reply;
    if (answer < 0) {
        throw std::runtime_error(failure.toStdString());
    }
}

TEST(BackgroundTasks, LogsWhatEscapesAndKnowsWhatIsRunning)
{
    test::RecordingLog log;
    BackgroundTasks tasks(log);
    const ReplySource<int> one(0);
    const ReplySource<int> two(0);
    tasks.spawn(await(one.reply(), {}), u"one"_s);
    tasks.spawn(await(two.reply(), u"the disk is full"_s), u"two"_s);
    EXPECT_EQ(tasks.running(), (QStringList {u"one"_s, u"two"_s}));

    int idleCalls = 0;
    tasks.whenIdle([&] { ++idleCalls; });
    two.answer(-1);
    ASSERT_TRUE(test::waitUntil([&] { return tasks.running() == QStringList {u"one"_s}; }));
    EXPECT_EQ(log.lines(), QStringList {u"[Brackwen] task two failed: the disk is full"_s});
    EXPECT_EQ(idleCalls, 0);

    one.answer(1);
    ASSERT_TRUE(test::waitUntil([&] { return idleCalls > 0; }));
    EXPECT_EQ(tasks.running(), QStringList {});
    tasks.whenIdle([&] { ++idleCalls; });
    EXPECT_EQ(idleCalls, 1) << "never inside the call";
    ASSERT_TRUE(test::waitUntil([&] { return idleCalls > 1; }));
    EXPECT_EQ(idleCalls, 2) << "earlier callbacks not again";
    EXPECT_EQ(log.lines().size(), 1);
}

TEST(BackgroundTasks, TaskThatFailsBeforeItIsHandedOverIsLoggedToo)
{
    test::RecordingLog log;
    BackgroundTasks tasks(log);
    const ReplySource<int> source(0);
    source.answer(-1);
    tasks.spawn(await(source.reply(), u"at once"_s), u"early"_s);
    EXPECT_EQ(log.lines(), QStringList {u"[Brackwen] task early failed: at once"_s});
    EXPECT_EQ(tasks.running(), QStringList {});
}

TEST(BackgroundTasks, TasksMayOutliveTheOwner)
{
    test::RecordingLog log;
    const ReplySource<int> source(0);
    bool idle = false;
    auto task = await(source.reply(), u"too late"_s);
    {
        BackgroundTasks tasks(log);
        tasks.spawn(std::move(task), u"late"_s);
        tasks.whenIdle([&] { idle = true; });
    }
    source.answer(-1);
    for (int turn = 0; turn < 3; ++turn) {
        QCoreApplication::processEvents();
    }
    EXPECT_FALSE(idle);
    EXPECT_EQ(log.lines(), QStringList {});
}

} // namespace
} // namespace bram
