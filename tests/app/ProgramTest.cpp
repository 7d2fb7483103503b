// SPDX-License-Identifier: Apache-2.0
// The real program against the practice gateway, each in a process of its own.
#include "support/ProgramFixture.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>
#include <QUrl>

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace bram;
using namespace bram::test;
using namespace Qt::StringLiterals;
using testing::ElementsAre;

namespace
{

using Program = ProgramFixture;

QString connected()
{
    return u"Gateway connected"_s;
}

} // namespace

TEST_F(Program, EveryDecisionGoesItsWayThroughRefusalsReconnectsAndAKilledGateway)
{
    environment.insert(u"BRACKWEN_GATEWAY_TOKEN"_s, u"secret-1"_s);
    const QStringList strict {u"--token"_s, u"secret-1"_s, u"--require-nonce"_s};
    auto gateway = startGateway(u"wait-client\n"
                                "request aaa-1 main ls -la\n"
                                "wait-decision aaa-1\n"
                                "request bbb-2 dev sudo make install\n"
                                "error database is locked\n"
                                "wait-decision bbb-2\n"
                                "answer\n"
                                "wait 500\n"
                                "request ccc-3 - printf 'x'\\nrm -rf build\n"_s,
                                strict);
    auto bram = startBram();
    ASSERT_TRUE(bram->says(u"Request #1"_s));
    bram->send(u"allow-once #1"_s);
    ASSERT_TRUE(gateway->says(u"decision aaa-1 allow-once accepted"_s));
    ASSERT_TRUE(bram->says(u"#1 allowed once."_s));

    ASSERT_TRUE(bram->says(u"Request #2"_s));
    ASSERT_TRUE(bram->says(u"HIGH RISK"_s));
    ASSERT_TRUE(bram->says(u"  | sudo make install"_s));
    bram->send(u"allow-always bbb"_s);
    ASSERT_TRUE(gateway->says(u"decision bbb-2 allow-always refused: database is locked"_s));
    ASSERT_TRUE(bram->says(u"#2 not confirmed, it is still listed: database is locked"_s));

    ASSERT_TRUE(bram->says(u"Request #3"_s));
    ASSERT_TRUE(bram->says(u"  | rm -rf build"_s));
    bram->send(u"allow-always bbb-2"_s);
    ASSERT_TRUE(gateway->says(u"decision bbb-2 allow-always accepted"_s));
    ASSERT_TRUE(bram->says(u"#2 allowed always."_s));

    gateway->kill();
    ASSERT_TRUE(bram->says(u"Gateway disconnected: "_s));
    bram->send(u"deny 3"_s);
    ASSERT_TRUE(bram->says(u"#3 not confirmed, it is still listed: "_s));

    gateway = startGateway(u"request ccc-3 - printf 'x'\\nrm -rf build\n"
                           "request ddd-4 main make\n"
                           "wait-client\n"
                           "wait-decision ccc-3\n"
                           "resolve ddd-4\n"_s,
                           strict);
    ASSERT_TRUE(bram->says(connected()));
    ASSERT_TRUE(bram->says(u"Request #4"_s));
    bram->send(u"deny 3"_s);
    ASSERT_TRUE(gateway->says(u"decision ccc-3 deny accepted"_s));
    ASSERT_TRUE(bram->says(u"#3 denied."_s));
    ASSERT_TRUE(bram->says(u"#4 was decided elsewhere."_s));
    bram->send(u"deny 4"_s);
    bram->send(u"quit"_s);
    EXPECT_EQ(bram->ends(), 0);
    EXPECT_FALSE(gateway->output().contains(u"decision ddd-4"_s));

    auto lines = auditLines();
    std::erase(lines, "gateway_disconnected");
    EXPECT_THAT(
        lines,
        ElementsAre("approval_requested aaa-1", "approval_decision_requested aaa-1 allow-once",
                    "approval_resolved aaa-1 allow-once", "approval_requested bbb-2",
                    "approval_decision_requested bbb-2 allow-always",
                    "approval_resolve_failed bbb-2 allow-always", "approval_requested ccc-3",
                    "approval_decision_requested bbb-2 allow-always",
                    "approval_resolved bbb-2 allow-always",
                    "approval_decision_requested ccc-3 deny", "approval_resolve_failed ccc-3 deny",
                    "approval_requested ddd-4", "approval_decision_requested ccc-3 deny",
                    "approval_resolved ccc-3 deny", "approval_resolved_external ddd-4 resolved"));
    struct stat info = {};
    ASSERT_EQ(stat(QFile::encodeName(auditFile()).constData(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0600U);
    // Neither the token nor a command's arguments get into the record or the log.
    QFile audit(auditFile());
    ASSERT_TRUE(audit.open(QFile::ReadOnly));
    const QByteArray record = audit.readAll();
    EXPECT_FALSE(record.contains("secret-1") || record.contains("rm -rf"));
    EXPECT_FALSE(bram->errors().contains(u"secret-1"_s));
}

TEST_F(Program, WhatWasWrittenBeforeARequestNeverAnswersIt)
{
    auto gateway = startGateway(u"wait-client\nwait 300\nrequest aaa-1 main ls\n"_s);
    auto bram = startBram();
    bram->send(u"allow-once 1"_s);
    bram->send(u"allow-once aaa-1"_s);
    bram->send(u"allow-always all"_s);
    ASSERT_TRUE(bram->says(u"Request #1"_s));
    bram->send(u"list"_s);
    ASSERT_TRUE(bram->says(u"#1"_s));
    bram->send(u"deny all"_s);
    ASSERT_TRUE(gateway->says(u"decision aaa-1 deny accepted"_s));
    EXPECT_FALSE(gateway->output().contains(u"allow"_s));
}

TEST_F(Program, EndOfInputLetsADecisionUnderWayArrive)
{
    auto gateway = startGateway(u"delay 600\nwait-client\nrequest aaa-1 main ls\n"_s);
    auto bram = startBram();
    ASSERT_TRUE(bram->says(u"Request #1"_s));
    ASSERT_TRUE(bram->says(u"  | ls\n"_s));
    bram->send(u"allow-once 1"_s);
    bram->closeInput();
    EXPECT_EQ(bram->ends(), 0);
    EXPECT_THAT(auditLines(),
                ElementsAre("approval_requested aaa-1",
                            "approval_decision_requested aaa-1 allow-once",
                            "approval_resolved aaa-1 allow-once"));
}

TEST_F(Program, SignalsEndItCleanlyAlsoWithADecisionThatIsNeverAnswered)
{
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        auto gateway = startGateway(u"never-answer\nwait-client\nrequest aaa-1 main ls\n"_s);
        auto bram = startBram();
        ASSERT_TRUE(bram->says(u"Request #1"_s));
        if (number == SIGTERM) {
            bram->send(u"deny 1"_s);
            ASSERT_TRUE(gateway->says(u"decision aaa-1"_s));
        }
        bram->signal(number);
        EXPECT_EQ(bram->ends(), 0) << number;
    }
    // The last word on the decision that was under way is on record.
    EXPECT_THAT(auditLines(), testing::Contains("approval_resolve_failed aaa-1 deny"));
}

TEST_F(Program, SecondCopyEndsSilentlyAndTheFirstGoesOn)
{
    auto gateway = startGateway(u"wait-client\nwait 200\nrequest aaa-1 main ls\n"_s);
    auto first = startBram();
    ASSERT_TRUE(first->says(connected()));
    auto second = startBram();
    EXPECT_EQ(second->ends(), 0);
    EXPECT_EQ(second->output() + second->errors(), QString());
    // A person at a terminal is told.
    ProgramUnderTest third(u"/usr/bin/script"_s,
                           {u"-qec"_s, QStringLiteral(BRAM_PROGRAM), u"/dev/null"_s}, environment);
    EXPECT_TRUE(third.says(u"bram: BRAM is running already (process "_s));
    EXPECT_EQ(third.ends(), 0);
    // What keeps this one out is no copy.
    const QString lock = environment.value(u"BRACKWEN_APPROVALS_LOCK_FILE"_s);
    environment.insert(u"BRACKWEN_APPROVALS_LOCK_FILE"_s, home.path());
    auto unlocked = startBram();
    EXPECT_EQ(unlocked->ends(), 1);
    EXPECT_TRUE(unlocked->errors().startsWith(u"bram: not started, "_s));
    EXPECT_TRUE(unlocked->errors().endsWith(home.path() + u": it is no regular file\n"_s));
    environment.insert(u"BRACKWEN_APPROVALS_LOCK_FILE"_s, lock);
    // Practice is no second copy: it has a world of its own.
    auto practice = startBram({u"--practice"_s});
    EXPECT_TRUE(practice->says(u"Practice mode"_s));
    practice->closeInput();
    EXPECT_EQ(practice->ends(), 0);
    ASSERT_TRUE(first->says(u"Request #1"_s));
    // However the first one ends, nothing is left that keeps the next one out.
    first->kill();
    auto next = startBram();
    EXPECT_TRUE(next->says(u"Request #1"_s));
}

TEST_F(Program, PracticeAsksAndLeavesTheHomeUntouched)
{
    environment.insert(u"TMPDIR"_s, home.path());
    auto bram = startBram({u"--practice-if-unconfigured"_s});
    ASSERT_TRUE(bram->says(u"No agent platform is configured here"_s));
    ASSERT_TRUE(bram->says(u"Request #1"_s));
    ASSERT_TRUE(bram->says(u"  | "_s));
    bram->send(u"allow-once 1"_s);
    ASSERT_TRUE(bram->says(u"#1 allowed once."_s));
    bram->send(u"quit"_s);
    EXPECT_EQ(bram->ends(), 0);
    EXPECT_TRUE(QDir(home.path()).isEmpty()) << qPrintable(
        QDir(home.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).join(u' '));
}

TEST_F(Program, AConfiguredPlatformIsConnectedToAndNotPractisedOn)
{
    auto gateway
        = startGateway(u"wait-client\nrequest aaa-1 main ls\n"_s, {u"--token"_s, u"file-token"_s});
    QDir(home.path()).mkpath(u".brackwen"_s);
    QFile config(home.filePath(u".brackwen/brackwen.json"_s));
    ASSERT_TRUE(config.open(QFile::WriteOnly));
    config.write(R"({"gateway":{"auth":{"token":" file-token\n"}}})");
    config.close();
    auto bram = startBram({u"--practice-if-unconfigured"_s});
    ASSERT_TRUE(bram->says(u"Request #1"_s));
    EXPECT_FALSE(bram->output().contains(u"ractice"_s));
    bram->send(u"status"_s);
    EXPECT_TRUE(bram->says(u"matches the configuration"_s));
}

TEST_F(Program, TroubleIsOneLineAndTheProgramGoesOn)
{
    // Nowhere to write: the decision is taken all the same.
    QFile blocker(home.filePath(u"data"_s));
    ASSERT_TRUE(blocker.open(QFile::WriteOnly));
    auto gateway = startGateway(u"wait-client\nraw nonsense\nwait-client\nwait 1500\n"
                                "request aaa-1 main ls\n"_s);
    auto bram = startBram();
    ASSERT_TRUE(bram->complains(u"disconnected reason=Gateway sent an invalid frame: "_s));
    ASSERT_TRUE(bram->complains(u"[Brackwen][Audit] append failed: "_s));
    bram->send(u"allow-onse 1"_s);
    bram->send(u"\x1b[2J"_s);
    ASSERT_TRUE(bram->says(u"Request #1"_s));
    bram->send(u"allow-once 1"_s);
    ASSERT_TRUE(gateway->says(u"decision aaa-1 allow-once accepted"_s));
    ASSERT_TRUE(bram->says(u"#1 allowed once."_s));
    EXPECT_FALSE(bram->output().contains(u'\x1b'));
    bram->closeInput();
    EXPECT_EQ(bram->ends(), 0);
}

TEST_F(Program, CommandLineFaultsAreOneLineWithStatusTwo)
{
    for (const char *word : {"--unknown", "stray", "--self-test-output"}) {
        auto bram = startBram({QString::fromUtf8(word)});
        EXPECT_EQ(bram->ends(), 2) << word;
        EXPECT_EQ(bram->errors().count(u'\n'), 1) << word;
        EXPECT_TRUE(bram->errors().startsWith(u"bram: "_s)) << word;
        EXPECT_EQ(bram->output(), QString()) << word;
    }
    auto version = startBram({u"--version"_s});
    EXPECT_EQ(version->ends(), 0);
    EXPECT_EQ(version->output(), u"bram 1.0.0\n"_s);
}
