// SPDX-License-Identifier: Apache-2.0
#include "system/NextTurn.h"

#include "support/Waiting.h"

#include <QElapsedTimer>
#include <QPointer>
#include <QStringList>

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <memory>

namespace bram
{
namespace
{

using namespace Qt::StringLiterals;

/// Puts itself off for ever, without being quick about it.
void burn(QObject *context)
{
    QElapsedTimer timer;
    timer.start();
    while (timer.nsecsElapsed() < 200'000) { }
    inNextTurn(context, [context] { burn(context); });
}

TEST(NextTurn, RunsInOrderLaterAndForTheLivingOnly)
{
    QObject context;
    auto dying = std::make_unique<QObject>();
    QStringList log;
    inNextTurn(&context, [&] {
        log.append(u"first"_s);
        inNextTurn(&context, [&] { log.append(u"put off by the first"_s); });
        dying.reset();
    });
    inNextTurn(dying.get(), [&] { log.append(u"dead"_s); });
    inNextTurn(&context, [&] { log.append(u"second"_s); });
    EXPECT_EQ(log, QStringList {});
    ASSERT_TRUE(test::waitUntil([&] { return log.size() == 3; }));
    EXPECT_EQ(log, (QStringList {u"first"_s, u"second"_s, u"put off by the first"_s}));
}

TEST(NextTurn, NothingWaitsWhileTheLoopSleeps)
{
    const struct {
        const char *name;
        void (*putOff)(QObject *context, std::function<void()> work);
    } cases[] = {
        {"before the loop", [](QObject *context, auto work) { inNextTurn(context, work); }},
        {"from a timer",
         [](QObject *context, auto work) {
             QTimer::singleShot(0, context, [=] { inNextTurn(context, work); });
         }},
        {"from a posted event",
         [](QObject *context, auto work) {
             QMetaObject::invokeMethod(
                 context, [=] { inNextTurn(context, work); }, Qt::QueuedConnection);
         }},
        {"from such work",
         [](QObject *context, auto work) {
             inNextTurn(context, [=] { inNextTurn(context, work); });
         }},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        QCoreApplication::processEvents(); // nothing is left that would wake up the loop anyway
        QEventLoop loop;
        c.putOff(&loop, [&] { loop.exit(1); });
        QTimer::singleShot(10'000, &loop, [&] { loop.exit(2); });
        EXPECT_EQ(loop.exec(), 1);
        QObject context;
        bool done = false;
        c.putOff(&context, [&] { done = true; });
        for (int turn = 0; turn < 5; ++turn) {
            QCoreApplication::processEvents(); // which never sleeps
        }
        EXPECT_TRUE(done);
    }
}

TEST(NextTurn, EventsComeBetweenWorkThatNeverEnds)
{
    QObject context;
    burn(&context);
    bool timer = false;
    bool posted = false;
    QTimer::singleShot(1, &context, [&] { timer = true; });
    QMetaObject::invokeMethod(&context, [&] { posted = true; }, Qt::QueuedConnection);
    EXPECT_TRUE(test::waitUntil([&] { return timer && posted; }));
}

TEST(NextTurn, EventsComeBetweenTheWorkOfOneTurnInItsOrder)
{
    QObject context;
    QList<int> done;
    qsizetype doneAtTimer = -1;
    for (int i = 0; i < 300; ++i) {
        inNextTurn(&context, [&, i] {
            QElapsedTimer timer;
            timer.start();
            while (timer.nsecsElapsed() < 200'000) { }
            done.append(i);
            if (i == 0) {
                inNextTurn(&context, [&] { done.append(1000); });
            }
        });
    }
    QTimer::singleShot(1, &context, [&] { doneAtTimer = done.size(); });
    ASSERT_TRUE(test::waitUntil([&] { return done.size() == 301; }));
    EXPECT_TRUE(std::ranges::is_sorted(done));
    EXPECT_GE(doneAtTimer, 0);
    EXPECT_LT(doneAtTimer, 300);
}

TEST(NextTurn, ALongQueueTakesNoLongerForEachOfIt)
{
    QObject context;
    constexpr int count = 600'000;
    int done = 0;
    const std::clock_t begun = std::clock();
    for (int i = 0; i < count; ++i) {
        inNextTurn(&context, [&] { ++done; });
    }
    ASSERT_TRUE(test::waitUntil([&] { return done == count; }));
    EXPECT_LT(std::clock() - begun, 2 * CLOCKS_PER_SEC);
}

TEST(NextTurn, WorkMayDeleteObjectsLater)
{
    QObject context;
    QPointer<QObject> object = new QObject(&context);
    QEventLoop loop;
    inNextTurn(&context, [&] { object->deleteLater(); });
    QObject::connect(object, &QObject::destroyed, &loop, [&] { loop.exit(1); });
    QTimer::singleShot(10'000, &loop, [&] { loop.exit(2); });
    EXPECT_EQ(loop.exec(), 1);
}

} // namespace
} // namespace bram
