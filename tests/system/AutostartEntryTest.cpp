// SPDX-License-Identifier: Apache-2.0
#include "system/linux/AutostartEntry.h"

#include "support/Waiting.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace bram;
using namespace bram::test;
using namespace Qt::StringLiterals;

namespace
{

class AutostartEntries : public testing::Test
{
protected:
    AutostartEntries()
    {
        write(program, "");
        write(otherProgram, "");
    }

    static void write(const QString &path, const QByteArray &content)
    {
        ASSERT_TRUE(QDir().mkpath(QFileInfo(path).absolutePath()));
        QFile file(path);
        ASSERT_TRUE(file.open(QFile::WriteOnly));
        file.write(content);
    }
    static QByteArray read(const QString &path)
    {
        QFile file(path);
        return file.open(QFile::ReadOnly) ? file.readAll() : "(none)";
    }
    AutostartEntry entry() const
    {
        return AutostartEntry({.userFolder = folder.filePath(u"user/autostart"_s),
                               .systemFolders = {folder.filePath(u"system"_s)},
                               .program = program});
    }

    QTemporaryDir folder;
    QString program = folder.filePath(u"here/bram"_s);
    QString otherProgram = folder.filePath(u"there/bram"_s);
    QString own = folder.filePath(u"user/autostart/bram.desktop"_s);
    QString ofSystem = folder.filePath(u"system/bram.desktop"_s);
};

TEST_F(AutostartEntries, whatIsThereSaysWhetherItIsOn)
{
    const struct {
        const char *own; ///< null for no such file
        const char *ofSystem;
        bool isOn;
        bool isOther;
    } rows[] {
        {nullptr, nullptr, false, false},
        {"[Desktop Entry]\nExec=@program\n", nullptr, true, false},
        {"[Desktop Entry]\n Exec = \"@program\" --flag\n", nullptr, true, false},
        {"[Desktop Entry]\nExec=@other\n", nullptr, true, true},
        {"[Desktop Entry]\nExec=@program\nHidden=true\n", nullptr, false, false},
        {"[Desktop Entry]\nExec=@program\nHidden=false\n", nullptr, true, false},
        {"[Desktop Entry]\nExec=@program\nX-GNOME-Autostart-enabled=false", nullptr, false, false},
        {"[Desktop Entry]\nExec=@program\n[Other]\nHidden=true\n", nullptr, true, false},
        {"[Desktop Entry]\nName=without a program\n[Other]\nExec=@program\n", nullptr, false,
         false},
        {"no entry", nullptr, false, false},
        {nullptr, "[Desktop Entry]\nExec=@program\n", true, false},
        {"[Desktop Entry]\nHidden=true\n", "[Desktop Entry]\nExec=@program\n", false, false},
    };
    const auto filled = [this](QByteArray text) {
        return text.replace("@program", program.toUtf8()).replace("@other", otherProgram.toUtf8());
    };
    for (const auto &row : rows) {
        QFile::remove(own);
        QFile::remove(ofSystem);
        if (row.own != nullptr) {
            write(own, filled(row.own));
        }
        if (row.ofSystem != nullptr) {
            write(ofSystem, filled(row.ofSystem));
        }
        SCOPED_TRACE(row.own != nullptr ? row.own : "(no own entry)");
        const LoginStart::State before = entry().state();
        EXPECT_EQ(before.isOn, row.isOn);
        EXPECT_EQ(before.otherProgram, row.isOther ? otherProgram : QString());

        // Whatever was there: on starts this program, and off is off.
        const QByteArray asItWas = read(own);
        ASSERT_TRUE(entry().setOn(true));
        EXPECT_EQ(entry().state(), LoginStart::State {.isOn = true});
        if (row.isOn && !row.isOther) {
            EXPECT_EQ(read(own), asItWas) << "it was on already";
        }
        ASSERT_TRUE(entry().setOn(false));
        EXPECT_FALSE(entry().state().isOn);
    }
}

TEST_F(AutostartEntries, keepsWhatAPersonHasWrittenAndLeavesNothingElse)
{
    ASSERT_TRUE(entry().setOn(true));
    EXPECT_TRUE(QFile::exists(own));
    ASSERT_TRUE(entry().setOn(false));
    EXPECT_FALSE(QFile::exists(own));

    write(own,
          "# mine\n[Desktop Entry]\nExec=elsewhere\nHidden=true\nX-Delay=5\n\n[More]\nExec=a\n");
    ASSERT_TRUE(entry().setOn(true));
    EXPECT_EQ(read(own),
              "# mine\n[Desktop Entry]\nExec=" + program.toUtf8()
                  + "\nHidden=false\nX-Delay=5\n\n[More]\nExec=a\n");
    ASSERT_TRUE(entry().setOn(false));
    EXPECT_TRUE(read(own).contains("\nHidden=true\nX-Delay=5\n"));
}

TEST_F(AutostartEntries, aFaultIsSaidAndChangesNothing)
{
    write(folder.filePath(u"user"_s), "a file where the folder would be");
    EXPECT_FALSE(entry().setOn(true));
    EXPECT_FALSE(entry().state().isOn);
    QFile::remove(folder.filePath(u"user"_s));
    ASSERT_TRUE(QDir().mkpath(own)); // a folder where the file would be
    EXPECT_FALSE(entry().state().problem.isEmpty());
    EXPECT_FALSE(entry().setOn(true));
    EXPECT_FALSE(entry().setOn(false));
}

/// The reader used below looks for the program before it knows what the signs stand for.
TEST_F(AutostartEntries, percentSignsStandForThemselves)
{
    const QString odd = u"/opt/100%f %%/bram"_s;
    EXPECT_EQ(execValue(odd), u"\"/opt/100%%f %%%%/bram\""_s);
    EXPECT_EQ(programOfExec(execValue(odd)), odd);
}

/// What it writes is started by a reader that others have written.
TEST_F(AutostartEntries, everyPathIsStarted)
{
    const QString outcome = folder.filePath(u"started"_s);
    for (const char *name : {"plain", "with blank", "\"quoted\" 'twice'", "a$HOME `id` \\n",
                             "back\\slash", "semi;amp&pipe|(x) #~?*<>", "한국어"}) {
        const QString path = folder.filePath(u"odd/"_s + QString::fromUtf8(name));
        write(path, "#!/bin/sh\nprintf %s \"$0\" > '" + outcome.toUtf8() + "'\n");
        ASSERT_TRUE(QFile::setPermissions(path, QFile::ReadOwner | QFile::ExeOwner));
        QFile::remove(outcome);
        AutostartEntry started({.userFolder = folder.filePath(u"user/autostart"_s),
                                .systemFolders = {},
                                .program = path});
        ASSERT_TRUE(started.setOn(true));
        EXPECT_EQ(started.state(), LoginStart::State {.isOn = true}) << name;
        QProcess reader;
        reader.start(u"gio"_s, {u"launch"_s, own});
        EXPECT_TRUE(waitUntil([&] { return QFileInfo(outcome).size() > 0; })) << name;
        EXPECT_TRUE(waitUntil([&] { return read(outcome) == path.toUtf8(); }))
            << name << " gave " << read(outcome).constData();
        EXPECT_TRUE(waitUntil([&] { return reader.state() == QProcess::NotRunning; }));
        ASSERT_TRUE(started.setOn(false));
    }
}

} // namespace
