// SPDX-License-Identifier: Apache-2.0
#include "allowlist/AlwaysAllowList.h"
#include "allowlist/AllowlistFixture.h"
#include "allowlist/CommandDigest.h"
#include "support/FullDisk.h"
#include "support/Waiting.h"
#include "system/Preferences.h"

#include <QHash>
#include <QProcess>

#include <memory>

using namespace bram;
using namespace bram::test;
using namespace Qt::StringLiterals;
using Source = AlwaysAllowSource;
using Verdict = AlwaysAllowVerdict;

namespace
{
const QString digestsKey = u"approvals.always-allow.command-digests"_s;
const QString previewsKey = u"approvals.always-allow.command-preview-by-digest"_s;
const QString formsKey = u"approvals.always-allow.exact-digests"_s;
const QString lineBreaksKey = u"approvals.always-allow.line-break-digests"_s;
const QString legacyKey = u"approvals.always-allow.commands-by-digest"_s;

QString digestOf(const QString &command)
{
    return *normalizedCommandDigest(command);
}

bool isChanged(QCoro::Task<ExecApprovalsOutcome> task)
{
    return test::waitFor(std::move(task)).isChanged;
}

class AlwaysAllow : public AllowlistFixture
{
protected:
    AlwaysAllow() { restart(); }

    /// As after a restart of the program.
    void restart()
    {
        list.reset();
        preferences = std::make_unique<Preferences>(preferencesPath);
        list = std::make_unique<AlwaysAllowList>(*preferences, platform(), log);
        QObject::connect(list.get(), &AlwaysAllowList::entriesChanged, list.get(),
                         [this] { ++changes; });
        list->start();
    }
    void platformAllows(const QByteArrayList &commands)
    {
        write(platform(u"exec-approvals.json"_s),
              R"({"agents":{"main":{"allowlist":[")" + commands.join(R"(",")") + R"("]}}})");
    }
    QStringList texts() const
    {
        QStringList texts;
        for (const auto &entry : list->entries()) {
            texts.append(entry.command.isEmpty() ? entry.digest.left(4) : entry.command);
        }
        return texts;
    }
    AlwaysAllowEntry entry(const QString &command) const { return *list->find(digestOf(command)); }
    Source sourceOf(const QString &command) const { return entry(command).source; }
    bool platformHas(const char *command) const
    {
        return contentOf(platform(u"exec-approvals.json"_s)).contains(command);
    }

    /// What bash makes of a command: the words of each call of `w`.
    QByteArray readByShell(const QString &command) const
    {
        QProcess shell;
        shell.setWorkingDirectory(home.path()); // for what `>` makes
        shell.start(u"bash"_s,
                    {u"-c"_s,
                     u"shopt -s extglob; trap wait EXIT\nw() { printf '<%s>' \"$@\"; echo; }\n"_s
                         + command});
        EXPECT_TRUE(shell.waitForFinished());
        return shell.readAllStandardOutput();
    }

    const QString preferencesPath = home.filePath(u"preferences.ini"_s);
    std::unique_ptr<Preferences> preferences;
    std::unique_ptr<AlwaysAllowList> list;
    int changes = 0;
};
} // namespace

TEST_F(AlwaysAllow, RemembersAcrossRunsAndWritesOnlyWhatIsNew)
{
    EXPECT_EQ(list->verdict(u"git push"_s), Verdict::Unknown);
    list->rememberAlwaysAllow(u" /usr/bin/git   push\n"_s);
    list->rememberAlwaysAllow(u" \n"_s);
    EXPECT_EQ(changes, 1);
    const QByteArray written = contentOf(preferencesPath);
    ASSERT_TRUE(QFile::remove(preferencesPath));
    list->rememberAlwaysAllow(u"/usr/bin/git push"_s);
    EXPECT_FALSE(QFile::exists(preferencesPath)) << "the same again is not written again";
    write(preferencesPath, written);

    restart();
    EXPECT_EQ(list->verdict(u"/usr/bin/git\tpush"_s), Verdict::Allowed);
    EXPECT_EQ(list->verdict(u"/usr/bin/git pusH"_s), Verdict::Unknown);
    EXPECT_EQ(list->entries(),
              QList<AlwaysAllowEntry>({{digestOf(u"/usr/bin/git push"_s),
                                        u"git …"_s,
                                        Source::LocalOnly,
                                        false,
                                        {u"plain"_s}}}));
    EXPECT_EQ(preferences->textList(digestsKey), QStringList(digestOf(u"/usr/bin/git push"_s)));
}

