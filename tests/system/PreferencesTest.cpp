// SPDX-License-Identifier: Apache-2.0
#include "system/Preferences.h"

#include "support/Waiting.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace bram
{
namespace
{

using namespace Qt::StringLiterals;

mode_t modeOf(const QString &path)
{
    struct stat status = {};
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_mode & 07777 : 0;
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void write(const QString &path, const QByteArray &content)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
}

TEST(Preferences, KeepTextsExactlyAcrossRuns)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"preferences.ini"_s);
    const QList<std::pair<QString, QString>> texts {
        {u"gateway.device.privateKey"_s, u"a+b/c=="_s},
        {u"menu.language"_s, u"한국어"_s},
        {u"list"_s, u"one, two; \"three\"\nfour\\"_s},
        {u"at"_s, u"@Invalid()"_s},
        {u"blanks"_s, u"  x "_s},
        {u"empty"_s, u""_s},
        {u"true"_s, u"true"_s},
        {u"approvals.selected-agent-id"_s, u"__all__"_s},
        {u"emoji"_s, u"\U0001F512"_s},
    };
    {
        Preferences preferences(path);
        for (const auto &[key, value] : texts) {
            preferences.setText(key, value);
        }
        preferences.setText(u"removed"_s, u"x"_s);
        ASSERT_TRUE(preferences.save());
        preferences.remove(u"removed"_s);
        ASSERT_TRUE(preferences.save());
        EXPECT_FALSE(contentOf(path).contains("removed"));
    }
    const Preferences again(path);
    for (const auto &[key, value] : texts) {
        EXPECT_EQ(again.text(key), value) << qPrintable(key);
    }
    EXPECT_EQ(again.text(u"removed"_s), std::nullopt);
    EXPECT_EQ(again.text(u"never"_s), std::nullopt);
}

TEST(Preferences, ArePrivateHoweverTheyAreWritten)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"new/deep/preferences.ini"_s);
    {
        Preferences preferences(path);
        preferences.remove(u"absent"_s);
        EXPECT_FALSE(QFileInfo::exists(folder.filePath(u"new"_s))) << "nothing was changed yet";
        preferences.setText(u"key"_s, u"value"_s);
        // Written by the event loop, without `save`.
        ASSERT_TRUE(test::waitUntil([&] { return contentOf(path).contains("value"); }));
    }
    EXPECT_EQ(modeOf(path), 0600u);
    EXPECT_EQ(modeOf(folder.filePath(u"new/deep"_s)), 0700u);
    EXPECT_EQ(modeOf(folder.filePath(u"new"_s)), 0700u);

    const QString open = folder.filePath(u"open.ini"_s);
    write(open, "[General]\nold=1\n");
    ASSERT_TRUE(QFile::setPermissions(open, QFile::Permissions(0x6644)));
    const QString link = folder.filePath(u"link.ini"_s);
    ASSERT_TRUE(QFile::link(open, link));
    Preferences preferences(link);
    preferences.setText(u"key"_s, u"value"_s);
    EXPECT_EQ(modeOf(open), 0600u) << "narrowed before anything is written";
    ASSERT_TRUE(preferences.save());
    EXPECT_EQ(modeOf(open), 0600u);
    EXPECT_TRUE(QFileInfo(link).isSymLink());
    EXPECT_TRUE(contentOf(open).contains("old=1"));
}

TEST(Preferences, BadFilesCountAsEmptyOrPartlyRead)
{
    const QTemporaryDir folder;
    const struct {
        QByteArray content;
        std::optional<QString> expected;
    } cases[] = {
        {"", std::nullopt},
        {QByteArray(4096, '\xff'), std::nullopt},
        {"no section, no sense\n[[[\n=\n[General]\nkey=value\n", u"value"_s},
        {"key=value", u"value"_s},
        {"[General]\nkey=one, two\n", std::nullopt},
        {"[General]\nkey=@ByteArray(abc)\n", std::nullopt},
        {"[General]\nkey=@Variant(\\0\\0\\0\\x7f)\n", std::nullopt},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.content.left(60).toStdString());
        const QTemporaryDir own;
        const QString path = own.filePath(u"preferences.ini"_s);
        write(path, c.content);
        Preferences preferences(path);
        EXPECT_EQ(preferences.text(u"key"_s), c.expected);
        preferences.setText(u"other"_s, u"kept"_s);
        EXPECT_TRUE(preferences.save());
        EXPECT_EQ(Preferences(path).text(u"other"_s), u"kept"_s);
    }
}

TEST(Preferences, KeepListsAndMapsAndTellMalformedFromAbsent)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"preferences.ini"_s);
    const QStringList list {u"one"_s, u""_s, u"a, \"b\"\n한국어\\"_s};
    const QMap<QString, QString> map {{u"k/=,"_s, u"v"_s}, {u""_s, u""_s}};
    {
        Preferences preferences(path);
        EXPECT_EQ(preferences.textList(u"list"_s), QStringList());
        preferences.setTextList(u"list"_s, list);
        preferences.setTextList(u"single"_s, {u"one"_s});
        preferences.setTextList(u"none"_s, {});
        preferences.setTextMap(u"map"_s, map);
        ASSERT_TRUE(preferences.save());
    }
    const Preferences again(path);
    EXPECT_EQ(again.textList(u"list"_s), list);
    EXPECT_EQ(again.textList(u"single"_s), QStringList(u"one"_s));
    EXPECT_EQ(again.textList(u"none"_s), QStringList());
    EXPECT_EQ(again.textMap(u"map"_s), map);
    EXPECT_FALSE(again.textList(u"map"_s));
    EXPECT_FALSE(again.textMap(u"list"_s));
}

TEST(Preferences, KeepWhatCannotBeWrittenAndWriteItWhenTheyCan)
{
    const QTemporaryDir folder;
    const QString obstacle = folder.filePath(u"obstacle"_s);
    write(obstacle, "a file where the folder should be");
    const QString path = obstacle + u"/preferences.ini"_s;

    Preferences preferences(path);
    preferences.setText(u"key"_s, u"value"_s);
    EXPECT_FALSE(preferences.save());
    EXPECT_FALSE(preferences.save());
    EXPECT_EQ(preferences.text(u"key"_s), u"value"_s);

    ASSERT_TRUE(QFile::remove(obstacle));
    EXPECT_TRUE(preferences.save());
    EXPECT_TRUE(contentOf(path).contains("value"));
    EXPECT_EQ(modeOf(path), 0600u);
    EXPECT_EQ(modeOf(obstacle), 0700u);
}

} // namespace
} // namespace bram
