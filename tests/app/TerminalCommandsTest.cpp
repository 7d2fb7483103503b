// SPDX-License-Identifier: Apache-2.0
// The commands of the terminal, typed into a pipe of the real program: what they change on the disk and
// at the gateway.
#include "support/ProgramFixture.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QSettings>

using namespace bram;
using namespace bram::test;
using namespace Qt::StringLiterals;

namespace
{

class TerminalCommands : public ProgramFixture
{
protected:
    void configure(const QByteArray &content)
    {
        ASSERT_TRUE(QDir(home.path()).mkpath(u".brackwen"_s));
        QSaveFile file(home.filePath(u".brackwen/brackwen.json"_s));
        ASSERT_TRUE(file.open(QFile::WriteOnly));
        file.write(content);
        ASSERT_TRUE(file.commit());
    }
    QString preference(const QString &key) const
    {
        const QString path = home.filePath(u"config/BrackwenApprovalsMenu/preferences.ini"_s);
        return QSettings(path, QSettings::IniFormat).value(key).toString();
    }
    QJsonObject jsonIn(const QString &path) const
    {
        QFile file(path);
        return file.open(QFile::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object()
                                          : QJsonObject();
    }
};

} // namespace

TEST_F(TerminalCommands, TheChoiceOfAgentIsKeptAndDecidesWhatCanBeDecided)
{
    configure(R"({"agents":{"list":[{"id":"b"}],"a":{}}})");
    auto gateway = startGateway(u"wait-client\n"
                                "request aaa-1 a ls\n"
                                "request bbb-1 b make\n"
                                "request ccc-1 c id\n"
                                "wait-decision bbb-1\n"
                                "wait-decision aaa-1\n"
                                "wait-decision ccc-1\n"_s);
    auto bram = startBram();
    ASSERT_TRUE(bram->says(u"  | ls\n"_s));
    bram->send(u"agents"_s);
    ASSERT_TRUE(bram->says(u"* a\n  b\n  __all__  All agents (unrestricted)\n"_s));
    EXPECT_FALSE(bram->output().contains(u"make"_s));
    bram->send(u"agent b"_s);
    ASSERT_TRUE(bram->says(u"Only requests of this agent are shown: b\n"_s));
    ASSERT_TRUE(bram->says(u"  | make\n"_s));
    bram->send(u"deny all"_s);
    ASSERT_TRUE(gateway->says(u"decision bbb-1 deny accepted"_s));
    EXPECT_EQ(preference(u"approvals.selected-agent-id"_s), u"b"_s);

    // A new agent is there without a restart, a broken file changes nothing.
    configure("{");
    configure(R"({"agents":{"a":{},"b":{},"c":{}}})");
    ASSERT_TRUE(waitUntil([&] {
        bram->send(u"agents"_s);
        return bram->says(u"  a\n* b\n  c\n"_s);
    }));
    bram->send(u"agent d"_s);
    ASSERT_TRUE(bram->says(u"No agent has this name"_s));
    bram->send(u"agent __all__"_s);
    ASSERT_TRUE(bram->says(u"  1) Apply Unrestricted\n  2) Cancel\n"_s));
    bram->send(u"cancel"_s);
    ASSERT_TRUE(bram->says(u"shown: b\n"_s));
    EXPECT_EQ(preference(u"approvals.selected-agent-unrestricted-confirmed"_s), QString());
    bram->send(u"agent __all__"_s);
    ASSERT_TRUE(bram->says(u"Answer with the number"_s));
    ASSERT_TRUE(bram->says(u"\n"_s));
    bram->send(u"1"_s);
    ASSERT_TRUE(bram->says(u"Requests of every agent are shown."_s));
    ASSERT_TRUE(bram->says(u"  | id\n"_s));
    EXPECT_EQ(preference(u"approvals.selected-agent-id"_s), u"__all__"_s);
    EXPECT_EQ(preference(u"approvals.selected-agent-unrestricted-explicit"_s), u"true"_s);
    EXPECT_EQ(preference(u"approvals.selected-agent-unrestricted-confirmed"_s), u"true"_s);
    bram->send(u"allow-once all"_s);
    ASSERT_TRUE(bram->says(u"Answer with the number"_s));
    ASSERT_TRUE(bram->says(u"\n"_s));
    bram->send(u"1"_s);
    ASSERT_TRUE(gateway->says(u"decision aaa-1 allow-once accepted"_s)
                || gateway->output().contains(u"decision aaa-1 allow-once accepted"_s));
    ASSERT_TRUE(waitUntil(
        [&] { return gateway->output().contains(u"decision ccc-1 allow-once accepted"_s); }));
    bram->closeInput();
    EXPECT_EQ(bram->ends(), 0);

    auto next = startBram();
    ASSERT_TRUE(next->says(u"Gateway connected"_s));
    next->send(u"agents"_s);
    EXPECT_TRUE(next->says(u"* __all__"_s));
}

TEST_F(TerminalCommands, TheLanguageIsKept)
{
    auto gateway = startGateway(u"wait-client\n"_s);
    auto bram = startBram();
    bram->send(u"language kor"_s);
    ASSERT_TRUE(bram->says(u"이제 한국어로 표시합니다.\n"_s));
    bram->send(u"language ger"_s);
    bram->closeInput();
    EXPECT_EQ(bram->ends(), 0);
    EXPECT_EQ(preference(u"menu.language.v2"_s), u"kor"_s);
    auto next = startBram();
    next->send(u"list"_s);
    EXPECT_TRUE(next->says(u"대기"_s));
}

TEST_F(TerminalCommands, TheSelfTestEndsWithAStatusForScripts)
{
    const QString place = home.filePath(u"result of the test.json"_s);
    auto gateway = startGateway(u"wait-client\n"_s);
    auto bram = startBram({u"--self-test"_s, u"--self-test-output"_s, place});
    bram->closeInput(); // as from a script
    EXPECT_EQ(bram->ends(), 0);
    EXPECT_TRUE(jsonIn(place).value("success"_L1).toBool());
    EXPECT_EQ(jsonIn(place).value("requestedCount"_L1).toInt(), 2);
    const auto lines = auditLines();
    EXPECT_THAT(lines, testing::Contains("gateway_auth_failure"));

    // Without a gateway, and asked for by the environment.
    gateway->kill();
    QFile::remove(place);
    environment.insert(u"BRACKWEN_RUN_SELF_TEST"_s, u"yes"_s);
    environment.insert(u"BRACKWEN_SELF_TEST_OUTPUT"_s, place);
    auto alone = startBram();
    EXPECT_EQ(alone->ends(), 0);
    EXPECT_TRUE(QFile::exists(place));

    auto nowhere = startBram({u"--self-test-output"_s, home.filePath(u"no/folder/r.json"_s)});
    EXPECT_EQ(nowhere->ends(), 1);
    auto stopped = startBram();
    ASSERT_TRUE(stopped->says(u"sim-low-"_s));
    auto second = startBram();
    EXPECT_EQ(second->ends(), 1);
    EXPECT_EQ(second->errors().count(u'\n'), 1);
    EXPECT_FALSE(QFile::exists(place)); // that of the test before is gone
    stopped->signal(SIGTERM);
    EXPECT_EQ(stopped->ends(), 1);
}

TEST_F(TerminalCommands, SimulatedRequestsComeAtTheStartAndOnWish)
{
    auto gateway = startGateway(u"wait-client\n"_s);
    auto bram = startBram({u"--startup-simulation"_s});
    ASSERT_TRUE(bram->says(u"id: sim-high-"_s));
    ASSERT_TRUE(bram->complains(u"startup simulation executed"_s));
    bram->send(u"simulate"_s);
    ASSERT_TRUE(bram->says(u"Request #4"_s));
    ASSERT_TRUE(bram->says(u"\nSimulation Executed\n"_s));
    bram->send(u"deny 4"_s);
    ASSERT_TRUE(gateway->says(u"decision sim-high-"_s));
    ASSERT_TRUE(bram->says(u"#4 was made up by an exercise"_s));
    bram->closeInput();
    EXPECT_EQ(bram->ends(), 0);
}

TEST_F(TerminalCommands, WhatIsTakenOutIsWhollyThereAndReplacesNothingUnasked)
{
    auto gateway = startGateway(u"wait-client\n"
                                "request aaa-1 main curl -H token=hunter2 example.org\n"
                                "wait-decision aaa-1\n"_s);
    auto bram = startBram();
    ASSERT_TRUE(bram->says(u"  | curl"_s));
    const QString pending = home.filePath(u"my pending.txt"_s);
    bram->send(u"export  ~/my pending.txt "_s);
    ASSERT_TRUE(bram->says(u"The pending requests are in: "_s));
    QFile file(pending);
    ASSERT_TRUE(file.open(QFile::ReadWrite));
    EXPECT_TRUE(file.readAll().contains("curl -H token=hunter2 example.org"));
    EXPECT_EQ(file.permissions() & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
    file.resize(0);

    bram->send(u"export "_s + pending);
    ASSERT_TRUE(bram->says(u"Replace the file?"_s));
    ASSERT_TRUE(bram->says(u"its words.\n"_s));
    bram->send(u"keep it"_s);
    bram->send(u"export "_s + pending);
    ASSERT_TRUE(bram->says(u"Replace the file?"_s));
    ASSERT_TRUE(bram->says(u"its words.\n"_s));
    EXPECT_EQ(file.size(), 0);
    bram->send(u"1"_s);
    ASSERT_TRUE(bram->says(u"The pending requests are in: "_s));
    EXPECT_TRUE(waitUntil([&] { return QFileInfo(pending).size() > 0; }));
    bram->send(u"export "_s + home.path());
    ASSERT_TRUE(bram->says(u"This is a folder: "_s));
    bram->send(u"report /no/such/folder/r.md"_s);
    ASSERT_TRUE(bram->says(u"There is no folder for this file: "_s));

    bram->send(u"deny 1"_s);
    ASSERT_TRUE(bram->says(u"#1 denied."_s));
    const QString bundles = home.filePath(u"new/bundles"_s);
    bram->send(u"diagnostics "_s + bundles);
    ASSERT_TRUE(bram->says(u"Saved to:"_s));
    const QDir made(bundles);
    ASSERT_EQ(made.entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(), 1);
    // As in a script: what was asked for before the end of the input is done.
    const QString report = home.filePath(u"report.md"_s);
    bram->send(u"report "_s + report);
    bram->closeInput();
    EXPECT_EQ(bram->ends(), 0);
    QFile written(report);
    ASSERT_TRUE(written.open(QFile::ReadOnly));
    const QByteArray text = written.readAll();
    EXPECT_TRUE(text.startsWith("#")) << text.constData();
    EXPECT_FALSE(text.contains("hunter2"));
    EXPECT_TRUE(bram->output().contains(u"Saved last 7 days audit data."_s));
}

TEST_F(TerminalCommands, TheAlwaysAllowListIsSeenChangedSavedAndTakenBack)
{
    ASSERT_TRUE(QDir(home.path()).mkpath(u".brackwen"_s));
    const QString platform = home.filePath(u".brackwen/exec-approvals.json"_s);
    QFile file(platform);
    ASSERT_TRUE(file.open(QFile::WriteOnly));
    file.write(
        R"({"agents":{"main":{"allowlist":[{"pattern":"make test","n":9007199254740993}]}}})");
    file.close();
    const auto onDisk = [&platform] {
        QFile now(platform);
        return now.open(QFile::ReadOnly) ? now.readAll() : QByteArray();
    };
    auto gateway = startGateway(u"wait-client\n"
                                "request aaa-1 main git status\n"
                                "wait-decision aaa-1\n"
                                "request aaa-2 main git status\n"
                                "wait-decision aaa-2\n"_s);
    auto bram = startBram();
    ASSERT_TRUE(bram->says(u"  | git status\n"_s));
    bram->send(u"allow-always 1"_s);
    ASSERT_TRUE(gateway->says(u"decision aaa-1 allow-always accepted"_s));
    ASSERT_TRUE(gateway->says(u"decision aaa-2 allow-once accepted"_s)); // without a question
    bram->send(u"always-allow list"_s);
    ASSERT_TRUE(bram->says(u"  app       git …\n"_s));
    ASSERT_TRUE(bram->says(u"  brackwen  make test\n"_s));
    const QString row = bram->output().split(u'\n').filter(u"  app       git …"_s).value(0);
    const QString digest = row.section(u' ', 0, 0);
    ASSERT_EQ(digest.size(), 12);

    const QString platformRow
        = bram->output().split(u'\n').filter(u"  brackwen  make test"_s).value(0);
    bram->send(u"always-allow add "_s + platformRow.section(u' ', 0, 0));
    ASSERT_TRUE(bram->says(u"The always-allow list has changed.\n"_s));
    bram->send(u"always-allow list"_s);
    ASSERT_TRUE(bram->says(u"  both      make test\n"_s));
    bram->send(u"clear-history"_s);
    ASSERT_TRUE(bram->says(u"The history is empty now"_s));
    bram->send(u"history"_s);
    ASSERT_TRUE(bram->says(u"Nothing has happened yet.\n"_s));
    bram->send(u"cancel-report"_s);
    ASSERT_TRUE(bram->says(u"No report and no bundle is being made.\n"_s));

    const QString saved = home.filePath(u"saved list"_s);
    bram->send(u"always-allow backup ~/saved list"_s);
    ASSERT_TRUE(bram->says(u"The always-allow list is in: "_s));
    EXPECT_EQ(QFile::permissions(saved) & (QFile::ReadGroup | QFile::ReadOther),
              QFile::Permissions());
    bram->send(u"always-allow remove ffff app"_s);
    ASSERT_TRUE(bram->says(u"No entry begins with: ffff"_s));
    bram->send(u"always-allow remove "_s + digest + u" app"_s);
    ASSERT_TRUE(bram->says(u"The always-allow list has changed.\n"_s));
    bram->send(u"always-allow clear brackwen"_s);
    ASSERT_TRUE(bram->says(u"2) Cancel\n"_s));
    ASSERT_TRUE(bram->says(u"its words.\n"_s));
    bram->send(u"cancel"_s);
    ASSERT_TRUE(bram->says(u"Nothing has changed.\n"_s));
    EXPECT_TRUE(onDisk().contains("make test"));
    bram->send(u"always-allow clear brackwen"_s);
    ASSERT_TRUE(bram->says(u"its words.\n"_s));
    bram->send(u"1"_s);
    ASSERT_TRUE(bram->says(u"The always-allow list has changed.\n"_s));
    EXPECT_FALSE(onDisk().contains("make test"));
    EXPECT_TRUE(QJsonDocument::fromJson(onDisk()).isObject());

    bram->send(u"always-allow restore "_s + saved);
    ASSERT_TRUE(bram->says(u"Entries restored to the app list: "_s));
    ASSERT_TRUE(bram->says(u"its words.\n"_s));
    bram->send(u"2"_s);
    bram->send(u"always-allow list"_s);
    ASSERT_TRUE(bram->says(u"git …\n"_s));
    bram->send(u"always-allow reload"_s);
    ASSERT_TRUE(bram->says(u"3) Cancel\n"_s));
    ASSERT_TRUE(bram->says(u"its words.\n"_s));
    bram->send(u"1"_s);
    ASSERT_TRUE(bram->says(u"Entries: "_s));
    bram->send(u"always-allow restore "_s + saved);
    bram->closeInput();
    EXPECT_EQ(bram->ends(), 0);
    // Said also where the input ended before it could be asked about.
    EXPECT_EQ(bram->output().count(u"  Entries restored to the app list: "_s), 2);
}