TEST_F(AlwaysAllow, AnswersOnlyWhatAShellReadsTheSame)
{
    const QStringList commands {
        u"w a b"_s,
        u"w  a\tb \n"_s,
        u"w a\nb"_s,
        u"w a\n b"_s,
        u"w a\r\nb"_s,
        u"w a\\ b"_s,
        u"w a\\  b"_s,
        u"w a \\ b"_s,
        u"w \"a b\""_s,
        u"w \"a  b\""_s,
        u"w 'a\tb'"_s,
        u"w 'a\nb'"_s,
        u"w $'a b'"_s,
        u"w dir"_s,
        u"w dir\\"_s,
        u"w dir\\ "_s,
        u"w dir\\\t"_s,
        u"w dir\\\n"_s,
        u"w dir\r"_s,
        u"w a\u00a0b"_s,
        u"w a\u2028b"_s,
        u"w a\vb"_s,
        u"w dir\u3000"_s,
        u"w a \\\n b"_s,
        u"w a # b c"_s,
        u"w a #\nw b c"_s,
        u"w a # b\nw c"_s,
        u"v=; IFS=,; x=${v:-a b}; w $x"_s,
        u"v=; IFS=,; x=${v:-a  b}; w $x"_s,
        u"w +(a b)"_s,
        u"w +(a  b)"_s,
        u"declare -A m; m[a b]=1; IFS=,; w ${!m[@]}"_s,
        u"declare -A m; m[a  b]=1; IFS=,; w ${!m[@]}"_s,
        u"w <<E\na b\nE"_s,
        u"while read -r l; do w \"$l\"; done <<E\na b\nE\n"_s,
        u"while read -r l; do w \"$l\"; done <<E\na  b\nE\n"_s,
    };
    QHash<QString, QByteArray> readings;
    for (const QString &command : commands) {
        readings.insert(command, readByShell(command));
    }
    for (const QString &remembered : commands) {
        list->clearApp();
        list->rememberAlwaysAllow(remembered);
        for (const QString &asked : commands) {
            const bool isAllowed = list->verdict(asked) == Verdict::Allowed;
            EXPECT_TRUE(isAllowed || asked != remembered) << qPrintable(asked);
            EXPECT_TRUE(!isAllowed || readings[asked] == readings[remembered])
                << qPrintable(remembered) << " answers for " << qPrintable(asked);
        }
    }
    list->rememberAlwaysAllow(commands.constFirst());
    EXPECT_EQ(list->verdict(u"\tw  a \t b\n"_s), Verdict::Allowed);

    int folded = 0;
    for (char character = '!'; character <= '~'; ++character) {
        const QString one = u"w x"_s + QLatin1Char(character) + u"y a b"_s;
        const QString other = QString(one).replace(u" a "_s, u"  a\t "_s);
        const bool isFolded = commandForm(one) == commandForm(other);
        EXPECT_TRUE(!isFolded || readByShell(one) == readByShell(other)) << character;
        folded += isFolded ? 1 : 0;
    }
    EXPECT_GT(folded, 80);
}

TEST_F(AlwaysAllow, EachExactTextIsAllowedByItselfAndAllGoTogether)
{
    const QString one = u"cd src && \\\n make 'a  b'"_s;
    const QString other = u"cd src && \\\n make 'a b'"_s;
    list->rememberAlwaysAllow(one);
    EXPECT_EQ(list->verdict(one), Verdict::Allowed);
    EXPECT_EQ(list->verdict(other), Verdict::NotExact);
    list->rememberAlwaysAllow(other);
    restart();
    EXPECT_EQ(list->verdict(one), Verdict::Allowed);
    EXPECT_EQ(list->verdict(other), Verdict::Allowed);
    ASSERT_EQ(list->entries().size(), 1);
    list->removeAlwaysAllowEntryFromAppOnly({entry(one)});
    restart();
    list->rememberAlwaysAllow(other);
    EXPECT_EQ(list->verdict(one), Verdict::NotExact);
    list->clearApp();
    restart();
    EXPECT_EQ(list->verdict(other), Verdict::Unknown);
    EXPECT_EQ(preferences->textMap(formsKey), (QMap<QString, QString> {}));
}

