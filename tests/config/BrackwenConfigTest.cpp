// SPDX-License-Identifier: Apache-2.0
#include "config/BrackwenConfig.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace bram
{
namespace
{

using namespace Qt::StringLiterals;

Environment environmentOf(const QMap<QString, QString> &variables)
{
    return Environment().overriddenBy(variables);
}

void write(const QString &path, const QByteArray &content)
{
    ASSERT_TRUE(QDir().mkpath(QFileInfo(path).absolutePath()));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
}

TEST(Environment, BlankCountsAsUnsetAndOverridesWin)
{
    QProcessEnvironment process;
    process.insert(u"PADDED"_s, u" \t value \r\n"_s);
    process.insert(u"BLANK"_s, u" \n"_s);
    process.insert(u"BOTH"_s, u"process"_s);
    const Environment environment(process);
    const Environment merged
        = environment.overriddenBy({{u"BOTH"_s, u"runtime"_s}, {u"PADDED"_s, u""_s}});

    EXPECT_EQ(environment.trimmed(u"PADDED"_s), u"value"_s);
    EXPECT_EQ(environment.trimmed(u"BLANK"_s), std::nullopt);
    EXPECT_EQ(environment.trimmed(u"UNSET"_s), std::nullopt);
    EXPECT_EQ(environment.trimmed(u"BOTH"_s), u"process"_s);
    EXPECT_EQ(merged.trimmed(u"BOTH"_s), u"runtime"_s);
    EXPECT_EQ(merged.trimmed(u"PADDED"_s), std::nullopt);

    qputenv("BRAM_CONFIG_TEST", " 한 ");
    EXPECT_EQ(Environment::ofProcess().trimmed(u"BRAM_CONFIG_TEST"_s), u"한"_s);
}

TEST(BrackwenConfig, NamesEveryPlaceOnceInOrder)
{
    const QTemporaryDir folder;
    const QString existing = folder.filePath(u"named"_s);
    ASSERT_TRUE(QDir().mkpath(existing));
    const auto file = [](const QString &home) { return home + u"/.brackwen/brackwen.json"_s; };
    const QString container = u"/Users/kim/Library/Containers/QX.BrackwenApprovalsMenu/Data"_s;
    const AccountFacts kim {u"/home/kim"_s, u"/srv/kim"_s, u"kim"_s};
    const struct {
        const char *name;
        QMap<QString, QString> variables;
        AccountFacts account;
        QStringList expected;
    } cases[] = {
        {"all different",
         {{u"BRACKWEN_CONFIG"_s, u" /etc/b.json\n"_s}, {u"HOME"_s, u" /tmp/kim "_s}},
         kim,
         {u"/etc/b.json"_s, file(u"/home/kim"_s), file(u"/tmp/kim"_s), file(u"/srv/kim"_s),
          file(u"/Users/kim"_s), file(container)}},
        {"folder named",
         {{u"BRACKWEN_CONFIG"_s, existing}},
         {u"/h"_s, std::nullopt, {}},
         {existing + u"/brackwen.json"_s, file(u"/h"_s)}},
        {"blank variables",
         {{u"BRACKWEN_CONFIG"_s, u" "_s}, {u"HOME"_s, u""_s}},
         {u"/h"_s, std::nullopt, {}},
         {file(u"/h"_s)}},
        {"same home by other names",
         {{u"HOME"_s, u"/home//kim/"_s}},
         {u"/home/kim"_s, u"/home/x/../kim/."_s, u"kim"_s},
         {file(u"/home/kim"_s), file(u"/Users/kim"_s), file(container)}},
        {"named file is a candidate anyway",
         {{u"BRACKWEN_CONFIG"_s, u"/home/kim/.brackwen/./brackwen.json"_s}},
         {u"/home/kim"_s, std::nullopt, {}},
         {u"/home/kim/.brackwen/./brackwen.json"_s}},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(BrackwenConfig(environmentOf(c.variables), c.account).candidatePaths(),
                  c.expected)
            << c.name;
    }
}

TEST(BrackwenConfig, ReadsWhatIsAnObjectAndSkipsTheRest)
{
    const QTemporaryDir folder;
    const QString named = folder.filePath(u"named.json"_s);
    const AccountFacts account {folder.filePath(u"home"_s), std::nullopt, {}};
    const QString fallback = folder.filePath(u"home/.brackwen/brackwen.json"_s);
    write(fallback, R"({"from": "home"})");
    const BrackwenConfig config(environmentOf({{u"BRACKWEN_CONFIG"_s, named}}), account);

    const struct {
        const char *name;
        QByteArray content;
        bool counts;
    } cases[] = {
        {"object", R"({"from": "named"})", true},
        {"empty object", "{}", true},
        {"byte order mark", "\xef\xbb\xbf{}", true},
        {"deepest nesting that is harmless",
         "{\"a\":" + QByteArray(500, '[') + QByteArray(500, ']') + '}', true},
        {"empty file", "", false},
        {"array", "[{}]", false},
        {"text", "\"{}\"", false},
        {"cut off", R"({"from": "na)", false},
        {"more behind it", "{} {}", false},
        {"not UTF-8", "{\"from\": \"\xff\xfe\"}", false},
        {"NUL bytes", QByteArray(64, '\0'), false},
        {"bottomless", QByteArray(1'000'000, '['), false},
        {"bottomless objects", QByteArray("{\"a\":").repeated(200'000), false},
        {"too large", "{\"a\":\"" + QByteArray(16 * 1024 * 1024, 'x') + "\"}", false},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        write(named, c.content);
        const auto objects = config.loadObjects();
        EXPECT_EQ(objects.size(), c.counts ? 2 : 1);
        EXPECT_EQ(objects.last().value("from"_L1).toString(), u"home"_s);
    }
}

TEST(BrackwenConfig, ProblemsNameTheFileAndTheReasonAndNothingOfItsContent)
{
    const QTemporaryDir folder;
    const QString home = folder.path();
    const QString path = home + u"/.brackwen/brackwen.json"_s;
    const BrackwenConfig config({}, {home, std::nullopt, {}});
    EXPECT_EQ(config.problems(), QStringList {}) << "a missing file is no problem";

    const QString begin = u"configuration file %1 cannot be used: "_s.arg(path);
    const struct {
        QByteArray content;
        QStringList expected;
    } cases[] = {
        {R"({"token": "hunter2"})", {}},
        {R"({"token": hunter2})", {begin + u"illegal number at byte 10"_s}},
        {R"({"token": "hunter2")", {begin + u"unterminated string at byte 19"_s}},
        {R"(["hunter2"])", {begin + u"not a JSON object"_s}},
        {"{\"a\":\"" + QByteArray(16 * 1024 * 1024, 'x') + "\"}",
         {begin + u"larger than 16777216 bytes"_s}},
    };
    for (const auto &c : cases) {
        write(path, c.content);
        EXPECT_EQ(config.problems(), c.expected) << qPrintable(config.problems().join(u'\n'));
    }
    ASSERT_TRUE(QFile::remove(path));
    ASSERT_TRUE(QDir().mkpath(path));
    EXPECT_EQ(config.problems(), QStringList {begin + u"not a regular file"_s});
}

TEST(BrackwenConfig, ASecretThatEveryUserCanReadIsNamedButNotShown)
{
    const QTemporaryDir folder;
    const QString home = folder.path();
    const QString path = home + u"/.brackwen/brackwen.json"_s;
    const BrackwenConfig config({}, {home, std::nullopt, {}});
    const struct {
        QByteArray content;
        mode_t file;
        mode_t home;
        bool isExposed;
    } cases[] = {
        {R"({"gateway":{"auth":{"token":"hunter2"}}})", 0644, 0755, true},
        {R"({"bots":[{"botToken":"hunter2"}]})", 0644, 0755, true},
        {R"({"gateway":{"auth":{"token":"hunter2"}}})", 0640, 0755, false},
        {R"({"gateway":{"auth":{"token":"hunter2"}}})", 0644, 0700, false},
        {R"({"gateway":{"auth":{"token":" ","tokens":"x"}}})", 0644, 0755, false},
    };
    for (const auto &c : cases) {
        write(path, c.content);
        ::chmod(QFile::encodeName(path).constData(), c.file);
        ::chmod(QFile::encodeName(home).constData(), c.home);
        ::chmod(QFile::encodeName(home + u"/.brackwen"_s).constData(), 0755);
        const QString said = config.exposures().join(u'\n');
        EXPECT_EQ(said.contains(path), c.isExposed) << c.content.constData() << c.file << c.home;
        EXPECT_FALSE(said.contains(u"hunter2"_s));
    }
}

TEST(BrackwenConfig, IsPresentOnlyWithAReadableFile)
{
    const QTemporaryDir folder;
    const QString home = folder.path();
    const QString path = home + u"/.brackwen/brackwen.json"_s;
    const BrackwenConfig config({}, {home, std::nullopt, {}});
    EXPECT_FALSE(config.isPresent());
    ASSERT_TRUE(QDir().mkpath(path));
    EXPECT_FALSE(config.isPresent()) << "a folder of that name";
    ASSERT_TRUE(QDir().rmdir(path));
    ASSERT_EQ(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    EXPECT_FALSE(config.isPresent()) << "a FIFO nobody writes to";
    EXPECT_TRUE(config.loadObjects().isEmpty());
    ASSERT_TRUE(QFile::remove(path));
    write(path, "not yet complete");
    EXPECT_TRUE(config.isPresent());
}

TEST(AccountFacts, KnowTheHomeOfTheUserDatabaseWhateverHomeSays)
{
    const QByteArray before = qgetenv("HOME");
    qputenv("HOME", "/nowhere/at/all");
    const AccountFacts facts = AccountFacts::ofProcess();
    qputenv("HOME", before);
    EXPECT_EQ(facts.homeFolder, u"/nowhere/at/all"_s);
    EXPECT_FALSE(facts.loginName.isEmpty());
    ASSERT_TRUE(facts.userDatabaseHome);
    EXPECT_TRUE(QDir(*facts.userDatabaseHome).exists());
}

} // namespace
} // namespace bram
