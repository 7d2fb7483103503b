// SPDX-License-Identifier: Apache-2.0
#include "app/SingleInstanceLock.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

using namespace bram;

namespace
{
class SingleInstance : public testing::Test
{
protected:
    QTemporaryDir folder;
    QString path = folder.filePath(QStringLiteral("lock"));
};
} // namespace

TEST_F(SingleInstance, OneHolderAtATimeAndALeftOverFileIsNoHolder)
{
    QFile leftOver(path);
    ASSERT_TRUE(leftOver.open(QFile::WriteOnly));
    leftOver.close();
    {
        SingleInstanceLock first(path);
        EXPECT_TRUE(first.acquire());
        EXPECT_TRUE(first.acquire());
        SingleInstanceLock second(path);
        EXPECT_FALSE(second.acquire());
    }
    SingleInstanceLock third(path);
    EXPECT_TRUE(third.acquire());
}

TEST_F(SingleInstance, FileIsPrivateAndNeverReachedThroughALink)
{
    SingleInstanceLock lock(path);
    ASSERT_TRUE(lock.acquire());
    struct stat info = {};
    ASSERT_EQ(stat(QFile::encodeName(path).constData(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0600U);

    const QString target = folder.filePath(QStringLiteral("target"));
    const QString link = folder.filePath(QStringLiteral("link"));
    ASSERT_TRUE(QFile::link(target, link));
    SingleInstanceLock linked(link);
    EXPECT_FALSE(linked.acquire());
    EXPECT_FALSE(QFile::exists(target));

    const QString fifo = folder.filePath(QStringLiteral("fifo"));
    ASSERT_EQ(mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    SingleInstanceLock noFile(fifo);
    EXPECT_FALSE(noFile.acquire());

    SingleInstanceLock nowhere(folder.filePath(QStringLiteral("missing/lock")));
    EXPECT_FALSE(nowhere.acquire());
}

TEST_F(SingleInstance, PathOfAnotherUserIsLeftToThatUser)
{
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can make a file of another user";
    }
    QFile foreign(path);
    ASSERT_TRUE(foreign.open(QFile::WriteOnly));
    ASSERT_EQ(chown(QFile::encodeName(path).constData(), 12345, 12345), 0);
    SingleInstanceLock lock(path);
    EXPECT_TRUE(lock.acquire());
    EXPECT_TRUE(QFile::exists(path + u'.' + QString::number(geteuid())));
    SingleInstanceLock second(path);
    EXPECT_FALSE(second.acquire());
}