TEST_F(AlwaysAllow, ThePlatformsTextAnswersForItselfOnceItIsAdded)
{
    platformAllows({"cp 'c  d' e", "cp c\\nls d", "make it"});
    list->reload(AlwaysAllowScope::IncludeRegistered);
    list->addAlwaysAllowEntryToAppList(list->entries());
    restart();
    for (const auto &[command, expected] : {std::pair(u"cp 'c  d' e"_s, Verdict::Allowed),
                                            std::pair(u"cp 'c d' e"_s, Verdict::NotExact),
                                            std::pair(u"cp c\nls d"_s, Verdict::Allowed),
                                            std::pair(u"cp c ls d"_s, Verdict::NotExact),
                                            std::pair(u"make\tit"_s, Verdict::Allowed)}) {
        EXPECT_EQ(list->verdict(command), expected) << qPrintable(command);
    }
}

TEST_F(AlwaysAllow, WhatIsKnownExactlyOutlivesABackup)
{
    const QStringList exact {u"rm a\nls b"_s, u"rm 'a  b'"_s, u"ls\r"_s, u"make it"_s};
    for (const QString &command : exact) {
        list->rememberAlwaysAllow(command);
    }
    const auto backup
        = parseAlwaysAllowBackup(alwaysAllowBackupText(list->entries(), u"Head"_s, 0));
    list->clearApp();
    EXPECT_EQ(list->restore(backup), exact.size());
    restart();
    for (const QString &command : exact) {
        EXPECT_EQ(list->verdict(command), Verdict::Allowed) << qPrintable(command);
    }
    for (const QString &command : {u"rm a ls b"_s, u"rm 'a b'"_s, u"ls"_s}) {
        EXPECT_EQ(list->verdict(command), Verdict::NotExact) << qPrintable(command);
    }
}

TEST_F(AlwaysAllow, WhatEarlierReleasesKeptIsAskedOnceMoreUnlessItIsPlain)
{
    // What they remembered, whether they marked it, and what is answered now.
    const struct {
        QString kept;
        QString preview;
        bool isMarked;
        QString asked;
        Verdict expected;
    } rows[] {
        {u"git push"_s, u"git …"_s, false, u"git  push"_s, Verdict::Allowed},
        {u"git 'a  b'"_s, u"git …"_s, false, u"git 'a b'"_s, Verdict::NotExact},
        {u"git 'a  b'"_s, u"git 'a  b'"_s, false, u"git 'a b'"_s, Verdict::NotExact},
        {u"git 'a  b'"_s, u"git 'a  b'"_s, false, u"git 'a  b'"_s, Verdict::Allowed},
        {u"git\npush"_s, u"git …"_s, true, u"git push"_s, Verdict::NotExact},
        {u"git\npush"_s, u"git …"_s, true, u"git\npush"_s, Verdict::NotExact},
    };
    const auto keep = [&](const auto &row) {
        preferences->remove(formsKey);
        preferences->setTextList(digestsKey, {digestOf(row.kept)});
        preferences->setTextMap(previewsKey, {{digestOf(row.kept), row.preview}});
        preferences->setTextList(lineBreaksKey,
                                 row.isMarked ? QStringList(digestOf(row.kept)) : QStringList());
    };
    for (const auto &row : rows) {
        keep(row);
        ASSERT_TRUE(preferences->save());
        restart();
        EXPECT_EQ(list->verdict(row.asked), row.expected)
            << qPrintable(row.kept) << " and " << qPrintable(row.asked);
        EXPECT_EQ(entry(row.kept).isAskedOnceMore(), row.isMarked);
        list->rememberAlwaysAllow(row.kept);
        restart();
        EXPECT_EQ(list->verdict(row.kept), Verdict::Allowed) << "it learns";
    }
    // Restored from a backup of theirs, nothing says what the digest was made of.
    list->clearApp();
    list->restore(
        parseAlwaysAllowBackup(u"ID: "_s + digestOf(u"git push"_s) + u"\nCommand: git …"_s));
    EXPECT_EQ(list->verdict(u"git push"_s), Verdict::NotExact);
    EXPECT_TRUE(entry(u"git push"_s).isAskedOnceMore());
}

TEST_F(AlwaysAllow, MalformedKnowledgeMakesItAsk)
{
    const QString digest = digestOf(u"git push"_s);
    for (const QString &value :
         {u"x"_s, u"["_s, u""_s, u"[\"plain\"]"_s, u"{\"%1\":1}"_s.arg(digest),
          u"{\"%1\":\"Plain plainer 12\"}"_s.arg(digest), u"{}"_s,
          u"{\"plain\":\"%1\"}"_s.arg(digest)}) {
        list->rememberAlwaysAllow(u"git push"_s);
        preferences->setText(formsKey, value);
        ASSERT_TRUE(preferences->save());
        restart();
        EXPECT_EQ(list->verdict(u"git push"_s), Verdict::NotExact) << qPrintable(value);
    }
    list->rememberAlwaysAllow(u"git push"_s);
    preferences->remove(formsKey);
    preferences->setText(lineBreaksKey, u"["_s);
    restart();
    EXPECT_EQ(list->verdict(u"git push"_s), Verdict::NotExact);
    EXPECT_EQ(log.lines().filter(u"line-break-digests is malformed"_s).size(), 1);
}

