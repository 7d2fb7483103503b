// SPDX-License-Identifier: Apache-2.0
#include "monitor/RemoteDecisions.h"
#include "gateway/GatewayStatus.h"
#include "monitor/TelegramFixture.h"
#include "monitor/TelegramMirror.h"

using namespace bram;
using namespace bram::test;
using namespace Qt::StringLiterals;

namespace
{
class RemoteDecision : public TelegramFixture
{
protected:
    TelegramDecision decision(const QString &approvalId) const
    {
        return {.approvalId = approvalId,
                .decision = ApprovalDecision::AllowOnce,
                .chatId = chat,
                .source = DecisionInputSource::CommandMessage,
                .sender = u"Mina (@mina, id 77)"_s,
                .shown = ShownInChat::Whole};
    }
};
} // namespace

TEST_F(RemoteDecision, EveryCheckRefusesAndSaysSoInItsOrder)
{
    writeConfiguration(
        QJsonDocument::fromJson(R"({"agents": {"main": {}, "other": {}}})").object());
    makeConnectedCore();
    TelegramMirror mirror(core->agents());
    RemoteDecisions decisions({.board = board(),
                               .decisions = monitor().decisions(),
                               .status = core->status(),
                               .agents = core->agents(),
                               .mirror = mirror,
                               .log = log});
    ApprovalItem nobodys = item("nobodys");
    nobodys.agentId.reset();
    ApprovalItem others = item("others");
    others.agentId = u"other\u202E"_s;
    request(item("mains"));
    request(nobodys);
    request(others);

    request(item("second"));

    using Decision = ApprovalDecision;
    const QSet<QString> toMain {u"main"_s};
    const struct {
        bool isLocked;
        QString selected;
        QString approvalId;
        QSet<QString> bound;
        QString logged; ///< between "[Brackwen][Telegram] decision " and the sender; empty: nothing
        RemoteVerdict verdict = RemoteVerdict::NotPending;
        ApprovalDecision decision = ApprovalDecision::AllowOnce;
        ShownInChat shown = ShownInChat::Whole;
        bool offersPartlyShown = false;
    } rows[] {
        {true,
         u"main"_s,
         u"unknown"_s,
         {},
         u"blocked by remote lock chat=501 reason=revoked"_s,
         RemoteVerdict::Locked},
        {false, u"main"_s, u"unknown"_s, {}, {}},
        {false, u"other"_s, u"mains"_s, {}, u"denied: unbound chat chat=501"_s},
        {false, u"other"_s, u"mains"_s, toMain,
         u"denied: selected agent mismatch chat=501 pendingAgent=main selected=other"_s},
        {false, u"main"_s, u"nobodys"_s, toMain,
         u"denied: selected agent mismatch chat=501 pendingAgent=nil selected=main"_s},
        {false, everyAgent, u"nobodys"_s, toMain,
         u"denied: agent not bound chat=501 pendingAgent=nil"_s},
        {false, everyAgent, u"others"_s, toMain,
         u"denied: agent not bound chat=501 pendingAgent=other⟨U+202E⟩"_s},
        {false, u"main"_s, u"mains"_s, toMain, u"denied: older than the request chat=501"_s,
         RemoteVerdict::OlderThanRequest, Decision::Deny, ShownInChat::Nothing},
        {false, u"main"_s, u"mains"_s, toMain, u"denied: older than the request chat=501"_s,
         RemoteVerdict::OlderThanRequest, Decision::AllowOnce, ShownInChat::Nothing, true},
        {false, u"main"_s, u"mains"_s, toMain, u"denied: command not shown whole chat=501"_s,
         RemoteVerdict::NotShownWhole, Decision::AllowOnce, ShownInChat::Part},
        {false, u"main"_s, u"mains"_s, toMain, u"denied: command not shown whole chat=501"_s,
         RemoteVerdict::NotShownWhole, Decision::AllowAlways, ShownInChat::Part},
        {false,
         u"main"_s,
         u"mains"_s,
         toMain,
         {},
         RemoteVerdict::Started,
         Decision::Deny,
         ShownInChat::Part},
        {false,
         u"main"_s,
         u"second"_s,
         toMain,
         {},
         RemoteVerdict::Started,
         Decision::AllowOnce,
         ShownInChat::Part,
         true},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(qPrintable(row.approvalId + u' ' + row.logged));
        row.isLocked ? core->status().lockRemoteApproval(u"revoked"_s)
                     : core->status().unlockRemoteApproval();
        core->agents().setSelectedAgent(row.selected);
        const qsizetype before = log.lines().size();
        TelegramBotConfig config;
        config.chatAgentMap.insert(chat, row.bound);
        config.offersPartlyShown = row.offersPartlyShown;
        TelegramDecision taken = decision(row.approvalId);
        taken.decision = row.decision;
        taken.shown = row.shown;
        EXPECT_EQ(decisions.decide(taken, config), row.verdict);
        const QStringList logged = log.lines().mid(before).filter(u"[Telegram] decision"_s);
        EXPECT_EQ(logged,
                  row.logged.isEmpty()
                      ? QStringList()
                      : QStringList {u"[Brackwen][Telegram] decision "_s + row.logged
                                     + u" sender=Mina (@mina, id 77)"_s});
    }

    TelegramBotConfig config;
    config.chatAgentMap.insert(chat, toMain);
    EXPECT_EQ(decisions.decide(decision(u"mains"_s), config), RemoteVerdict::NotPending)
        << "one is under way";
    ASSERT_TRUE(waitSettled(3));
    EXPECT_EQ(received.size(), 2);
    const auto records = core->audit().records(0);
    for (const auto &kind : {AuditKind::approvalDecisionRequested, AuditKind::approvalResolved,
                             AuditKind::approvalDecisionIgnoredDuplicate}) {
        const auto found = std::ranges::find(records, QString(kind), &AuditEventRecord::kind);
        ASSERT_NE(found, records.end());
        EXPECT_EQ(found->source, u"telegram-command"_s);
        EXPECT_EQ(found->actor, u"telegram-chat:501"_s);
        EXPECT_TRUE(found->note->contains(u"chat=501 sender=Mina (@mina, id 77)"_s));
    }
    EXPECT_EQ(board().activity().first().detail, u"ls … [telegram-command]"_s);

    // Who it was is on record, whatever came of it.
    ApprovalItem late = item("late");
    late.expiresAtMs = clock.current + 1000;
    request(late);
    request(item("fails"));
    gateway.setDecisionBehaviour({.fault = DecisionFault::AnswerError, .text = u"no"_s});
    EXPECT_EQ(decisions.decide(decision(u"fails"_s), config), RemoteVerdict::Started);
    ASSERT_TRUE(waitSettled(4));
    clock.current += 1000;
    EXPECT_EQ(decisions.decide(decision(u"late"_s), config), RemoteVerdict::Expired);
    EXPECT_EQ(decisions.decide(decision(u"late"_s), config), RemoteVerdict::Expired)
        << "no longer listed";
    const auto all = core->audit().records(0);
    const auto withSender = [&](const AuditEventRecord &record) {
        return record.note.value_or(QString()).contains(u"sender=Mina (@mina, id 77)"_s);
    };
    EXPECT_EQ(all.at(all.size() - 2).kind, AuditKind::approvalResolveFailed);
    EXPECT_EQ(all.last().kind, AuditKind::approvalExpired);
    EXPECT_TRUE(withSender(all.at(all.size() - 2)) && withSender(all.last()));
}

