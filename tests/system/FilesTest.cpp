// SPDX-License-Identifier: Apache-2.0
#include "system/Files.h"

#include "support/FullDisk.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <limits>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace bram
{
namespace
{

using namespace Qt::StringLiterals;

void write(const QString &path, const QByteArray &content)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
}

mode_t modeOf(const QString &path)
{
    struct stat status = {};
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_mode & 07777 : 0;
}

TEST(Files, ReadsRegularFilesUpToTheLimit)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"이름 with blanks"_s);
    const QByteArray content("a\0b\r\n\xff", 6);
    write(path, content);
    ASSERT_TRUE(QFile::link(path, folder.filePath(u"link"_s)));
    write(folder.filePath(u"empty"_s), {});

    EXPECT_EQ(readRegularFile(path, 6), content);
    EXPECT_EQ(readRegularFile(folder.filePath(u"link"_s), 6), content);
    EXPECT_EQ(readRegularFile(folder.filePath(u"empty"_s), 0), QByteArray());
    const auto tooLarge = readRegularFile(path, 5);
    ASSERT_FALSE(tooLarge);
    EXPECT_TRUE(tooLarge.error().message.contains(path));

    // The limit says what is refused, not how much memory a small file takes.
    const auto withRoom = readRegularFile(path, std::numeric_limits<int>::max() - 1);
    EXPECT_EQ(withRoom, content);
    EXPECT_LT(withRoom->capacity(), 1'000'000);
    EXPECT_TRUE(readRegularFile(u"/proc/self/maps"_s, 10'000'000)->endsWith('\n'));
    EXPECT_FALSE(readRegularFile(u"/proc/self/maps"_s, 100));
}

TEST(Files, RefusesWhatIsNotARegularFileWithoutWaiting)
{
    const QTemporaryDir folder;
    const QString fifo = folder.filePath(u"fifo"_s);
    ASSERT_EQ(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    const QString loop = folder.filePath(u"loop"_s);
    ASSERT_TRUE(QFile::link(loop, loop));
    const QString socketPath = folder.filePath(u"socket"_s);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    qstrncpy(address.sun_path, QFile::encodeName(socketPath).constData(), sizeof address.sun_path);
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(::bind(descriptor, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);

    for (const QString &path : {fifo, loop, socketPath, folder.path(), u"/dev/zero"_s, u""_s,
                                folder.filePath(u"absent"_s), folder.filePath(u"fifo/below"_s)}) {
        SCOPED_TRACE(qPrintable(path));
        const auto content = readRegularFile(path, 100);
        ASSERT_FALSE(content);
        EXPECT_FALSE(content.error().message.isEmpty());
    }
    ::close(descriptor);
}

TEST(Files, MakesMissingFoldersPrivateAndLeavesTheOthers)
{
    const QTemporaryDir folder;
    const QString existing = folder.filePath(u"shared"_s);
    ASSERT_EQ(::mkdir(QFile::encodeName(existing).constData(), 0755), 0);
    const QString made = existing + u"/a/b/c"_s;

    ASSERT_TRUE(makePrivateFolder(made));
    ASSERT_TRUE(makePrivateFolder(made)) << "there already";
    ASSERT_TRUE(makePrivateFolder(existing + u"/with/slash/"_s));
    EXPECT_EQ(modeOf(made), 0700u);
    EXPECT_EQ(modeOf(existing + u"/a"_s), 0700u);
    EXPECT_EQ(modeOf(existing + u"/with/slash"_s), 0700u);
    EXPECT_EQ(modeOf(existing), 0755u);

    write(folder.filePath(u"file"_s), "x");
    for (const QString &name : {u"file"_s, u"file/below"_s}) {
        const auto refused = makePrivateFolder(folder.filePath(name));
        ASSERT_FALSE(refused);
        EXPECT_TRUE(refused.error().message.contains(u"file"_s));
    }
}

TEST(Files, WritesWholeFilesForThisUserAlone)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"new"_s);
    const mode_t before = ::umask(0);
    ASSERT_TRUE(writeWholeFile(path, "first"));
    ::umask(before);
    EXPECT_EQ(modeOf(path), 0600u);

    ASSERT_EQ(::chmod(QFile::encodeName(path).constData(), 0640), 0);
    const QString link = folder.filePath(u"link"_s);
    ASSERT_TRUE(QFile::link(path, link));
    ASSERT_TRUE(writeWholeFile(link, "second"));
    EXPECT_TRUE(QFileInfo(link).isSymLink());
    EXPECT_EQ(readRegularFile(path, 100), QByteArray("second"));
    EXPECT_EQ(modeOf(path), 0640u);

    EXPECT_FALSE(writeWholeFile(folder.path(), "x"));
    EXPECT_FALSE(writeWholeFile(folder.filePath(u"missing/file"_s), "x"));
    {
        const test::FullDisk full;
        EXPECT_FALSE(writeWholeFile(path, "third"));
    }
    EXPECT_EQ(readRegularFile(path, 100), QByteArray("second"));
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden).size(), 2);
}

} // namespace
} // namespace bram
