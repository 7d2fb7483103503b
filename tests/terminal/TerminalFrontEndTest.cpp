// SPDX-License-Identifier: Apache-2.0
#include "ui/terminal/TerminalFrontEnd.h"
#include "FrontEndFixture.h"
#include "support/FullDisk.h"

using namespace bram;
using namespace bram::test;
using namespace Qt::StringLiterals;

namespace
{

using FrontEnd = FrontEndFixture;

} // namespace

TEST_F(FrontEnd, ADecisionGoesToTheGatewayAndItsEndIsSaidOnce)
{
    struct Row {
        const char *id;
        QString line;
        ApprovalDecision decision;
        QString answer;
    };
    const Row rows[] = {
        {"a-1", u"allow-once 1"_s, ApprovalDecision::AllowOnce, u"#1 allowed once.\n"_s},
        {"b-2", u"allow-always #2"_s, ApprovalDecision::AllowAlways, u"#2 allowed always.\n"_s},
        {"c-3", u"deny c"_s, ApprovalDecision::Deny, u"#3 denied.\n"_s},
    };
    for (const Row &row : rows) {
        announceAndSee(row.id, u"\nRequest #"_s, row.id);
        typeAndHear(row.line, row.answer);
        ASSERT_FALSE(received.isEmpty());
        EXPECT_EQ(received.last().approvalId, QString::fromUtf8(row.id));
        EXPECT_EQ(received.last().decision, row.decision);
    }
    typeAndHear(u"deny 3"_s, u"#3 is no longer pending."_s);
    EXPECT_EQ(received.size(), 3);

    announceAndSee("d-4", u"Request #4"_s);
    gateway.setDecisionBehaviour({DecisionFault::AnswerError, 0, u"database is locked"_s});
    typeAndHear(u"deny 4"_s, u"#4 not confirmed, it is still listed: database is locked\n"_s);
    gateway.setDecisionBehaviour({DecisionFault::AnswerError, 0, u"unknown approval id"_s});
    typeAndHear(u"deny 4"_s, u"#4 was already resolved elsewhere.\n"_s);
    const QString all = allSaid();
    EXPECT_FALSE(all.contains("Resolve failed"_L1) || all.contains("Approval already"_L1)
                 || all.contains("decided elsewhere"_L1) || all.contains("Not connected"_L1))
        << qPrintable(all);
    EXPECT_EQ(all.count("Gateway connected"_L1), 1);
}

TEST_F(FrontEnd, WhatWasTypedBeforeARequestAppearedNeverAnswersIt)
{
    announceAndSee("a-1", u"Request #1"_s);
    const DialogueMoment early = output.written();
    announceAndSee("b-2", u"Request #2"_s);
    input.typeBegunAt(early, u"allow-once 2"_s);
    EXPECT_TRUE(says(u"Not decided: #2 arrived after the line was begun"_s));
    input.typeBegunAt(early, u"allow-once b-2"_s);
    EXPECT_TRUE(says(u"Not decided: #2 arrived after the line was begun"_s));
    input.typeBegunAt(early, u"deny all"_s);
    EXPECT_TRUE(says(u"Left out, because they arrived after the line was begun: #2\n"_s));
    EXPECT_TRUE(says(u"#1 denied."_s));

    allSaid();
    // Typed, but not yet read when the request is announced.
    input.waiting = QStringList {u"allow-once 3"_s, u"allow-once c-3"_s, u"allow-once all"_s};
    announceAndSee("c-3", u"Request #3"_s);
    EXPECT_TRUE(says(u"Left out, because they arrived after the line was begun: #3\n"_s));
    EXPECT_TRUE(says(u"  1) Allow 1 once\n"_s)); // that one was there
    EXPECT_TRUE(says(u"its words.\n"_s));
    typeAndHear(u"1"_s, u"#2 allowed once."_s);

    // A request that changes under its id has not been seen either.
    ApprovalItem changed = item("c-3", "rm -rf /");
    simulate(changed);
    input.type(u"allow-once 3"_s);
    EXPECT_TRUE(says(u"Request #3 has CHANGED"_s));
    EXPECT_TRUE(says(u"  | rm -rf /\n"_s));
    EXPECT_TRUE(waitUntil([&] { return received.size() == 2; }));
    typeAndHear(u"deny 3"_s, u"#3 denied."_s);
    EXPECT_EQ(received.size(), 3);
    EXPECT_EQ(received.last().decision, ApprovalDecision::Deny);
}

