// SPDX-License-Identifier: Apache-2.0
#include "monitor/AlwaysAllowFixture.h"
#include "monitor/AlwaysAllowInquiry.h"

#include <QFileInfo>

using namespace bram;
using namespace bram::test;
using namespace Qt::StringLiterals;
using testing::ElementsAre;
using Target = AlwaysAllowOperations::Target;

TEST_F(AlwaysAllowTest, AnAutomaticAnswerIsOnRecordAsOne)
{
    makeCoreWithLists();
    gateway.announce(item("auto", " git \t push "));
    ASSERT_TRUE(waitSettled(3));
    EXPECT_EQ(received.last().approvalId, u"auto"_s);
    EXPECT_EQ(received.last().decision, ApprovalDecision::AllowOnce);
    EXPECT_EQ(board().history().first().state, ApprovalHistoryState::AllowOnce);
    EXPECT_EQ(board().history().first().maker, DecisionMaker::AlwaysAllowList);
    EXPECT_EQ(board().history().last().maker, DecisionMaker::Person);
    EXPECT_EQ(latest(),
              std::tuple(ActivityActor::App, ActivityAction::AllowOnce, u"git … [auto-allow]"_s));
    const auto records = core->audit().records(0);
    ASSERT_GE(records.size(), 3);
    EXPECT_EQ(records.at(records.size() - 2).note, u"auto-allow"_s);
    EXPECT_EQ(records.last().note,
              u"decisionSource=app-local actor=app-user auto-allow entry="_s
                  + entry(u"git push"_s).digest.first(16));
    EXPECT_FALSE(log.lines().filter(u"reason=resolved.gateway.allow-once"_s).isEmpty());
}

TEST_F(AlwaysAllowTest, WhatIsKnownOfAnEntry)
{
    makeCoreWithLists();
    const qint64 startedMs = clock.current;
    clock.current += 60'000;
    const qint64 answeredMs = clock.current;
    gateway.announce(item("auto", "git push"));
    ASSERT_TRUE(waitSettled(3));
    AlwaysAllowInquiry inquiry({.list = operations().list(),
                                .board = board(),
                                .audit = core->audit(),
                                .tasks = core->tasks(),
                                .clock = clock,
                                .log = log});
    const auto ask = [&](const QString &command) {
        inquiry.ask(entry(command).digest);
        EXPECT_TRUE(waitUntil([&] { return inquiry.facts().isLogRead && inquiry.facts().places; }));
        return inquiry.facts();
    };
    const auto pushed = ask(u"git push"_s);
    EXPECT_EQ(pushed.places, QList<ExecApprovalsPlace>({{platformFile, u"main"_s}}));
    EXPECT_EQ(pushed.lastAnswerMs, answeredMs);
    EXPECT_EQ(pushed.logSinceMs, startedMs);
    EXPECT_EQ(ask(u"own one"_s).places, QList<ExecApprovalsPlace>());
    EXPECT_EQ(inquiry.facts().lastAnswerMs, std::nullopt);

    clock.current += 1000;
    gateway.announce(item("again", "git push"));
    ASSERT_TRUE(waitSettled(4));
    EXPECT_EQ(ask(u"git push"_s).lastAnswerMs, answeredMs + 1000) << "since the log was read";
    monitor().clearHistory();
    EXPECT_EQ(inquiry.facts().lastAnswerMs, answeredMs);
}

TEST_F(AlwaysAllowTest, ALineBreakIsAskedSaysWhyAndCanBeAllowedAlways)
{
    makeCoreWithLists();
    request(item("broken", "git\npush"));
    EXPECT_EQ(board().askReason(u"broken"_s), AskReason::NotExact);
    request(item("other", "something else"));
    EXPECT_EQ(board().askReason(u"other"_s), AskReason::Usual);
    decide("broken", ApprovalDecision::AllowAlways);
    ASSERT_TRUE(waitSettled(3));
    ASSERT_TRUE(waitUntil([this] { return board().askReason(u"broken"_s) == AskReason::Usual; }));
    EXPECT_EQ(board().history().last().maker, DecisionMaker::Person);
    gateway.announce(item("twin", "git\npush"));
    ASSERT_TRUE(waitSettled(4));
    EXPECT_EQ(board().history().first().maker, DecisionMaker::AlwaysAllowList);
}

