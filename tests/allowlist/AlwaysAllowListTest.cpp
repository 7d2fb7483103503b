// SPDX-License-Identifier: Apache-2.0
#include "allowlist/AlwaysAllowFixture.h"
#include "support/FullDisk.h"
#include "support/Waiting.h"

using namespace bram;
using namespace bram::test;
using namespace Qt::StringLiterals;
using Source = AlwaysAllowSource;
using Verdict = AlwaysAllowVerdict;

namespace
{
bool isChanged(QCoro::Task<ExecApprovalsOutcome> task)
{
    return test::waitFor(std::move(task)).isChanged;
}
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
    const QString withKey = digestOf(u"KEY=a/b make"_s);
    preferences->setTextList(digestsKey, {known, withKey, QString()});
    preferences->setTextMap(
        previewsKey, {{known, u" ls … \n"_s}, {old + u'0', u" "_s}, {withKey, u"KEY=a …"_s}});
    preferences->setTextMap(legacyKey, {{known, u"other"_s}, {old, u"/bin/make test"_s}});
    ASSERT_TRUE(preferences->save());
    restart();
    EXPECT_EQ(texts(), QStringList({u"KEY=… …"_s, u"ls …"_s, u"make …"_s}));
    EXPECT_EQ(list->verdict(u"/bin/make test"_s), Verdict::Allowed);
    const Preferences written(preferencesPath);
    EXPECT_FALSE(written.contains(legacyKey));
    EXPECT_EQ(written.textMap(previewsKey).value().value(withKey), u"KEY=… …"_s);
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
