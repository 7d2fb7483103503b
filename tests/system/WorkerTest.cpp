// SPDX-License-Identifier: Apache-2.0
#include "system/Worker.h"

#include "support/Waiting.h"

#include <QCoro/QCoroTask>
#include <QStringList>
#include <QThread>

#include <gtest/gtest.h>

#include <memory>

namespace bram
{
namespace
{

using namespace Qt::StringLiterals;
using test::waitUntil;

QCoro::Task<> await(Reply<QString> reply, QStringList *log)
{
    log->append(co_await reply);
    EXPECT_TRUE(QThread::currentThread() == QCoreApplication::instance()->thread());
}

Reply<QString> name(Worker &worker, const QString &name)
{
    return worker.run<QString>(u"abandoned"_s, [name] {
        EXPECT_FALSE(QThread::currentThread() == QCoreApplication::instance()->thread());
        return name;
    });
}

TEST(Worker, DoesOneAfterTheOtherElsewhereAndAnswersHere)
{
    Worker worker;
    QStringList log;
    QStringList expected;
    std::vector<QCoro::Task<>> tasks;
    for (int i = 0; i < 50; ++i) {
        expected.append(QString::number(i));
        tasks.push_back(await(name(worker, expected.last()), &log));
    }
    EXPECT_TRUE(log.isEmpty());
    EXPECT_TRUE(waitUntil([&] { return log.size() == expected.size(); }));
    EXPECT_EQ(log, expected);
}

TEST(Worker, NobodyWaitsForAWorkerThatIsGone)
{
    QStringList log;
    auto worker = std::make_unique<Worker>();
    const auto first = await(name(*worker, u"first"_s), &log);
    const auto second = await(name(*worker, u"second"_s), &log);
    worker.reset();
    EXPECT_TRUE(waitUntil([&] { return log.size() == 2; }));
    EXPECT_EQ(log, QStringList({u"abandoned"_s, u"abandoned"_s}));
}

} // namespace
} // namespace bram