TEST_F(AlwaysAllowTest, AnAutomaticAnswerThatFailsBecomesAQuestion)
{
    makeCoreWithLists();
    gateway.setDecisionBehaviour({DecisionFault::AnswerError, 0, u"database is locked"_s});
    gateway.announce(item("late", "git push"));
    ASSERT_TRUE(waitSettled(3));
    EXPECT_EQ(settled.last().outcome.kind, DecisionOutcome::Kind::Failed);
    ASSERT_NE(board().find(u"late"_s), nullptr);
    EXPECT_EQ(board().askReason(u"late"_s), AskReason::AutomaticAnswerFailed);
    const auto record = core->audit().records(0).last();
    EXPECT_EQ(record.kind, AuditKind::approvalResolveFailed);
    EXPECT_TRUE(record.note->endsWith(u" auto-allow"_s)) << qPrintable(*record.note);
    gateway.setDecisionBehaviour({});
    decide("late", ApprovalDecision::AllowOnce);
    ASSERT_TRUE(waitSettled(4));
    EXPECT_EQ(board().history().first().maker, DecisionMaker::Person);
    EXPECT_TRUE(board().items().isEmpty());
}

TEST_F(AlwaysAllowTest, RemovesFromTheListThatWasChosen)
{
    makeCoreWithLists();
    EXPECT_FALSE(test::waitFor(
        operations().promptAndRemoveAlwaysAllowEntry(prompts, {entry(u"git push"_s)})));
    EXPECT_EQ(lastQuestion(),
              u"Remove always-allow entry|Choose which list to remove from.|Delete from app list "
              "only/Delete from Brackwen list only/Delete from both app and Brackwen/Cancel"_s);
    EXPECT_EQ(prompts.questions.last().notes, QStringList {u"git push"_s});
    EXPECT_EQ(operations().list().entries().size(), 3);
    test::waitFor(operations().promptAndRemoveAlwaysAllowEntry(prompts, {entry(u"apt list"_s)}));
    EXPECT_EQ(prompts.questions.last().notes.size(), 2) << "it is not in the own list yet";

    prompts.answers = {1};
    test::waitFor(operations().promptAndRemoveAlwaysAllowEntry(prompts, {entry(u"own one"_s)}));
    EXPECT_EQ(
        lastAlert(),
        u"Notice|This entry is not registered in Brackwen. It will be kept in the app list."_s);
    EXPECT_TRUE(has(u"own one"_s));
    EXPECT_EQ(latest(), std::tuple(ActivityActor::App, ActivityAction::AddToAppList, u"own …"_s));

    prompts.answers = {1};
    EXPECT_TRUE(test::waitFor(
        operations().promptAndRemoveAlwaysAllowEntry(prompts, {entry(u"apt list"_s)})));
    EXPECT_EQ(entry(u"apt list"_s).source, AlwaysAllowSource::LocalOnly);
    EXPECT_EQ(latest(),
              std::tuple(ActivityActor::Brackwen, ActivityAction::RemoveFromBrackwen, u"apt …"_s));
    EXPECT_TRUE(test::waitFor(operations().remove(prompts, {entry(u"apt list"_s)}, Target::App)));
    EXPECT_EQ(latest(),
              std::tuple(ActivityActor::App, ActivityAction::RemoveFromAppList, u"apt …"_s));
    prompts.answers = {2};
    EXPECT_TRUE(test::waitFor(
        operations().promptAndRemoveAlwaysAllowEntry(prompts, {entry(u"git push"_s)})));
    EXPECT_EQ(
        latest(),
        std::tuple(ActivityActor::AppAndBrackwen, ActivityAction::RemoveFromBoth, u"git …"_s));
    EXPECT_FALSE(platform().contains("git push"));
    EXPECT_EQ(operations().list().entries().size(), 1);
}

