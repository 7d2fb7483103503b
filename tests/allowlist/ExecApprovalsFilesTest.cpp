// SPDX-License-Identifier: Apache-2.0
#include "allowlist/ExecApprovalsFiles.h"
#include "allowlist/AllowlistFixture.h"
#include "allowlist/CommandDigest.h"
#include "allowlist/ExecApprovalsEdit.h"
#include "support/FullDisk.h"
#include "support/Waiting.h"
#include "system/FileReplacement.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

using namespace bram;
using namespace bram::test;
using namespace Qt::StringLiterals;

namespace
{

const QByteArray sample = R"({"version":18446744073709551615,"agents":{
 "main":{"mode":1e2,"allowlist":["ls -la",{"pattern":" git  status ","id":9007199254740993},
         {"pattern":"  ","command":"make test"},{"command":"git status"},{"id":1},7,null,"  "]},
 "other":{"allowlist":["ls   -la"]},"odd":5,"none":{}}})";

bool isChanged(QCoro::Task<ExecApprovalsOutcome> task)
{
    return test::waitFor(std::move(task)).isChanged;
}

class ExecApprovals : public AllowlistFixture
{
protected:
    QJsonObject json(const QString &name) const
    {
        return QJsonDocument::fromJson(contentOf(platform(name))).object();
    }
    QStringList patternsIn(const QString &name) const
    {
        return allowlistPatterns(parseExactJson(contentOf(platform(name))).value().root);
    }
    static QString digestOf(const QString &command) { return *normalizedCommandDigest(command); }

    ExecApprovalsFiles files {platform(), log};
};

} // namespace

TEST_F(ExecApprovals, ReadsThePatternsOfEveryAgentInEveryFile)
{
    write(platform(u"exec-approvals.json"_s), sample);
    write(platform(u"exec-approvals-b.json"_s), R"({"agents":{"main":{"allowlist":["b 1"]}}})");
    for (const char *name : {"exec-approvals.json.bak", "my-exec-approvals.json", "exec-approvals",
                             "Exec-approvals.json", "exec-approvals.JSON"}) {
        write(platform(QString::fromUtf8(name)), R"({"agents":{"x":{"allowlist":["never x"]}}})");
    }
    const auto patterns = files.load();
    EXPECT_EQ(
        patterns.paths,
        QStringList({platform(u"exec-approvals-b.json"_s), platform(u"exec-approvals.json"_s)}));
    const QHash<QString, QString> expected {{digestOf(u"ls -la"_s), u"ls   -la"_s},
                                            {digestOf(u"git status"_s), u"git status"_s},
                                            {digestOf(u"make test"_s), u"make test"_s},
                                            {digestOf(u"b 1"_s), u"b 1"_s}};
    EXPECT_EQ(patterns.commandsByDigest, expected);
    const QString usual = platform(u"exec-approvals.json"_s);
    EXPECT_EQ(findInExecApprovalsFiles(platform(), digestOf(u"ls -la"_s)),
              QList<ExecApprovalsPlace>({{usual, u"main"_s}, {usual, u"other"_s}}));
    EXPECT_TRUE(log.lines().isEmpty());
}

TEST_F(ExecApprovals, EditsOnlyTheListsAndKeepsEverythingElse)
{
    const QString name = u"exec-approvals.json"_s;
    write(platform(name), sample);
    EXPECT_TRUE(isChanged(files.appendCommandsToExecApprovalsFiles(
        {u"make test"_s, u"new one"_s, u"ls -la"_s, u"new one"_s})));
    EXPECT_EQ(patternsIn(name).count(u"new one"_s), 1);
    EXPECT_EQ(patternsIn(name).count(u"make test"_s), 1);
    EXPECT_FALSE(isChanged(files.appendCommandsToExecApprovalsFiles({u"new one"_s})));

    EXPECT_TRUE(
        isChanged(files.removeAlwaysAllowDigestFromExecApprovalsFiles({digestOf(u"ls -la"_s)})));
    EXPECT_EQ(patternsIn(name),
              QStringList({u"git  status"_s, u"make test"_s, u"git status"_s, u"new one"_s}));
    EXPECT_FALSE(
        isChanged(files.removeAlwaysAllowDigestFromExecApprovalsFiles({digestOf(u"ls -la"_s)})));
    const QByteArray text = contentOf(platform(name));
    for (const char *kept : {"18446744073709551615", "9007199254740993", "1e2", "\"odd\": 5"}) {
        EXPECT_TRUE(text.contains(kept)) << kept;
    }
    EXPECT_EQ(json(name)["agents"_L1]["main"_L1]["allowlist"_L1].toArray().size(), 8);
    EXPECT_LT(text.indexOf("\"agents\""), text.indexOf("\"version\""));

    EXPECT_TRUE(isChanged(files.clearAlwaysAllowInExecApprovalsFiles()));
    EXPECT_TRUE(patternsIn(name).isEmpty());
    EXPECT_EQ(json(name)["agents"_L1].toObject().keys(),
              QStringList({u"main"_s, u"none"_s, u"odd"_s, u"other"_s}));
    EXPECT_TRUE(json(name)["agents"_L1]["none"_L1]["allowlist"_L1].isArray());
    EXPECT_FALSE(isChanged(files.clearAlwaysAllowInExecApprovalsFiles()));
    EXPECT_TRUE(log.lines().isEmpty());
}