TEST_F(FrontEnd, WhatIsAnnouncedIntoAFullOutputIsNotSeenAndStopsNothing)
{
    while (output.written() == output.given()) {
        output.write({{QString(4000, u'.'), LineStyle::Plain}});
    }
    request(item("a-1"));
    decide("a-1", ApprovalDecision::AllowOnce);
    ASSERT_TRUE(waitSettled(1)); // the core goes on
    request(item("b-2"));
    input.type(u"allow-once all"_s);
    input.type(u"allow-once b-2"_s);
    QCoreApplication::processEvents();
    EXPECT_TRUE(says(u"Left out, because they arrived after the line was begun: #2\n"_s));
    EXPECT_TRUE(says(u"Not decided: #2 arrived after the line was begun"_s));
    EXPECT_EQ(received.size(), 1);
    typeAndHear(u"allow-once all"_s, u"  1) Allow 1 once\n"_s);
    EXPECT_TRUE(says(u"its words.\n"_s));
    typeAndHear(u"1"_s, u"#2 allowed once."_s);
}

TEST_F(FrontEnd, AllIsAllowedOnlyWhenAgreedAndCanBeUndone)
{
    const QString howToAnswer = u"Answer with the number of a choice or its words.\n"_s;
    announceAndSee("a-1", u"Request #1"_s, "make");
    announceAndSee("b-2", u"Request #2"_s, "sudo reboot");
    typeAndHear(u"undo"_s, u"There is nothing to undo."_s);
    typeAndHear(u"allow-always all"_s,
                u"Always allow all pending requests?\n  Requests: 2\n  Of high risk: 1\n"
                "  1) Always allow 1\n  2) Always allow all 2, also of high risk\n  3) Cancel\n"_s);
    EXPECT_TRUE(says(howToAnswer));
    typeAndHear(u"allow-always all"_s, howToAnswer);
    input.type(u"cancel"_s);
    allSaid();
    EXPECT_TRUE(received.isEmpty());

    typeAndHear(u"allow-always all"_s, howToAnswer);
    typeAndHear(u"1"_s, u"#1 allowed always.\n"_s);
    EXPECT_TRUE(says(u"Added to the always-allow list: 1. `undo` takes that back.\n"_s));
    EXPECT_EQ(core->alwaysAllow().list().entries().size(), 1);
    typeAndHear(u"undo"_s, u"Taken out of the always-allow list again: 1.\n"_s);
    EXPECT_TRUE(core->alwaysAllow().list().entries().isEmpty());
    EXPECT_EQ(received.size(), 1);
    typeAndHear(u"deny all"_s, u"#2 denied.\n"_s);
}

TEST_F(FrontEnd, SettingsAreListedAndTakeEffectAtOnce)
{
    typeAndHear(u"setting allow-partly-shown on"_s, u"allow-partly-shown on\n"_s);
    EXPECT_TRUE(core->allowPartlyShown().isOn());
    typeAndHear(u"settings"_s, u"allow-partly-shown   on   offers allow also"_s);
    EXPECT_TRUE(says(u"unencrypted-gateway  off  allows"_s));
    typeAndHear(u"setting other on"_s,
                u"No setting has this name (`settings` lists them): other"_s);
}