TEST_F(AlwaysAllowTest, SeveralEntriesAreOneQuestionAndOneRow)
{
    makeCoreWithLists();
    const QList<AlwaysAllowEntry> chosen {entry(u"git push"_s), entry(u"own one"_s),
                                          entry(u"apt list"_s)};
    EXPECT_FALSE(test::waitFor(operations().promptAndAdd(prompts, chosen)));
    EXPECT_EQ(
        lastQuestion(),
        u"Confirm registration|Add the 3 selected entries to the app list?|Register/Cancel"_s);
    EXPECT_EQ(entry(u"apt list"_s).source, AlwaysAllowSource::BrackwenOnly);
    prompts.answers = {0};
    EXPECT_TRUE(test::waitFor(operations().promptAndAdd(prompts, chosen)));
    EXPECT_EQ(entry(u"apt list"_s).source, AlwaysAllowSource::Both);
    EXPECT_EQ(latest(), std::tuple(ActivityActor::App, ActivityAction::AddToAppList, u"count=3"_s));

    prompts.answers = {1};
    EXPECT_TRUE(test::waitFor(operations().promptAndRemoveAlwaysAllowEntry(prompts, chosen)));
    EXPECT_TRUE(lastQuestion().startsWith(u"Remove 3 always-allow entries|"_s));
    EXPECT_EQ(lastAlert(),
              u"Notice|1 of these entries are not registered in Brackwen. They will be kept in the "
              "app list."_s);
    EXPECT_FALSE(platform().contains("apt list") || platform().contains("git push"));
    EXPECT_EQ(operations().list().entries().size(), 3);

    platformAllows(R"("git push","stays here")");
    ASSERT_TRUE(waitUntil([this] { return has(u"stays here"_s); }));
    prompts.answers = {2};
    // As they were when they were chosen: what is known of them since counts.
    EXPECT_TRUE(test::waitFor(operations().promptAndRemoveAlwaysAllowEntry(prompts, chosen)));
    EXPECT_EQ(operations().list().entries(), QList {entry(u"stays here"_s)});
    EXPECT_FALSE(platform().contains("git push"));
    EXPECT_EQ(
        latest(),
        std::tuple(ActivityActor::AppAndBrackwen, ActivityAction::RemoveFromBoth, u"count=3"_s));
    prompts.answers = {2};
    EXPECT_FALSE(test::waitFor(operations().promptAndRemoveAlwaysAllowEntry(prompts, chosen)))
        << "all are gone";
}

TEST_F(AlwaysAllowTest, ReloadsWithABackupBeforeIt)
{
    makeCoreWithLists();
    prompts.answers = {1};
    test::waitFor(operations().promptAndReloadAlwaysAllowEntries(prompts));
    EXPECT_EQ(
        latest(),
        std::tuple(ActivityActor::App, ActivityAction::RefreshAlwaysAllowList, u"app-only"_s));
    EXPECT_EQ(operations().list().entries().size(), 2);
    EXPECT_EQ(entry(u"git push"_s).source, AlwaysAllowSource::Both);
    clock.current += 5000;
    prompts.answers = {0};
    test::waitFor(operations().promptAndReloadAlwaysAllowEntries(prompts));
    EXPECT_EQ(latest(),
              std::tuple(ActivityActor::AppAndBrackwen, ActivityAction::RefreshAlwaysAllowList,
                         u"include-registered"_s));
    EXPECT_EQ(operations().list().entries().size(), 3);
    const QDir backups(folder.filePath(u".brackwen/approvals-menu-backups"_s));
    ASSERT_EQ(backups.entryList(QDir::Files).size(), 1);
    QFile backup(backups.filePath(backups.entryList(QDir::Files).constFirst()));
    ASSERT_TRUE(backup.open(QFile::ReadOnly));
    const QByteArray text = backup.readAll();
    EXPECT_TRUE(text.startsWith("Always allow list auto-backup\nGeneratedAt: "));
    EXPECT_TRUE(text.contains("Command: apt list")) << "also what was not shown";
    const auto rows = board().activity().size();
    test::waitFor(operations().promptAndReloadAlwaysAllowEntries(prompts));
    EXPECT_EQ(board().activity().size(), rows) << "cancelled";

    QDir(backups).removeRecursively();
    QFile obstacle(backups.path());
    ASSERT_TRUE(obstacle.open(QFile::WriteOnly));
    test::waitFor(operations().reload(prompts, AlwaysAllowScope::IncludeRegistered));
    EXPECT_TRUE(lastAlert().contains(u"Auto backup failed: "_s));
    EXPECT_EQ(log.lines().filter(u"[Brackwen] Auto backup failed: "_s).size(), 1);
    EXPECT_EQ(operations().list().entries().size(), 3);
}