TEST_F(ExecApprovals, MakesWhatIsMissingInsideAFileButNoFile)
{
    EXPECT_TRUE(test::waitFor(files.appendCommandsToExecApprovalsFiles({u"a b"_s})).isWithoutFile);
    EXPECT_TRUE(test::waitFor(files.clearAlwaysAllowInExecApprovalsFiles()).isWithoutFile);
    EXPECT_TRUE(QDir(platform()).isEmpty());
    ExecApprovalsFiles nowhere(home.filePath(u"nowhere"_s), log);
    EXPECT_FALSE(isChanged(nowhere.appendCommandsToExecApprovalsFiles({u"a b"_s})));
    EXPECT_FALSE(QFileInfo::exists(home.filePath(u"nowhere"_s)));

    write(platform(u"exec-approvals.json"_s), R"({"agents":null,"z":1})");
    EXPECT_TRUE(isChanged(files.appendCommandsToExecApprovalsFiles({u"a b"_s})));
    EXPECT_EQ(contentOf(platform(u"exec-approvals.json"_s)),
              "{\n  \"agents\": {\n    \"main\": {\n      \"allowlist\": [\n        {\n          "
              "\"pattern\": \"a b\"\n        }\n      ]\n    }\n  },\n  \"z\": 1\n}\n");
}

TEST_F(ExecApprovals, AFileThatCannotBeUsedIsLeftAloneAndSaidOnce)
{
    const QByteArrayList bad {"{", "[]", "", "\xff\xfe{}",
                              R"({"agents":{"main":{"allowlist":[}}})"};
    for (qsizetype i = 0; i < bad.size(); ++i) {
        write(platform(u"exec-approvals-%1.json"_s.arg(i)), bad[i]);
    }
    ASSERT_TRUE(QDir(platform()).mkdir(u"exec-approvals-folder.json"_s));
    QFile huge(platform(u"exec-approvals-huge.json"_s));
    ASSERT_TRUE(huge.open(QFile::WriteOnly) && huge.resize(100 * 1024 * 1024));
    ASSERT_TRUE(QFile::link(platform(u"gone"_s), platform(u"exec-approvals-link.json"_s)));
    write(platform(u"exec-approvals-z.json"_s), "{}");

    EXPECT_EQ(files.load().paths, QStringList(platform(u"exec-approvals-z.json"_s)));
    const auto outcome = test::waitFor(files.appendCommandsToExecApprovalsFiles({u"a b"_s}));
    EXPECT_TRUE(outcome.isChanged && !outcome.isWithoutFile);
    EXPECT_EQ(outcome.failures.size(), bad.size() + 3);
    EXPECT_TRUE(files.load().paths.size() == 1);
    EXPECT_EQ(patternsIn(u"exec-approvals-z.json"_s), QStringList(u"a b"_s));
    const auto lines = log.lines();
    EXPECT_EQ(lines.size(), bad.size() + 3) << qPrintable(lines.join(u'\n'));
    for (const QString &line : lines) {
        EXPECT_TRUE(line.contains(u"cannot be used: "_s)) << qPrintable(line);
    }
    for (qsizetype i = 0; i < bad.size(); ++i) {
        EXPECT_EQ(contentOf(platform(u"exec-approvals-%1.json"_s.arg(i))), bad[i]);
    }
}

TEST_F(ExecApprovals, AByteOrderMarkIsPassedOverAndKept)
{
    write(platform(u"exec-approvals.json"_s), "\xef\xbb\xbf" + sample);
    EXPECT_EQ(files.load().commandsByDigest.size(), 3);
    EXPECT_TRUE(isChanged(files.appendCommandsToExecApprovalsFiles({u"a b"_s})));
    EXPECT_TRUE(contentOf(platform(u"exec-approvals.json"_s)).startsWith("\xef\xbb\xbf{\n"));
    EXPECT_TRUE(patternsIn(u"exec-approvals.json"_s).contains(u"a b"_s));
    EXPECT_TRUE(log.lines().isEmpty());
}

