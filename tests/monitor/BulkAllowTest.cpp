// SPDX-License-Identifier: Apache-2.0
#include "monitor/BulkAllow.h"
#include "monitor/MonitorFixture.h"
#include "support/ScriptedPrompts.h"


using namespace bram;
using namespace bram::test;
using namespace Qt::StringLiterals;

namespace
{

class BulkAllowTest : public MonitorFixture
{
protected:
    BulkAllowTest() { makeConnectedCore(); }

    void requestThree()
    {
        request(item("plain", "make"));
        request(item("marked", "ls \u202eabc"));
        request(item("risky", "sudo reboot"));
    }
    void allowAll(const QList<ApprovalItem> &items, ApprovalDecision decision)
    {
        core->tasks().spawn(core->bulkAllow().allow(prompts, items, decision), u"bulk"_s);
        QCoreApplication::processEvents();
    }
    QStringList allowed() const
    {
        QStringList ids;
        for (const auto &decision : received) {
            ids.append(decision.approvalId);
        }
        ids.sort();
        return ids;
    }

    ScriptedPrompts prompts;
};

} // namespace

TEST_F(BulkAllowTest, AsksWhatTheyAreAndLeavesHighRiskOut)
{
    requestThree();
    core->bulkAllow().markRead(*board().find(u"plain"_s));
    allowAll(board().displayItems(), ApprovalDecision::AllowOnce);
    ASSERT_EQ(prompts.questions.size(), 1);
    const Question asked = prompts.questions.constFirst();
    EXPECT_EQ(asked.text,
              u"Requests: 3\nOf high risk: 1\nWith misleading characters: 1\n"
              "Not yet shown whole in the popup or a window: 2"_s);
    EXPECT_EQ(
        asked.buttons,
        QStringList({u"Allow 2 once"_s, u"Allow all 3 once, also of high risk"_s, u"Cancel"_s}));
    EXPECT_EQ(asked.harmless, 2);
    EXPECT_EQ(asked.needsTick, 1);
    EXPECT_TRUE(monitor().decisions().isIdle()) << "who turns away has allowed nothing";

    // What is read again is another command.
    request(item("plain", "make all"));
    ASSERT_TRUE(waitUntil([&] { return board().find(u"plain"_s)->command == u"make all"_s; }));
    prompts.answers = {0};
    allowAll(board().displayItems(), ApprovalDecision::AllowOnce);
    EXPECT_TRUE(prompts.questions.constLast().text.endsWith(u": 3"_s));
    ASSERT_TRUE(waitSettled(2));
    EXPECT_EQ(allowed(), QStringList({u"marked"_s, u"plain"_s}));

    prompts.answers = {0};
    allowAll(board().displayItems(), ApprovalDecision::AllowAlways);
    EXPECT_EQ(prompts.questions.constLast().buttons.constFirst(),
              u"Always allow all 1, also of high risk"_s);
    EXPECT_EQ(prompts.questions.constLast().needsTick, 0);
    ASSERT_TRUE(waitSettled(3));
    EXPECT_EQ(allowed().size(), 3);
}

TEST_F(BulkAllowTest, AllowsOnlyWhatWasAskedAbout)
{
    request(item("changed", "make"));
    ApprovalItem before = *board().find(u"changed"_s);
    before.command = u"make all"_s;
    request(item("other", "ls"));
    prompts.answers = {0};
    allowAll({before, item("gone", "ls")}, ApprovalDecision::AllowOnce);
    EXPECT_EQ(prompts.questions.size(), 1);
    EXPECT_TRUE(monitor().decisions().isIdle());
}

TEST_F(BulkAllowTest, WhatItHasAddedCanBeTakenBackAndNothingElse)
{
    const auto &list = core->alwaysAllow().list();
    request(item("before", "git push"));
    decide("before", ApprovalDecision::AllowAlways);
    request(item("quoted", "rm 'a b'"));
    decide("quoted", ApprovalDecision::AllowAlways);
    ASSERT_TRUE(waitSettled(2));
    QStringList added;
    QObject::connect(&core->bulkAllow(), &BulkAllow::commandsAdded, &core->bulkAllow(),
                     [&](const QStringList &commands) { added = commands; });
    for (const char *command : {"make", "git push origin", "rm 'a  b'", "ls"}) {
        request(item(command, command));
    }
    gateway.resolveElsewhere(u"ls"_s);
    ASSERT_TRUE(waitUntil([&] { return board().find(u"ls"_s) == nullptr; }));
    prompts.answers = {0};
    allowAll(board().displayItems(), ApprovalDecision::AllowAlways);
    ASSERT_TRUE(waitUntil([&] { return added.size() == 3; }));
    EXPECT_TRUE(list.isRemembered(u"rm 'a  b'"_s));

    EXPECT_EQ(core->bulkAllow().takeBack(added), 3);
    for (const char *command : {"make", "git push origin", "rm 'a  b'"}) {
        EXPECT_FALSE(list.isRemembered(QString::fromUtf8(command))) << command;
    }
    EXPECT_TRUE(list.isRemembered(u"git push"_s));
    EXPECT_TRUE(list.isRemembered(u"rm 'a b'"_s)) << "it shares a digest with one that was added";
    EXPECT_EQ(core->bulkAllow().takeBack(added), 0);
}