TEST_F(AlwaysAllowTest, ClearsThePlatformsListOnlyAfterAConfirmation)
{
    makeCoreWithLists();
    for (const qsizetype choice : {1, 2}) {
        prompts.answers = {choice, 1};
        EXPECT_FALSE(test::waitFor(operations().promptAndClearAlwaysAllowEntries(prompts)));
        EXPECT_TRUE(lastQuestion().startsWith(
            u"Confirmation|All Brackwen registered always-allow entries will also be deleted."_s));
        EXPECT_EQ(operations().list().entries().size(), 3);
    }
    prompts.answers = {1, 0};
    EXPECT_TRUE(test::waitFor(operations().promptAndClearAlwaysAllowEntries(prompts)));
    EXPECT_EQ(latest(),
              std::tuple(ActivityActor::Brackwen, ActivityAction::ClearBrackwenList, u"count=2"_s))
        << "of which one is kept in the app's list";
    EXPECT_FALSE(has(u"apt list"_s));
    EXPECT_TRUE(has(u"git push"_s));
    prompts.answers = {0};
    EXPECT_TRUE(test::waitFor(operations().promptAndClearAlwaysAllowEntries(prompts)));
    EXPECT_EQ(latest(), std::tuple(ActivityActor::App, ActivityAction::ClearAppList, u"count=2"_s));
    EXPECT_TRUE(operations().list().entries().isEmpty());
}

TEST_F(AlwaysAllowTest, RegistersWhatIsACommandAndAddsAllThatIsShown)
{
    makeCoreWithLists();
    test::waitFor(operations().remove(prompts, {entry(u"apt list"_s)}, Target::Both));
    platformAllows("");
    ASSERT_TRUE(
        waitUntil([this] { return entry(u"git push"_s).source == AlwaysAllowSource::LocalOnly; }));
    test::waitFor(operations().registerCurrentAlwaysAllowEntriesToBrackwen(prompts));
    EXPECT_TRUE(lastAlert().startsWith(u"No commands to register|"_s))
        << "the own list holds previews only";

    platformAllows(R"("apt list","ls")");
    ASSERT_TRUE(waitUntil([this] { return has(u"apt list"_s) && has(u"ls"_s); }));
    prompts.answers = {0};
    EXPECT_TRUE(
        test::waitFor(operations().addAllToAppList(prompts, operations().list().entries())));
    EXPECT_EQ(entry(u"apt list"_s).source, AlwaysAllowSource::Both);
    EXPECT_EQ(std::get<1>(latest()), ActivityAction::AddAllToAppList);
    EXPECT_TRUE(lastAlert().endsWith(u"|All visible entries were added to the app list."_s));

    platformAllows("");
    ASSERT_TRUE(
        waitUntil([this] { return entry(u"apt list"_s).source == AlwaysAllowSource::LocalOnly; }));
    for (const auto &[changed, text] :
         {std::pair(true,
                    u"Registration completed|Commands from the current list were added to "
                    "Brackwen always-allow lists."_s),
          std::pair(false,
                    u"Registration completed|No new items were added because they were "
                    "already registered."_s)}) {
        prompts.answers = {0};
        EXPECT_EQ(test::waitFor(operations().registerCurrentAlwaysAllowEntriesToBrackwen(prompts)),
                  changed);
        EXPECT_EQ(lastAlert(), text);
        EXPECT_EQ(latest(),
                  std::tuple(ActivityActor::Brackwen, ActivityAction::RegisterAlwaysAllowToBrackwen,
                             u"count=1"_s));
    }
    EXPECT_TRUE(platform().contains("apt list"));
}

