// SPDX-License-Identifier: Apache-2.0
#include "system/linux/XdgFileOpener.h"

#include "support/Waiting.h"

#include <QCoro/QCoroTask>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>

using namespace bram;
using namespace bram::test;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace
{

QCoro::Task<FileOpened> opening(FileOpener *opener, QString path)
{
    const FileOpened opened = co_await opener->open(path);
    co_return opened;
}

/// With the machine's own xdg-open, in a home that knows one kind of file.
class XdgFileOpening : public testing::Test
{
protected:
    XdgFileOpening()
    {
        qputenv("XDG_DATA_HOME", folder.filePath(u"data"_s).toUtf8());
        qputenv("XDG_CONFIG_HOME", folder.filePath(u"config"_s).toUtf8());
        qputenv("BROWSER", "false");
        qputenv("DISPLAY", ":none"); // it looks for programs of a display only where there is one
        qunsetenv("XDG_CURRENT_DESKTOP");
        write(u"readme.txt"_s, "text");
        write(u"data/applications/viewer.desktop"_s,
              "[Desktop Entry]\nType=Application\nName=Viewer\nMimeType=text/plain\nExec="
                  + folder.filePath(u"viewer"_s).toUtf8() + " %f\n");
        write(u"config/mimeapps.list"_s, "[Default Applications]\ntext/plain=viewer.desktop\n");
        write(u"viewer"_s,
              "#!/bin/sh\necho $$ \"$1$BRACKWEN_GATEWAY_PASSWORD\" >> '" + record().toUtf8()
                  + "'\nexec sleep 60\n");
        QFile::setPermissions(folder.filePath(u"viewer"_s), QFile::ReadOwner | QFile::ExeOwner);
    }
    ~XdgFileOpening() override
    {
        const qint64 viewer = QString::fromUtf8(viewed()).section(u' ', 0, 0).toLongLong();
        if (viewer > 0) {
            ::kill(static_cast<pid_t>(viewer), SIGKILL);
        }
    }

    void write(const QString &name, const QByteArray &content)
    {
        QDir(folder.path()).mkpath(QFileInfo(name).path());
        QFile file(folder.filePath(name));
        ASSERT_TRUE(file.open(QFile::WriteOnly));
        file.write(content);
    }
    QString record() const { return folder.filePath(u"viewed"_s); }
    QByteArray viewed() const
    {
        QFile file(record());
        return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
    }
    static FileOpened open(FileOpener &opener, const QString &path)
    {
        return test::waitFor(opening(&opener, path));
    }

    QTemporaryDir folder;
};

TEST_F(XdgFileOpening, opensWithTheProgramForThatKindWhichOutlivesThisOne)
{
    const QString path = folder.filePath(u"readme.txt"_s);
    {
        XdgFileOpener opener(200ms);
        qputenv("BRACKWEN_GATEWAY_PASSWORD", "secret");
        EXPECT_TRUE(open(opener, path));
        EXPECT_TRUE(waitUntil([&] { return viewed().endsWith(path.toUtf8() + '\n'); }));
        qunsetenv("BRACKWEN_GATEWAY_PASSWORD");
    }
    const qint64 viewer = QString::fromUtf8(viewed()).section(u' ', 0, 0).toLongLong();
    ASSERT_GT(viewer, 0);
    EXPECT_EQ(::kill(static_cast<pid_t>(viewer), 0), 0);
}

TEST_F(XdgFileOpening, whatCannotBeOpenedIsSaidInOneLine)
{
    XdgFileOpener opener;
    QFile::remove(folder.filePath(u"config/mimeapps.list"_s));
    QFile::remove(folder.filePath(u"data/applications/viewer.desktop"_s));
    write(u"odd.bram-unknown-kind"_s, QByteArray("\0\1\2", 3));
    const QByteArray path = qgetenv("PATH");
    const struct {
        QString file;
        QString reason;
        QByteArray path;
    } rows[] {
        {u"nowhere"_s, u"it is not there"_s, path},
        {u"odd.bram-unknown-kind"_s, u"this desktop has no program for it"_s, path},
        {u"readme.txt"_s, u"xdg-open (package xdg-utils) is not installed"_s, ""},
    };
    for (const auto &row : rows) {
        QDir().mkpath(folder.filePath(u"empty"_s));
        if (row.path.isEmpty()) {
            QFile::link(u"/usr/bin/setsid"_s, folder.filePath(u"empty/setsid"_s));
            qputenv("PATH", folder.filePath(u"empty"_s).toUtf8());
        }
        const FileOpened opened = open(opener, folder.filePath(row.file));
        qputenv("PATH", path);
        ASSERT_FALSE(opened) << qPrintable(row.file);
        EXPECT_EQ(opened.error().message,
                  u"cannot open %1: %2"_s.arg(folder.filePath(row.file), row.reason));
    }
}

} // namespace