TEST_F(FrontEnd, AGiantCommandIsAllowedOnlyOnceAllOfItWasShown)
{
    const QString refused = u"Not decided: #%1 had not been shown whole"_s;
    const QByteArray large(100'000, 'x');
    ApprovalItem reversed = item("a-1");
    reversed.command = QString(300'000, u'x') + QChar(0x202E) + u"\nthe end"_s;
    gateway.announce(reversed);
    EXPECT_TRUE(
        says(u"NOT SHOWN WHOLE: request #1 has 300009 characters in 2 line(s). `save 1 FILE`"_s));
    typeAndHear(u"show 1"_s, u"  | the end\n"_s);
    typeAndHear(u"allow-once 1"_s, refused.arg(1));
    announceAndSee("b-2", u"request #2 has 100000 characters in 1 line(s). `show 2` shows"_s,
                   large.constData());
    typeAndHear(u"allow-always all"_s,
                u"Left out, because they had not been shown whole: #1 #2\n"_s);
    EXPECT_TRUE(says(u"There is nothing to decide."_s));
    EXPECT_LT(allSaid().size(), 200'000);

    const QString file = folder.filePath(u"command.txt"_s);
    typeAndHear(u"save 1 "_s + file, u"Request #1 is written whole"_s);
    QFile written(file);
    ASSERT_TRUE(written.open(QFile::ReadOnly));
    EXPECT_TRUE(written.readAll().endsWith("x⟨U+202E⟩\nthe end\n"));
    typeAndHear(u"deny 1"_s, u"#1 denied."_s);
    typeAndHear(u"show 2"_s, QString::fromLatin1(large));
    typeAndHear(u"allow-once 2"_s, u"#2 allowed once."_s);

    announceAndSee("c-3", u"request #3 has"_s, large.constData());
    core->allowPartlyShown().setOn(true);
    typeAndHear(u"allow-once 3"_s, u"#3 allowed once."_s);

    // Requests that come while nobody reads are shown once somebody does.
    while (!output.isBehind()) {
        output.write({{QString(1'000'000, u'.'), LineStyle::Plain}});
    }
    simulate(item("d-4"));
    input.type(u"history"_s);
    QCoreApplication::processEvents();
    EXPECT_TRUE(says(u" lines were left out here, because they were not read in time"_s));
    EXPECT_TRUE(says(u"Request #4"_s));
    EXPECT_EQ(quits, 0);
}

TEST_F(FrontEnd, RequestsThatLeaveAreExplainedOnce)
{
    ApprovalItem expiring = item("a-1");
    expiring.expiresAtMs = clock.current + 60'000;
    gateway.announce(expiring);
    EXPECT_TRUE(says(u"Request #1  expires in 60 s"_s));
    clock.current += 60'000;
    typeAndHear(u"deny 1"_s, u"#1 had expired; nothing was sent."_s);

    announceAndSee("b-2", u"Request #2"_s);
    gateway.resolveElsewhere(u"b-2"_s);
    EXPECT_TRUE(says(u"#2 was decided elsewhere.\n"_s));
    typeAndHear(u"deny b-2"_s, u"#2 is no longer pending."_s);

    announceAndSee("c-3", u"Request #3"_s);
    announceAndSee("d-4", u"Request #4"_s);
    typeAndHear(u"clear-pending"_s, u"Forgotten here: 2. The gateway was not told.\n"_s);
    typeAndHear(u"deny all"_s, u"There is nothing to decide."_s);
    typeAndHear(u"list"_s, u"No requests are pending."_s);

    ApprovalItem leftAlone = item("e-5");
    leftAlone.expiresAtMs = clock.current + 20;
    gateway.announce(leftAlone);
    EXPECT_TRUE(says(u"Request #5"_s));
    clock.current += 20;
    EXPECT_TRUE(says(u"#5 has expired.\n"_s));
    EXPECT_EQ(allSaid().count("no longer pending"_L1), 1);
    EXPECT_EQ(allSaid().count("has expired"_L1), 1);
    EXPECT_TRUE(received.isEmpty());
}

TEST_F(FrontEnd, ABurstIsSummarisedAndWhatWasNotShownIsNotDecided)
{
    for (int i = 1; i <= 25; ++i) {
        simulate(item(qPrintable(u"burst-%1"_s.arg(i, 2, 10, QChar(u'0')))));
    }
    EXPECT_TRUE(says(u"Request #20"_s));
    EXPECT_TRUE(says(u"5 more requests; `list` shows them.\n"_s));
    typeAndHear(u"status"_s, u"Not shown yet: 5"_s);
    const QString notShown = board().displayItems().last().approvalId; // shown last
    typeAndHear(u"allow-once "_s + notShown, u"Not decided: that request has not been shown yet"_s);
    typeAndHear(u"deny all"_s,
                u"Left out, because they have not been shown: 5 (`list` shows them)"_s);
    ASSERT_TRUE(waitSettled(20)); // the gateway does not know them: they leave
    EXPECT_EQ(board().displayItems().size(), 5);
    typeAndHear(u"deny "_s + notShown, u"#21 was already resolved elsewhere."_s);
    typeAndHear(u"list"_s, u"#25  "_s);
    typeAndHear(u"deny all"_s, u"#25 "_s);
    ASSERT_TRUE(waitSettled(25));
    EXPECT_EQ(board().displayItems().size(), 0);
}

TEST_F(FrontEnd, CommandsAnswerAndWrongOnesChangeNothing)
{
    announceAndSee("a-1", u"Request #1"_s);
    announceAndSee("a-2", u"Request #2"_s);
    const QList<ApprovalItem> before = board().displayItems();
    const std::pair<QString, QString> rows[] = {
        {u"deny a"_s, u"More than one request could be meant by: a\n"_s},
        {u"deny 9"_s, u"No pending request is meant by: 9\n"_s},
        {u"\x1b[2Jx"_s, u"Unknown command: ⟨U+001B⟩[2Jx (try `help`)\n"_s},
        {u"show \x1b"_s, u"No pending request is meant by: ⟨U+001B⟩\n"_s},
        {u"show a-2"_s, u"Request #2\n  agent: main\n  id: a-2\n  | ls -la\n"_s},
        {u"list"_s, u"#1  id: a-1  agent: main\n  | ls -la\n#2  id: a-2"_s},
        {u"history"_s, u"Nothing has happened yet.\n"_s},
        {u"activity"_s, u"Nothing has happened yet."_s},
        {u"metrics"_s, u"Requests seen: 2\n"_s},
        {u"status"_s, u"Gateway: Gateway connected\n"_s},
        {u"help"_s, u"quit                    end the program"_s},
        {u"reload-token"_s, u"token reload failed"_s},
        {u"reload-token"_s, u"token reload failed"_s}, // an answer each time
        {u"reconnect"_s, u"Reconnecting to the gateway.\n"_s},
        {u""_s, u"Gateway connected\n"_s},
    };
    for (const auto &[line, answer] : rows) {
        typeAndHear(line, answer);
    }
    EXPECT_EQ(board().displayItems(), before);
    EXPECT_TRUE(received.isEmpty());
}

TEST_F(FrontEnd, AGatewayThatStaysAwayIsSaidOnce)
{
    const auto attempts = [this] { return log.lines().count(u"[Brackwen] state connecting"_s); };
    gateway.close();
    ASSERT_TRUE(waitUntil([&] { return attempts() == 4; }, 30'000));
    ASSERT_TRUE(gateway.listen());
    ASSERT_TRUE(waitUntil([&] { return gateway.clientCount() == 1; }, 30'000));
    EXPECT_TRUE(says(u"Gateway connected\n"_s));
    const QString all = allSaid();
    EXPECT_EQ(all.count("Connecting to gateway"_L1), 2) << qPrintable(all);
    EXPECT_EQ(all.count("Gateway disconnected: Gateway connection lost"_L1), 1) << qPrintable(all);
    EXPECT_EQ(all.count("Gateway disconnected: Connection refused"_L1), 1) << qPrintable(all);
    EXPECT_EQ(all.count("Gateway disconnected"_L1), 2) << qPrintable(all);
}

TEST_F(FrontEnd, ALogThatCannotBeWrittenIsSaidAndSoIsItsEnd)
{
    {
        const FullDisk full;
        request(item("r1"));
        EXPECT_TRUE(says(u"The audit log cannot be written"_s));
        input.type(u"status"_s);
        EXPECT_TRUE(says(u"Pending requests: 1\nThe audit log cannot be written"_s));
    }
    EXPECT_TRUE(says(u"The audit log is written again. Events missing from it: 1."_s));
}

TEST_F(FrontEnd, EndsOnceAndTakesNothingAfterwards)
{
    announceAndSee("a-1", u"Request #1"_s);
    input.type(u"quit"_s);
    input.type(u"allow-once 1"_s);
    input.end();
    EXPECT_TRUE(waitUntil([&] { return quits > 0; }));
    pipe.closeOuter();
    output.write({{u"x"_s, LineStyle::Plain}});
    QCoreApplication::processEvents();
    EXPECT_EQ(quits, 1);
    EXPECT_TRUE(received.isEmpty());
}

TEST_F(FrontEnd, AClosedOutputAsksToQuit)
{
    pipe.closeOuter();
    request(item("a-1"));
    EXPECT_TRUE(waitUntil([&] { return quits == 1; }));
}

TEST_F(FrontEnd, TakesATokenThatIsSeenNowhere)
{
    const QString token = u"123456789:Token-in-the-test_which-is-42"_s;
    typeAndHear(u"telegram token set"_s, u"Type the bot token; it is not shown."_s);
    typeAndHear(u"list"_s, u"This is no bot token"_s);
    typeAndHear(u"telegram token set"_s, u"Type the bot token"_s);
    typeAndHear(QString(), u"Nothing was stored."_s);
    input.type(u"telegram token set"_s); // as from a pipe: both lines at once
    typeAndHear(token, u"The bot token is in the keyring and in use."_s);
    typeAndHear(u"telegram token source"_s, u"Bot token: from the keyring\n"_s);
    typeAndHear(u"telegram status"_s, u"Telegram: off, no chat is configured\n"_s);
    typeAndHear(u"telegram token source environment"_s, u"The environment has no bot token.\n"_s);
    typeAndHear(u"telegram token clear"_s, u"The keyring holds no bot token any more.\n"_s);
    typeAndHear(u"status"_s, u"Telegram: off, there is no bot token\n"_s);
    EXPECT_FALSE(allSaid().contains(token.section(u':', 1)));
    EXPECT_FALSE(log.lines().join(u'\n').contains(token.section(u':', 1)));
}

TEST_F(FrontEnd, IsThePhoneInPractice)
{
    typeAndHear(u"chat"_s,
                u"bot | pending (1)\nbot | 1. ls\n    1) [Allow]\nyou | hello\n    2) "
                "[/approve]\n"_s);
    typeAndHear(u"chat press 3"_s, u"The chat has no button 3"_s);
    input.type(u"chat press 1"_s);
    input.type(u"chat say hi  there"_s);
    EXPECT_TRUE(waitUntil([&] { return chat.said == QStringList {u"hi  there"_s}; }));
    EXPECT_EQ(chat.pressed, (QList<int> {3, 1}));
}