TEST_F(AlwaysAllow, WhatIsSensitiveIsKnownOfTheWholeCommand)
{
    list->rememberAlwaysAllow(u"cat /etc/shadow"_s);
    list->rememberAlwaysAllow(u"git status"_s);
    const auto backup
        = parseAlwaysAllowBackup(alwaysAllowBackupText(list->entries(), u"Head"_s, 0));
    for (int i = 0; i < 2; ++i) {
        restart();
        EXPECT_TRUE(entry(u"cat /etc/shadow"_s).isSecuritySensitive);
        EXPECT_FALSE(entry(u"git status"_s).isSecuritySensitive);
        list->clearApp();
        list->restore(backup);
    }
}

TEST_F(AlwaysAllow, MigratesWhatEarlierReleasesKept)
{
    const QString known = digestOf(u"ls -la"_s);
    const QString old = digestOf(u"/bin/make test"_s);
    preferences->setTextList(digestsKey, {known, QString()});
    preferences->setTextMap(previewsKey, {{known, u" ls … \n"_s}, {old + u'0', u" "_s}});
    preferences->setTextMap(legacyKey, {{known, u"other"_s}, {old, u"/bin/make test"_s}});
    ASSERT_TRUE(preferences->save());
    restart();
    EXPECT_EQ(texts(), QStringList({u"ls …"_s, u"make …"_s}));
    EXPECT_EQ(list->verdict(u"/bin/make test"_s), Verdict::Allowed);
    EXPECT_FALSE(Preferences(preferencesPath).contains(legacyKey));
}

TEST_F(AlwaysAllow, MalformedPreferencesCountAsEmptyWithOneLineEach)
{
    for (const QString &value : {u"x"_s, u"5"_s, u"[1]"_s, u"{\"a\":1}"_s, u"[\"a\""_s, u""_s}) {
        for (const QString &key : {digestsKey, previewsKey, legacyKey}) {
            preferences->setText(key, value);
        }
        ASSERT_TRUE(preferences->save());
        const auto before = log.lines().size();
        restart();
        EXPECT_TRUE(list->entries().isEmpty()) << qPrintable(value);
        EXPECT_EQ(log.lines().size(), before + 3) << qPrintable(value);
    }
    list->rememberAlwaysAllow(u"ls -la"_s);
    restart();
    EXPECT_EQ(list->verdict(u"ls -la"_s), Verdict::Allowed);
}

TEST_F(AlwaysAllow, MergesBothListsInTheOrderOfTheirTexts)
{
    list->rememberAlwaysAllow(u"git push"_s);
    list->rememberAlwaysAllow(u"Zip it"_s);
    preferences->setTextList(digestsKey,
                             {digestOf(u"git push"_s), digestOf(u"Zip it"_s),
                              u"Afff"_s + QString(60, u'0'), digestOf(u"sudo ls"_s)});
    platformAllows({"git  push", "apt list", "sudo ls"});
    list->reload(AlwaysAllowScope::IncludeRegistered);
    EXPECT_EQ(texts(),
              QStringList({u"Afff"_s, u"apt list"_s, u"git  push"_s, u"sudo ls"_s, u"Zip …"_s}));
    EXPECT_EQ(sourceOf(u"git push"_s), Source::Both);
    EXPECT_EQ(sourceOf(u"apt list"_s), Source::BrackwenOnly);
    EXPECT_EQ(sourceOf(u"Zip it"_s), Source::LocalOnly);
    EXPECT_TRUE(entry(u"sudo ls"_s).isSecuritySensitive);
    EXPECT_FALSE(entry(u"git push"_s).isSecuritySensitive);
    EXPECT_EQ(list->verdict(u"apt list"_s), Verdict::Unknown) << "only the own list answers";

    list->reload(AlwaysAllowScope::AppOnly);
    EXPECT_EQ(texts(),
              QStringList({digestOf(u"sudo ls"_s).left(4), u"Afff"_s, u"git …"_s, u"Zip …"_s}));
    EXPECT_EQ(sourceOf(u"git push"_s), Source::Both) << "what the platform has stays known";
    EXPECT_EQ(list->allEntries().size(), 5);
}