TEST_F(AlwaysAllowTest, BacksUpAndRestores)
{
    makeCoreWithLists();
    EXPECT_FALSE(test::waitFor(operations().backupAlwaysAllowEntries(prompts)));
    const QString path = folder.filePath(u"backup.txt"_s);
    prompts.files = {path, path};
    EXPECT_TRUE(test::waitFor(operations().backupAlwaysAllowEntries(prompts)));
    EXPECT_EQ(QFileInfo(path).permissions() & QFileDevice::Permissions(0x0fff),
              QFileDevice::ReadUser | QFileDevice::WriteUser);
    EXPECT_EQ(std::get<1>(latest()), ActivityAction::BackupAlwaysAllowList);

    prompts.answers = {0};
    test::waitFor(operations().clear(prompts, Target::Both));
    ASSERT_TRUE(operations().list().entries().isEmpty());
    QFile file(path);
    ASSERT_TRUE(file.open(QFile::Append));
    file.write("\nID: NOT-A-DIGEST\nCommand: rm x y\n");
    file.close();
    prompts.answers = {0};
    EXPECT_TRUE(test::waitFor(operations().restoreAlwaysAllowEntriesFromBackup(prompts)));
    EXPECT_TRUE(lastQuestion().contains(u"Entries restored to the app list: 3. Refused "
                                        "because their ID is not 64 lower-case "
                                        "hexadecimal digits: 1."_s))
        << qPrintable(lastQuestion());
    EXPECT_EQ(latest(),
              std::tuple(ActivityActor::App, ActivityAction::RestoreAlwaysAllowList,
                         u"restored-count=3"_s));
    EXPECT_EQ(entry(u"git push"_s).source, AlwaysAllowSource::Both);
    EXPECT_EQ(entry(u"own one"_s).source, AlwaysAllowSource::LocalOnly);
    EXPECT_FALSE(platform().contains("rm x"));

    ASSERT_TRUE(file.open(QFile::Append));
    file.write("\nID: " + QByteArray(64, 'b') + "\nCommand: ls -la\n");
    file.close();
    EXPECT_TRUE(test::waitFor(operations().restoreFrom(prompts, path)));
    EXPECT_TRUE(lastQuestion().contains(
        u"CAUTION: 1 of them show another command than the one that they allow: bbbbbbbbbbbb|"_s))
        << qPrintable(lastQuestion());
    ASSERT_TRUE(file.open(QFile::WriteOnly));
    file.write("ID: NOT-A-DIGEST\nCommand: rm x y\n");
    file.close();
    EXPECT_FALSE(test::waitFor(operations().restoreFrom(prompts, path)));
    EXPECT_TRUE(lastAlert().contains(u"No valid entries were found in the backup.\nRefused"_s));

    for (const QString &bad : {folder.path(), folder.filePath(u"absent"_s)}) {
        EXPECT_FALSE(test::waitFor(operations().restoreFrom(prompts, bad)));
        EXPECT_TRUE(lastAlert().contains(u"|No valid entries were found in the backup.\ncannot"_s))
            << qPrintable(lastAlert());
        EXPECT_TRUE(lastAlert().contains(bad));
    }
    EXPECT_FALSE(test::waitFor(operations().backupTo(prompts, folder.path())));
    EXPECT_TRUE(lastAlert().contains(u"failed: "_s));
}
