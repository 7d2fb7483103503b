// SPDX-License-Identifier: Apache-2.0
#include "system/FileWatch.h"
#include "support/Waiting.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstdio>

using namespace bram;
using namespace bram::test;
using namespace Qt::StringLiterals;

namespace
{

class FileWatching : public testing::Test
{
protected:
    void watch(const QStringList &paths)
    {
        watcher.emplace(paths);
        QObject::connect(&*watcher, &FileWatch::changed, &*watcher, [this] { ++changes; });
        watcher->start();
    }
    /// Waits for the word about what `act` does.
    template<typename Act>
    [[nodiscard]] bool tellsOf(Act act)
    {
        const int before = changes;
        act();
        return waitUntil([&] { return changes > before; }, 3000);
    }
    QString path(const QString &name) const { return folder.filePath(name); }
    static void write(const QString &path, const QByteArray &content)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QFile::WriteOnly));
        file.write(content);
    }
    static void replace(const QString &path, const QByteArray &content)
    {
        QSaveFile file(path);
        ASSERT_TRUE(file.open(QFile::WriteOnly));
        file.write(content);
        ASSERT_TRUE(file.commit());
    }

    QTemporaryDir folder;
    std::optional<FileWatch> watcher;
    int changes = 0;
};

} // namespace

TEST_F(FileWatching, EveryWayInWhichAFileChangesIsTold)
{
    const QString file = path(u"home/.p/config"_s);
    ASSERT_TRUE(QDir(folder.path()).mkpath(u"home"_s));
    watch({file, path(u"never/there/at-all"_s)});
    EXPECT_TRUE(tellsOf([&] {
        QDir(folder.path()).mkpath(u"home/.p"_s);
        write(file, "1");
    })) << "made, with its folder";
    EXPECT_TRUE(tellsOf([&] { write(file, "2"); })) << "written in place";
    EXPECT_TRUE(tellsOf([&] { replace(file, "3"); })) << "replaced";
    EXPECT_TRUE(tellsOf([&] { replace(file, "4"); })) << "replaced again";
    EXPECT_TRUE(tellsOf([&] { write(file, "5"); })) << "written after it was replaced";
    {
        QFile reader(file); // somebody keeps the old one open
        ASSERT_TRUE(reader.open(QFile::ReadOnly));
        EXPECT_TRUE(tellsOf([&] { replace(file, "6"); })) << "replaced under a reader";
        EXPECT_TRUE(tellsOf([&] { write(file, "7"); })) << "written after that";
    }
    EXPECT_TRUE(tellsOf([&] { QFile::remove(file); })) << "removed";
    EXPECT_TRUE(tellsOf([&] { write(file, "8"); })) << "made again";
    EXPECT_TRUE(tellsOf([&] { QDir(path(u"home/.p"_s)).removeRecursively(); }))
        << "removed with its folder";
    EXPECT_TRUE(tellsOf([&] {
        QDir(folder.path()).mkpath(u"home/.p"_s);
        write(file, "9");
    })) << "and back";
}

TEST_F(FileWatching, FollowsASymbolicLinkAndIgnoresTheNeighbours)
{
    ASSERT_TRUE(QDir(folder.path()).mkpath(u"dotfiles"_s));
    ASSERT_TRUE(QDir(folder.path()).mkpath(u"home"_s));
    const QString target = path(u"dotfiles/config"_s);
    const QString link = path(u"home/config"_s);
    write(target, "1");
    ASSERT_TRUE(QFile::link(target, link));
    watch({link});
    EXPECT_TRUE(tellsOf([&] { write(target, "2"); }));
    EXPECT_TRUE(tellsOf([&] { replace(target, "33"); }));
    EXPECT_TRUE(tellsOf([&] { write(target, "4"); }));
    EXPECT_TRUE(tellsOf([&] {
        QFile::remove(link);
        write(link, "own");
    }));

    const int before = changes;
    FileWatch neighbour({path(u"home/neighbour"_s)});
    bool isNeighbourTold = false;
    QObject::connect(&neighbour, &FileWatch::changed, &neighbour, [&] { isNeighbourTold = true; });
    neighbour.start();
    write(path(u"home/neighbour"_s), "x");
    EXPECT_TRUE(waitUntil([&] { return isNeighbourTold; }));
    EXPECT_TRUE(tellsOf([&] { write(link, "2"); }));
    EXPECT_EQ(changes, before + 1);
}