TEST_F(ExecApprovals, ContentOfTheWrongTypeIsNotOverwritten)
{
    for (const QByteArray content : {R"({"agents":[1]})", R"({"agents":{"main":"x"}})",
                                     R"({"agents":{"main":{"allowlist":{"a":1}}}})"}) {
        write(platform(u"exec-approvals.json"_s), content);
        EXPECT_EQ(
            test::waitFor(files.appendCommandsToExecApprovalsFiles({u"a b"_s})).failures.size(), 1);
        EXPECT_TRUE(
            test::waitFor(files.removeAlwaysAllowDigestFromExecApprovalsFiles({digestOf(u"a b"_s)}))
                .isDone());
        EXPECT_EQ(contentOf(platform(u"exec-approvals.json"_s)), content);
        EXPECT_TRUE(
            log.lines().last().startsWith(u"[Brackwen] Brackwen allowlist update failed: "_s));
    }
}

TEST_F(ExecApprovals, KeepModeAndLinkAndLeaveNothingBehind)
{
    const QString target = home.filePath(u"elsewhere.json"_s);
    write(target, sample);
    ASSERT_TRUE(QFile::setPermissions(target, QFile::Permissions(0x6640)));
    ASSERT_TRUE(QFile::link(target, platform(u"exec-approvals.json"_s)));
    EXPECT_TRUE(isChanged(files.appendCommandsToExecApprovalsFiles({u"a b"_s})));
    EXPECT_EQ(modeOf(target), 0640u);
    EXPECT_TRUE(QFileInfo(platform(u"exec-approvals.json"_s)).isSymLink());
    EXPECT_TRUE(contentOf(target).contains("a b"));

    {
        const FullDisk full;
        EXPECT_FALSE(isChanged(files.clearAlwaysAllowInExecApprovalsFiles()));
    }
    EXPECT_TRUE(contentOf(target).contains("a b"));
    ASSERT_TRUE(QFile::setPermissions(target, QFile::Permissions(0x4444)));
    EXPECT_FALSE(isChanged(files.clearAlwaysAllowInExecApprovalsFiles()));
    EXPECT_TRUE(contentOf(target).contains("a b"));
    EXPECT_TRUE(log.lines().last().startsWith(u"[Brackwen] Brackwen allowlist update failed: "_s));
    const auto everything = QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot;
    EXPECT_EQ(QDir(home.path()).entryList(everything),
              QStringList({u".brackwen"_s, u"elsewhere.json"_s}));
}

