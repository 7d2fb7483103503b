// SPDX-License-Identifier: Apache-2.0
#include "app/SingleInstanceLock.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

using namespace bram;

using Result = SingleInstanceLock::Result;

namespace
{
class SingleInstance : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(QDir().mkdir(runtime)); }
    /// One that holds nothing any more when it returns.
    Result tryOnce(const QString &second) { return SingleInstanceLock({path, second}).acquire(); }
    void put(const QString &place)
    {
        QFile file(place);
        ASSERT_TRUE(file.open(QFile::WriteOnly));
    }
    static void setMode(const QString &place, mode_t mode)
    {
        ASSERT_EQ(chmod(QFile::encodeName(place).constData(), mode), 0);
    }

    QTemporaryDir folder;
    QString path = folder.filePath(QStringLiteral("lock"));
    QString runtime = folder.filePath(QStringLiteral("runtime"));
    QString own = runtime + QStringLiteral("/lock");
};
} // namespace

TEST_F(SingleInstance, OneHolderAtATimeAndALeftOverFileIsNoHolder)
{
    setMode(runtime, 0700);
    put(path);
    {
        SingleInstanceLock first({path, own});
        EXPECT_EQ(first.acquire(), Result::Acquired);
        EXPECT_EQ(first.acquire(), Result::Acquired);
        SingleInstanceLock second({path, own});
        EXPECT_EQ(second.acquire(), Result::HeldByAnotherCopy);
        EXPECT_EQ(second.holder(), getpid());
        // A copy that knows only one of the two, and one to which the other is a new file.
        EXPECT_EQ(tryOnce({}), Result::HeldByAnotherCopy);
        EXPECT_TRUE(QFile::remove(path));
        EXPECT_EQ(tryOnce(own), Result::HeldByAnotherCopy);
    }
    EXPECT_EQ(tryOnce(own), Result::Acquired);
}

TEST_F(SingleInstance, WhatIsInTheWayOfTheUsualFileIsGoneAround)
{
    setMode(runtime, 0700);
    const QString target = folder.filePath(QStringLiteral("target"));
    const QByteArray name = QFile::encodeName(path);
    struct Row {
        const char *what;
        std::function<bool()> make;
    };
    std::vector<Row> rows {
        {"a link", [&] { return QFile::link(target, path); }},
        {"a pipe", [&] { return mkfifo(name.constData(), 0600) == 0; }},
        {"a folder", [&] { return mkdir(name.constData(), 0700) == 0; }},
    };
    if (geteuid() == 0) { // nobody else can make a file of another user
        rows.push_back({"a stranger's file", [&] {
                            put(path);
                            return chown(name.constData(), 12345, 12345) == 0;
                        }});
    }
    for (const Row &row : rows) {
        ASSERT_TRUE(row.make()) << row.what;
        SingleInstanceLock nowhere({path, {}});
        EXPECT_EQ(nowhere.acquire(), Result::Impossible) << row.what;
        EXPECT_TRUE(nowhere.reason().startsWith(path)) << row.what;
        SingleInstanceLock first({path, own});
        EXPECT_EQ(first.acquire(), Result::Acquired) << row.what;
        EXPECT_EQ(first.path(), own);
        EXPECT_EQ(tryOnce(own), Result::HeldByAnotherCopy) << row.what;
        ASSERT_EQ(::remove(name.constData()), 0);
        EXPECT_EQ(tryOnce(own), Result::HeldByAnotherCopy) << row.what << ", taken away again";
        QFile::remove(path);
    }
    EXPECT_FALSE(QFile::exists(target));
}

TEST_F(SingleInstance, TheFileIsPrivateAndTheOwnFolderThisUsersAlone)
{
    SingleInstanceLock lock({path, {}});
    ASSERT_EQ(lock.acquire(), Result::Acquired);
    struct stat info = {};
    ASSERT_EQ(stat(QFile::encodeName(path).constData(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0600U);

    const QString missing = folder.filePath(QStringLiteral("missing/lock"));
    setMode(runtime, 0777);
    SingleInstanceLock open({missing, own});
    EXPECT_EQ(open.acquire(), Result::Impossible);
    EXPECT_EQ(open.reason(),
              missing + QStringLiteral(": No such file or directory; ") + runtime
                  + QStringLiteral(": it is not this user's alone"));
    setMode(runtime, 0700);
    EXPECT_EQ(open.acquire(), Result::Acquired);
}