TEST_F(RemoteDecision, WhatHasChangedSinceItWasShownIsLeftToThisMachine)
{
    writeConfiguration(boundConfiguration());
    environmentExtras.insert(u"TELEGRAM_BOT_TOKEN"_s, token);
    makeConnectedCore();
    ASSERT_TRUE(waitUntil([&] { return bot.isPolled(); }));
    request(item("a", "ls"));
    ASSERT_TRUE(chatShows(u"ls"_s));
    gateway.announce(item("a", "rm -rf /"));
    ASSERT_TRUE(chatShows(u"rm -rf /"_s));
    ASSERT_TRUE(bot.press(chat, 1));
    // While the bridge does not know yet that the new form has arrived, it says no itself.
    const auto isRefused = [this](qsizetype times) {
        return waitUntil(
            [=, this] { return log.lines().filter(u": request changed "_s).size() == times; });
    };
    ASSERT_TRUE(isRefused(1));

    // The messages of an earlier bridge stay, with their buttons; and a request may come back as another.
    core->telegram().configureTelegramBridge();
    ASSERT_TRUE(waitUntil([&] { return bot.chats().messages(chat).size() == 2; }));
    ASSERT_TRUE(bot.press(chat, 1));
    ASSERT_TRUE(isRefused(2));
    gateway.resolveElsewhere(u"a"_s);
    ASSERT_TRUE(chatShows(u"none"_s));
    gateway.announce(item("a", "rm -rf /home"));
    ASSERT_TRUE(chatShows(u"rm -rf /home"_s));
    bot.pressData(chat, 101, u"allow:a"_s);
    ASSERT_TRUE(isRefused(3));
    EXPECT_TRUE(received.isEmpty());
}
