// SPDX-License-Identifier: Apache-2.0
#include "allowlist/AlwaysAllowBackup.h"
#include "allowlist/AllowlistFixture.h"
#include "allowlist/CommandDigest.h"
#include "support/FullDisk.h"
#include "system/Preferences.h"

#include <QFileInfo>

using namespace bram;
using namespace bram::test;
using namespace Qt::StringLiterals;

namespace
{
constexpr qint64 nowMs = 1'709'622'489'500;

class Backup : public AllowlistFixture
{
protected:
    QStringList backups() const
    {
        return QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    std::expected<QString, Error> writeAutomatic(const QString &text, qint64 atMs)
    {
        auto written = writeAutomaticBackup(home.path(), text, atMs);
        if (written) {
            replaceLastAutomaticBackup(preferences, *written);
        }
        return written;
    }

    const QString folder = platform(u"approvals-menu-backups"_s);
    Preferences preferences {home.filePath(u"preferences.ini"_s)};
};
} // namespace

TEST_F(Backup, IsWrittenForPeopleAndReadBack)
{
    EXPECT_EQ(alwaysAllowBackupText({}, u"Head"_s, nowMs),
              u"Head\nGeneratedAt: 2024-03-05T07:08:09Z\nCount: 0\n"_s);
    const QString first(64, u'1');
    const QString second(64, u'2');
    const QString third(64, u'3');
    const QString plain = *normalizedCommandDigest(u"ls -la");
    const QString text = alwaysAllowBackupText(
        {{plain, u"ls  -la"_s, AlwaysAllowSource::LocalOnly, false},
         {first, u"ls …"_s, AlwaysAllowSource::LocalOnly, false, {third, u"plain"_s}},
         {second, u"sudo ls\nID: "_s + third + u"\nCommand: rm x"_s, AlwaysAllowSource::Both, true},
         {third, QString(), AlwaysAllowSource::BrackwenOnly, false}},
        u"영구 승인 목록 백업"_s, nowMs);
    EXPECT_EQ(text,
              u"영구 승인 목록 백업\nGeneratedAt: 2024-03-05T07:08:09Z\nCount: 4\n\n"
              "ID: "_s
                  + plain
                  + u"\nSource: local\nSensitive: no\nExact: unknown\nCommand: ls  -la\n\nID: "_s
                  + first + u"\nSource: local\nSensitive: no\nExact: "_s + third
                  + u"\nExact: plain\nCommand: ls …\n\nID: "_s + second
                  + u"\nSource: local+brackwen\nSensitive: yes\nCommand: sudo ls …\n\nID: "_s
                  + third + u"\nSource: brackwen\nSensitive: no\nCommand: \n"_s);
    EXPECT_EQ(parseAlwaysAllowBackup(text),
              QList<BackedUpCommand>({{plain, u"ls  -la"_s, false},
                                      {first, u"ls …"_s, false, {third, u"plain"_s}},
                                      {second, u"sudo ls …"_s, true, {}, true},
                                      {third, QString()}}));
}

TEST_F(Backup, BlocksAreTakenAsTheyStandAndDuplicatesOnce)
{
    const struct {
        QString text;
        QList<BackedUpCommand> expected;
    } rows[] {
        {u""_s, {}},
        {u"Head\n\n\n"_s, {}},
        {u"ID: a"_s, {{u"a"_s, u""_s}}},
        {u"  ID:  a \r\n Command:  b  c \r\nNote: x\r\n\r\nID: a\r\nCommand: d"_s,
         {{u"a"_s, u"b  c"_s}}},
        {u"Command: lost\n\nID: a\n\nID: b\nID: c\nCommand: 1\nCommand: 2\n"_s,
         {{u"a"_s, u""_s}, {u"c"_s, u"2"_s}}},
        {u"ID:a\nCommand:b\nID: \n"_s, {}},
        {u"ID: a\nExact: PLAIN\nCommand: b\n\nID: c\nLineBreak: yes\nSensitive: maybe"_s,
         {{u"a"_s, u"b"_s, false}, {u"c"_s, u""_s, false}}},
        {u"ID: a\rCommand: b\r\rID: c"_s, {{u"a"_s, u"b"_s}, {u"c"_s, u""_s}}},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(parseAlwaysAllowBackup(row.text), row.expected) << qPrintable(row.text);
    }
}

TEST_F(Backup, TheAutomaticOneReplacesTheOneBeforeAndNothingElse)
{
    ASSERT_TRUE(writeAutomatic(u"one"_s, nowMs));
    EXPECT_EQ(backups(), QStringList(u"always-allow-auto-backup-1709622489.txt"_s));
    ASSERT_TRUE(writeAutomatic(u"two"_s, nowMs + 400));
    ASSERT_TRUE(writeAutomatic(u"three"_s, nowMs + 1000));
    EXPECT_EQ(backups(), QStringList(u"always-allow-auto-backup-1709622490.txt"_s));
    const QString path = folder + u'/' + backups().constFirst();
    EXPECT_EQ(contentOf(path), "three");
    EXPECT_EQ(modeOf(path), 0600u);
    EXPECT_EQ(modeOf(folder), 0700u);
    const QString key = u"approvals.always-allow.auto-backup.last-path"_s;
    EXPECT_EQ(preferences.text(key), path);

    const QString precious = home.filePath(u"precious.txt"_s);
    write(precious, "x");
    preferences.setText(key, precious);
    ASSERT_TRUE(writeAutomatic(u"four"_s, nowMs + 2000));
    EXPECT_TRUE(QFileInfo::exists(precious));
}

TEST_F(Backup, WhatCannotBeWrittenLeavesTheOneBefore)
{
    ASSERT_TRUE(writeAutomatic(u"one"_s, nowMs));
    {
        const FullDisk full;
        EXPECT_FALSE(writeAutomatic(u"two"_s, nowMs + 1000));
    }
    EXPECT_EQ(backups().size(), 1);
    EXPECT_EQ(contentOf(folder + u'/' + backups().constFirst()), "one");
    ASSERT_TRUE(QDir(folder).removeRecursively());
    write(folder, "a file where the folder should be");
    const auto refused = writeAutomatic(u"three"_s, nowMs);
    ASSERT_FALSE(refused);
    EXPECT_FALSE(refused.error().message.contains(u'\n'));
}

TEST(BackedUp, ATextThatIsNotThatOfItsDigestMisleads)
{
    const QString digest = u"1de700c29687cae34561545f50d3c8b3d9afe88e04cc11069f8a6dc6e4ce9464"_s;
    const std::pair<QString, bool> rows[] {
        {u"ls  -la"_s, false}, {u"ls …"_s, false}, {u"ls"_s, false},
        {u""_s, false},        {u"ls -a"_s, true}, {u"/bin/ls"_s, true},
    };
    for (const auto &[command, expected] : rows) {
        EXPECT_EQ(isMisleading({digest, command}), expected) << qPrintable(command);
    }
    EXPECT_FALSE(isMisleading({u"refused"_s, u"ls -a"_s}));
    for (const QString &command : {u"ls …"_s, u"ls"_s}) {
        EXPECT_TRUE(isUnverified({digest, command})) << qPrintable(command);
    }
    for (const QString &command : {u"ls  -la"_s, u""_s, u"ls -a"_s}) {
        EXPECT_FALSE(isUnverified({digest, command})) << qPrintable(command);
    }
}

TEST_F(Backup, UnusableFilesAreRefused)
{
    const QString path = home.filePath(u"backup.txt"_s);
    EXPECT_FALSE(readAlwaysAllowBackup(path));
    EXPECT_FALSE(readAlwaysAllowBackup(home.path()));
    write(path, "ID: a\nCommand: \xff\n");
    EXPECT_FALSE(readAlwaysAllowBackup(path));
    QFile huge(path);
    ASSERT_TRUE(huge.open(QFile::WriteOnly) && huge.resize(100 * 1024 * 1024));
    EXPECT_FALSE(readAlwaysAllowBackup(path));
    write(path, "ID: a\nComm");
    EXPECT_EQ(readAlwaysAllowBackup(path)->size(), 1);
}