TEST_F(ExecApprovals, TwoProgramsThatEditAtOnceLoseNothing)
{
    constexpr int count = 40;
    write(platform(u"exec-approvals.json"_s), R"({"number":9007199254740993})");
    QProcess others[2];
    for (int i = 0; i < 2; ++i) {
        others[i].setProcessChannelMode(QProcess::ForwardedErrorChannel);
        others[i].start(QStringLiteral(BRAM_WRITER),
                        {platform(), u"other%1"_s.arg(i), QString::number(count)});
    }
    for (int i = 0; i < count; ++i) {
        EXPECT_TRUE(isChanged(files.appendCommandsToExecApprovalsFiles({u"own %1"_s.arg(i)})));
        // A reader finds a whole file at any moment.
        EXPECT_EQ(files.load().paths.size(), 1);
    }
    for (QProcess &other : others) {
        ASSERT_TRUE(other.waitForFinished(60'000));
        EXPECT_EQ(other.exitCode(), 0);
    }
    const QStringList found = patternsIn(u"exec-approvals.json"_s);
    const QSet<QString> patterns(found.begin(), found.end());
    EXPECT_EQ(found.size(), 3 * count);
    EXPECT_EQ(patterns.size(), 3 * count);
    EXPECT_TRUE(contentOf(platform(u"exec-approvals.json"_s)).contains("9007199254740993"));
    EXPECT_TRUE(log.lines().isEmpty()) << qPrintable(log.lines().join(u'\n'));
}

TEST_F(ExecApprovals, ChangesOfThePlatformAreNoticedHoweverTheyAreMade)
{
    ExecApprovalsFiles later(home.filePath(u"later/.brackwen"_s), log);
    ASSERT_TRUE(QDir(home.path()).mkdir(u"later"_s));
    int changes = 0;
    QObject::connect(&later, &ExecApprovalsFiles::changed, &later, [&] { ++changes; });
    later.watch();
    const QString folder = home.filePath(u"later/.brackwen"_s);
    const QString path = folder + u"/exec-approvals.json"_s;
    const auto knows = [&](const QString &command) {
        return waitUntil([&] {
            return changes > 0 && later.load().commandsByDigest.contains(digestOf(command));
        });
    };
    ASSERT_TRUE(QDir(home.filePath(u"later"_s)).mkdir(u".brackwen"_s));
    const auto content = [](const char *command) {
        return QByteArray(R"({"agents":{"a":{"allowlist":[")") + command + R"("]}}})";
    };
    changes = 0;
    write(path, content("new file"));
    EXPECT_TRUE(knows(u"new file"_s));
    changes = 0;
    write(path, content("in place"));
    EXPECT_TRUE(knows(u"in place"_s));
    for (const char *command : {"replaced once", "replaced twice"}) {
        changes = 0;
        write(folder + u"/tmp"_s, content(command));
        ASSERT_EQ(std::rename(qPrintable(folder + u"/tmp"_s), qPrintable(path)), 0);
        EXPECT_TRUE(knows(QString::fromUtf8(command)));
    }
    changes = 0;
    write(path, content("in place again"));
    EXPECT_TRUE(knows(u"in place again"_s));
    changes = 0;
    ASSERT_TRUE(QDir(folder).removeRecursively());
    EXPECT_TRUE(waitUntil([&] { return changes > 0; }));
    ASSERT_TRUE(QDir(home.filePath(u"later"_s)).mkdir(u".brackwen"_s));
    write(path, content("back again"));
    EXPECT_TRUE(knows(u"back again"_s));
}

TEST_F(ExecApprovals, AFolderThatIsBusyWithOtherFilesHidesNothingAndCostsNothing)
{
    write(platform(u"exec-approvals.json"_s), "{}");
    int changes = 0;
    QObject::connect(&files, &ExecApprovalsFiles::changed, &files, [&] { ++changes; });
    files.watch();
    int others = 0;
    QTimer busy;
    QObject::connect(&busy, &QTimer::timeout, &busy, [&] {
        const QString journal = platform(u"state.db-journal"_s);
        write(journal, "x");
        QFile::remove(journal);
        ++others;
    });
    busy.start(10);
    ASSERT_TRUE(
        waitUntil([&] { return others > 150; })); // longer than it takes to settle at the latest
    EXPECT_EQ(changes, 0);
    write(platform(u"exec-approvals.json"_s), sample);
    EXPECT_TRUE(waitUntil([&] { return changes > 0; }));
}

TEST_F(ExecApprovals, TheLoopTurnsWhileAnotherProgramHasTheFolder)
{
    write(platform(u"exec-approvals.json"_s), "{}");
    std::optional<FolderLock> others(*FolderLock::acquire(platform()));
    auto first = files.appendCommandsToExecApprovalsFiles({u"first one"_s});
    auto second = files.removeAlwaysAllowDigestFromExecApprovalsFiles(
        {digestOf(u"first one"_s)}); // in the order of the calls
    QTimer::singleShot(20, &files, [&] { others.reset(); });
    EXPECT_TRUE(isChanged(std::move(first)));
    EXPECT_TRUE(isChanged(std::move(second)));
    EXPECT_TRUE(log.lines().isEmpty());
}

TEST_F(ExecApprovals, AChangeThatHasBegunIsMadeAlsoWhenTheProgramEnds)
{
    write(platform(u"exec-approvals.json"_s), "{}");
    auto ending = std::make_unique<ExecApprovalsFiles>(platform(), log);
    auto task = ending->appendCommandsToExecApprovalsFiles({u"last one"_s});
    ending.reset();
    EXPECT_EQ(patternsIn(u"exec-approvals.json"_s), QStringList(u"last one"_s));
    EXPECT_FALSE(isChanged(std::move(task)));
}

TEST(ConcreteCommands, LeavesOutPreviewsSingleWordsAndRepeats)
{
    EXPECT_EQ(concreteCommandsForBrackwen({u" ls -la "_s, u"git …"_s, u"ls"_s, u"./run"_s, u""_s,
                                           u"  "_s, u"(Legacy entry: none)"_s, u"ls -la"_s,
                                           u"a … b"_s, u"/bin/true"_s}),
              QStringList({u"ls -la"_s, u"./run"_s, u"/bin/true"_s}));
}
