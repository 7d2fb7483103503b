// SPDX-License-Identifier: Apache-2.0
#include "system/Reply.h"

#include "support/Waiting.h"

#include <QCoro/QCoroTask>
#include <QStringList>

#include <gtest/gtest.h>

namespace bram
{
namespace
{

using namespace Qt::StringLiterals;

QCoro::Task<> await(Reply<QString> reply, QStringList *log)
{
    log->append(co_await reply);
}

/// Awaits and lets go of what the answer comes from, as an owner that dies in its own handler does.
QCoro::Task<> awaitAndForget(Reply<QString> reply, std::unique_ptr<ReplySource<QString>> *source,
                             QStringList *log)
{
    log->append(co_await reply);
    source->reset();
    log->append(u"forgotten"_s);
}

TEST(Reply, GivesTheFirstAnswerHoweverItComes)
{
    struct Case {
        const char *name;
        void (*before)(ReplySource<QString> &);
        void (*after)(std::optional<ReplySource<QString>> &);
        QString expected;
    };
    const Case cases[] = {
        {"answered before it is awaited", [](auto &source) { source.answer(u"early"_s); },
         [](auto &) {}, u"early"_s},
        {"answered later", [](auto &) {}, [](auto &source) { source->answer(u"late"_s); },
         u"late"_s},
        {"answered twice while waiting", [](auto &) {},
         [](auto &source) {
             source->answer(u"first"_s);
             source->answer(u"second"_s);
         },
         u"first"_s},
        {"answered before and after", [](auto &source) { source.answer(u"early"_s); },
         [](auto &source) { source->answer(u"late"_s); }, u"early"_s},
        {"source gone without an answer", [](auto &) {}, [](auto &source) { source.reset(); },
         u"abandoned"_s},
        {"answered, then source gone", [](auto &) {},
         [](auto &source) {
             source->answer(u"answer"_s);
             source.reset();
         },
         u"answer"_s},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        std::optional<ReplySource<QString>> source(u"abandoned"_s);
        QStringList log;
        c.before(*source);
        const auto task = await(source->reply(), &log);
        c.after(source);
        EXPECT_TRUE(test::waitUntil([&] { return task.isReady(); }));
        QCoreApplication::processEvents();
        EXPECT_EQ(log, QStringList {c.expected});
    }
}

TEST(Reply, ContinuesInALaterTurnAndMayDropItsSource)
{
    auto source = std::make_unique<ReplySource<QString>>(u"abandoned"_s);
    QStringList log;
    const auto task = awaitAndForget(source->reply(), &source, &log);
    source->answer(u"answer"_s);
    EXPECT_EQ(log, QStringList {}) << "the coroutine went on inside the call that answered";
    ASSERT_TRUE(test::waitUntil([&] { return task.isReady(); }));
    EXPECT_EQ(log, (QStringList {u"answer"_s, u"forgotten"_s}));
}

TEST(Reply, IsAbandonedOnlyWithTheLastCopyOfItsSource)
{
    std::optional<ReplySource<QString>> first(u"abandoned"_s);
    std::optional<ReplySource<QString>> second(*first);
    QStringList log;
    const auto task = await(first->reply(), &log);
    first.reset();
    QCoreApplication::processEvents();
    EXPECT_FALSE(second->isAnswered());
    second.reset();
    ASSERT_TRUE(test::waitUntil([&] { return task.isReady(); }));
    EXPECT_EQ(log, QStringList {u"abandoned"_s});
}

} // namespace
} // namespace bram