TEST_F(AlwaysAllow, EntriesAreAddedToAndRemovedFromOneListOrBoth)
{
    platformAllows({"apt list", "git push", "ls -la"});
    list->reload(AlwaysAllowScope::IncludeRegistered);
    list->rememberAlwaysAllow(u"git push"_s);
    list->rememberAlwaysAllow(u"own one"_s);

    EXPECT_FALSE(list->removeAlwaysAllowEntryFromAppOnly({entry(u"apt list"_s)}));
    EXPECT_TRUE(list->addAlwaysAllowEntryToAppList({entry(u"apt list"_s)}));
    EXPECT_EQ(sourceOf(u"apt list"_s), Source::Both);
    EXPECT_TRUE(list->removeAlwaysAllowEntryFromAppOnly({entry(u"apt list"_s)}));
    EXPECT_EQ(sourceOf(u"apt list"_s), Source::BrackwenOnly);

    EXPECT_TRUE(isChanged(list->removeAlwaysAllowEntryFromBrackwenOnly({entry(u"apt list"_s)})));
    EXPECT_EQ(sourceOf(u"apt list"_s), Source::LocalOnly);
    EXPECT_EQ(entry(u"apt list"_s).command, u"apt list"_s);
    EXPECT_EQ(list->verdict(u"apt list"_s), Verdict::Allowed);
    EXPECT_FALSE(platformHas("apt list"));
    EXPECT_FALSE(isChanged(list->removeAlwaysAllowEntryFromBrackwenOnly({entry(u"own one"_s)})));
    EXPECT_EQ(sourceOf(u"own one"_s), Source::LocalOnly);

    EXPECT_TRUE(isChanged(list->removeAlwaysAllowEntry({entry(u"git push"_s)})));
    EXPECT_EQ(list->find(digestOf(u"git push"_s)), nullptr);
    EXPECT_FALSE(platformHas("git push"));
    EXPECT_TRUE(platformHas("ls -la"));

    EXPECT_TRUE(list->clearApp());
    EXPECT_EQ(texts(), QStringList(u"ls -la"_s));
    EXPECT_TRUE(isChanged(list->clearBrackwen()));
    EXPECT_TRUE(list->entries().isEmpty());
    restart();
    EXPECT_TRUE(list->entries().isEmpty());
}

TEST_F(AlwaysAllow, FollowsThePlatformUnlessOnlyTheOwnListIsWanted)
{
    platformAllows({"apt list"});
    EXPECT_TRUE(waitUntil([this] { return texts() == QStringList(u"apt list"_s); }));
    list->reload(AlwaysAllowScope::AppOnly);
    platformAllows({"apt list", "zip it"});
    ExecApprovalsFiles other(platform(), log);
    bool isNoticed = false;
    QObject::connect(&other, &ExecApprovalsFiles::changed, &other, [&] { isNoticed = true; });
    other.watch();
    ASSERT_TRUE(isChanged(other.appendCommandsToExecApprovalsFiles({u"yes yes"_s})));
    ASSERT_TRUE(waitUntil([&] { return isNoticed; }));
    EXPECT_TRUE(list->entries().isEmpty());
    list->reload(AlwaysAllowScope::IncludeRegistered);
    EXPECT_EQ(list->entries().size(), 3);
}

TEST_F(AlwaysAllow, RestoresOnlyProperDigestsAndKeepsTextsThatAreThere)
{
    list->rememberAlwaysAllow(u"git push"_s);
    const QString other = digestOf(u"ls -la"_s);
    EXPECT_EQ(list->restore({{digestOf(u"git push"_s), u"something else"_s},
                             {other, u"ls -la"_s},
                             {other.toUpper(), u"x"_s},
                             {other.left(63), u"x"_s},
                             {QString(64, u'0'), QString()}}),
              3);
    restart();
    EXPECT_EQ(texts(), QStringList({u"0000"_s, u"git …"_s, u"ls -la"_s}));
    EXPECT_EQ(list->verdict(u"ls -la"_s), Verdict::Allowed);
}

TEST_F(AlwaysAllow, WhatCannotBeWrittenIsKeptForThisRunAndSaid)
{
    {
        const FullDisk full;
        list->rememberAlwaysAllow(u"ls -la"_s);
        EXPECT_EQ(list->verdict(u"ls -la"_s), Verdict::Allowed);
    }
    EXPECT_EQ(log.lines().filter(u"could not be written"_s).size(), 1);
    list->rememberAlwaysAllow(u"git push"_s);
    restart();
    EXPECT_EQ(list->verdict(u"ls -la"_s), Verdict::Allowed);
}
