// SPDX-License-Identifier: Apache-2.0
#include "system/FileReplacement.h"

#include "support/FullDisk.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace bram
{
namespace
{

using namespace Qt::StringLiterals;

class FileReplacement : public testing::Test
{
protected:
    void write(const QByteArray &content) const
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    QByteArray content() const
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
    }
    qsizetype fileCount() const
    {
        return QDir(folder.path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot)
            .size();
    }

    const QTemporaryDir folder;
    const QString path = folder.filePath(u"file"_s);
};

TEST_F(FileReplacement, ReplacesOnlyWhatWasExpected)
{
    write("old");
    EXPECT_EQ(replaceFile(path, "old", "new"), Replacement::Done);
    EXPECT_EQ(content(), "new");
    EXPECT_EQ(replaceFile(path, "old", "newer"), Replacement::ChangedMeanwhile);
    EXPECT_EQ(content(), "new");
    EXPECT_EQ(replaceFile(path, "old", "new"), Replacement::ChangedMeanwhile);
    EXPECT_EQ(fileCount(), 1);
    EXPECT_FALSE(replaceFile(folder.path(), "", "x"));
    EXPECT_FALSE(replaceFile(folder.filePath(u"absent"_s), "", "x"));
    {
        const test::FullDisk full;
        EXPECT_FALSE(replaceFile(path, "new", "x"));
        EXPECT_FALSE(writePrivateFile(path, "x"));
    }
    EXPECT_EQ(content(), "new");
    EXPECT_EQ(fileCount(), 1);
}

/// Another program replaces the file as fast as it can; whatever happens, its last version stands.
TEST_F(FileReplacement, NeverUndoesWhatAnotherProgramHasPutThere)
{
    constexpr int versions = 3000;
    write("0");
    const pid_t other = ::fork();
    ASSERT_GE(other, 0);
    if (other == 0) {
        const QByteArray side = folder.filePath(u"side"_s).toUtf8();
        for (int i = 1; i <= versions; ++i) {
            FILE *file = std::fopen(side.constData(), "w");
            std::fprintf(file, "%d", i);
            std::fclose(file);
            std::rename(side.constData(), path.toUtf8().constData());
        }
        ::_exit(0);
    }
    int newest = 0;
    int replaced = 0;
    int status = 0;
    while (::waitpid(other, &status, WNOHANG) == 0) {
        const QByteArray before = content();
        const int version = before.split(' ').constFirst().toInt();
        EXPECT_GE(version, newest) << "an older version came back";
        newest = version;
        const auto outcome = replaceFile(path, before, before + " seen");
        replaced += outcome == Replacement::Done ? 1 : 0;
    }
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(content().startsWith(QByteArray::number(versions)));
}

TEST_F(FileReplacement, PrivateFilesArePrivateEvenWhereOneWasNot)
{
    write("old");
    ASSERT_TRUE(QFile::setPermissions(path, QFile::Permissions(0x6644)));
    ASSERT_TRUE(writePrivateFile(path, "new"));
    EXPECT_EQ(content(), "new");
    struct stat status = {};
    ASSERT_EQ(::stat(qPrintable(path), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600u);
    EXPECT_FALSE(writePrivateFile(folder.path(), "x"));
    EXPECT_FALSE(writePrivateFile(folder.filePath(u"no/such"_s), "x"));
    EXPECT_EQ(fileCount(), 1);

    const QByteArray fifo = QFile::encodeName(folder.filePath(u"fifo"_s));
    ASSERT_EQ(::mkfifo(fifo.constData(), 0600), 0);
    EXPECT_FALSE(writePrivateFile(QFile::decodeName(fifo), "x"));
    ASSERT_EQ(::stat(fifo.constData(), &status), 0);
    EXPECT_TRUE(S_ISFIFO(status.st_mode)) << "what may be a device was replaced by a file";
}

} // namespace
} // namespace bram
