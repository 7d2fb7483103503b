// SPDX-License-Identifier: Apache-2.0
#include "BridgeFixture.h"

#include <QJsonDocument>

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>

namespace bram
{

using namespace Qt::StringLiterals;
using test::waitUntil;

namespace
{
class TelegramBridgeTest : public test::BridgeFixture
{
protected:
    qint64 statusMessage(qint64 chatId) const
    {
        return api.chats().messages(chatId).constLast().messageId;
    }
    [[nodiscard]] bool waitAnswers(qsizetype count)
    {
        return waitUntil([&] { return api.queryAnswers().size() == count; });
    }
};

BotBehaviour fault(BotFault kind, int times = -1)
{
    return {.fault = kind, .text = u"Bad Request: no"_s, .times = times};
}
} // namespace

TEST_F(TelegramBridgeTest, OneStatusMessageAChatWhichFollowsTheList)
{
    start();
    bridge->updatePending({});
    bridge->updatePending({entry(u"a1"_s), {u"b1"_s, u"rm"_s, u"side"_s, true}});
    ASSERT_TRUE(waitLastText(bound, u"(1)\n1. [main] a1 ls"_s));
    ASSERT_TRUE(waitLastText(unbound, u"(2)\n1. [main] a1 ls\n2. [HIGH] [side] b1 rm"_s));
    EXPECT_EQ(api.chats().pressable(bound).size(), 3);

    // Nothing new for the first chat, an edit in the second.
    bridge->updatePending({entry(u"a1"_s)});
    ASSERT_TRUE(waitLastText(unbound, u"(1)"_s));
    EXPECT_EQ(api.callCount(u"editMessageText"_s, bound), 0);
    EXPECT_EQ(api.callCount(u"editMessageText"_s, unbound), 1);

    bridge->updatePending({});
    ASSERT_TRUE(waitLastText(bound, u": none"_s));
    EXPECT_TRUE(api.chats().pressable(bound).isEmpty());
    bridge->updatePending({entry(u"a2"_s)});
    ASSERT_TRUE(waitLastText(bound, u"a2"_s));
    EXPECT_EQ(texts(bound).size(), 2);
}

TEST_F(TelegramBridgeTest, AListThatWasEmptyInBetweenIsANewMessage)
{
    start();
    bridge->updatePending({entry(u"a1"_s)});
    ASSERT_TRUE(waitLastText(bound, u"a1"_s));
    bridge->updatePending({});
    bridge->updatePending({entry(u"a2"_s)});
    ASSERT_TRUE(waitLastText(bound, u"a2"_s));
    EXPECT_EQ(texts(bound).first(), u"BRAM pending approvals: none"_s);
}

TEST_F(TelegramBridgeTest, ADeletedOrRefusedMessageIsSentAnew)
{
    start();
    bridge->updatePending({entry(u"a1"_s)});
    ASSERT_TRUE(waitLastText(bound, u"a1"_s));
    api.removeMessage(bound, statusMessage(bound));
    bridge->updatePending({entry(u"a1"_s), entry(u"a2"_s)});
    ASSERT_TRUE(waitLastText(bound, u"(2)"_s));
    ASSERT_TRUE(waitLastText(unbound, u"(2)"_s));
    EXPECT_EQ(texts(bound).size(), 1);

    api.setBehaviour(u"editMessageText"_s, fault(BotFault::Refuse));
    bridge->updatePending({});
    EXPECT_TRUE(waitUntil([&] { return texts(bound).isEmpty() && texts(unbound).isEmpty(); }))
        << "what cannot be emptied is deleted";
}

TEST_F(TelegramBridgeTest, EveryFaultEndsInTheRightList)
{
    start();
    bridge->updatePending({entry(u"a0"_s)});
    ASSERT_TRUE(waitLastText(bound, u"a0"_s));
    int round = 0;
    for (const BotFault kind : {BotFault::TruncatedJson, BotFault::RateLimit}) {
        api.setBehaviour(u"editMessageText"_s, fault(kind, 2)); // once in each chat
        const QString id = u"a%1"_s.arg(++round);
        bridge->updatePending({entry(id)});
        ASSERT_TRUE(waitLastText(bound, id));
        ASSERT_TRUE(waitLastText(unbound, id));
    }
    EXPECT_EQ(texts(bound).size(), 1) << "a call that may have counted is repeated, not replaced";
    EXPECT_TRUE(waitLog(u"[Brackwen][Telegram] pending message update failed (chat=501): "_s));
}

TEST_F(TelegramBridgeTest, TheTimeThatTelegramAsksForIsWaited)
{
    start();
    api.setBehaviour(u"sendMessage"_s,
                     {.fault = BotFault::RateLimit, .retryAfterSeconds = 2, .times = 2});
    bridge->updatePending({entry(u"a1"_s)});
    ASSERT_TRUE(waitLog(u"(chat=501): Too Many Requests: retry after 2"_s));
    for (int i = 2; i < 50; ++i) {
        bridge->updatePending({entry(u"a%1"_s.arg(i))});
    }
    ASSERT_TRUE(waitLastText(bound, u"a49"_s));
    QList<qint64> times;
    for (const BotCall &call : api.calls()) {
        if (call.chatId == bound) {
            times.append(call.atMs);
        }
    }
    ASSERT_EQ(times.size(), 2);
    EXPECT_GE(times.last() - times.first(), 2000);
}

TEST_F(TelegramBridgeTest, ABurstIsFewCallsAndAChatThatHangsHoldsUpNoOther)
{
    start();
    api.setBehaviour(u"sendMessage"_s, {.fault = BotFault::Hang, .times = 1}); // chat 501 is first
    QList<TelegramApprovalEntry> entries;
    for (int i = 0; i < 300; ++i) {
        entries.prepend(entry(u"a%1"_s.arg(i)));
        bridge->updatePending(entries);
        QCoreApplication::processEvents();
    }
    ASSERT_TRUE(waitLastText(unbound, u"(300)\n1. [main] a299"_s));
    EXPECT_LE(api.callCount(u"editMessageText"_s, unbound), 2);
    EXPECT_TRUE(texts(bound).isEmpty());
}

TEST_F(TelegramBridgeTest, ButtonsAndWhatTheyAreAnswered)
{
    start();
    bridge->updatePending({entry(u"a1"_s)});
    ASSERT_TRUE(waitLastText(bound, u"a1"_s));
    ASSERT_TRUE(waitLastText(unbound, u"a1"_s));
    using Verdict = RemoteVerdict;
    const struct {
        qint64 chatId;
        QString data;
        RemoteVerdict verdict;
        QString answer;
        bool isAlert;
    } rows[] = {
        {bound, u"allow:a1"_s, Verdict::Started, u"승인 요청 전송됨"_s, false},
        {bound, u"deny:a1"_s, Verdict::Started, u"거부 요청 전송됨"_s, false},
        {bound, u"allow-always:a1"_s, Verdict::Started, u"영구 승인 요청 전송됨"_s, false},
        {bound, u"allow:a1"_s, Verdict::NotPending, u"대기 중이 아니거나 이미 처리됨"_s, true},
        {bound, u"allow:a1"_s, Verdict::Expired,
         u"The time to decide this request is over: it has expired."_s, true},
        {bound, u"allow:a1"_s, Verdict::Locked,
         u"Nothing can be decided in chats while the gateway refuses this program's token."_s,
         true},
        {bound, u"explode:a1"_s, Verdict::Started, u"지원하지 않는 작업"_s, true},
        {unbound, u"allow:a1"_s, Verdict::Started, u"승인 권한이 없는 채팅입니다"_s, true},
        {503, u"allow:a1"_s, Verdict::Started, u"허용되지 않은 채팅입니다"_s, true},
    };
    qsizetype answers = 0;
    for (const auto &row : rows) {
        verdict = row.verdict;
        api.pressData(row.chatId, 101, row.data);
        ASSERT_TRUE(waitAnswers(++answers));
        EXPECT_EQ(api.queryAnswers().constLast().text, row.answer);
        EXPECT_EQ(api.queryAnswers().constLast().isAlert, row.isAlert);
    }
    ASSERT_EQ(decisions.size(), 6) << "only what passes the bridge's own gate";
    EXPECT_EQ(decisions.at(2),
              (TelegramDecision {u"a1"_s, ApprovalDecision::AllowAlways, bound,
                                 DecisionInputSource::CallbackButton,
                                 u"id 7001, @operator, Operator"_s, ShownInChat::Whole}));
    EXPECT_EQ(log.lines().filter(u"decision refused: "_s).size(), 3);
}

TEST_F(TelegramBridgeTest, AButtonUnderAnOlderFormOfTheRequestDecidesNothing)
{
    start();
    bridge->updatePending({entry(u"a1"_s, u"ls"_s)});
    ASSERT_TRUE(waitLastText(bound, u"ls"_s));
    api.setBehaviour(u"editMessageText"_s, fault(BotFault::Hang));
    bridge->updatePending({entry(u"a1"_s, u"rm -rf /"_s)});
    ASSERT_TRUE(api.press(bound, 1));
    ASSERT_TRUE(waitAnswers(1));
    EXPECT_TRUE(
        api.queryAnswers().constLast().text.startsWith(u"The request is no longer what was"_s));
    EXPECT_TRUE(decisions.isEmpty());
}

TEST_F(TelegramBridgeTest, ShowSendsACommandWholeWithItsButtonsBelow)
{
    const QString script = QString(u"echo one line\n"_s).repeated(400);
    start();
    bridge->updatePending({entry(u"abcdefgh-1"_s, script), entry(u"other"_s)});
    ASSERT_TRUE(waitLastText(bound, u"echo one line⏎"_s));
    const auto decide = [&](const QString &text) {
        decisions.clear();
        api.say(bound, text);
        EXPECT_TRUE(waitUntil([&] { return decisions.size() == 1; }));
        return decisions.value(0).shown;
    };
    EXPECT_EQ(decide(u"/approve abcdefgh-1 allow-once"_s), ShownInChat::Part);
    EXPECT_EQ(decide(u"/approve other allow-once"_s), ShownInChat::Whole);
    EXPECT_EQ(decide(u"/approve unlisted allow-once"_s), ShownInChat::Nothing);

    ASSERT_TRUE(api.press(bound, 2));
    ASSERT_TRUE(waitLastText(bound, u"BRAM request abcdefgh-1, part 2 of 2:\n│ echo one line\n"_s));
    ASSERT_TRUE(waitAnswers(1));
    EXPECT_EQ(api.queryAnswers().constLast().text, u"The command follows below."_s);
    EXPECT_EQ(decide(u"/approve abcdefgh-1 allow-once"_s), ShownInChat::Whole);
    decisions.clear();
    api.pressData(bound, statusMessage(bound) - 1, u"allow:abcdefgh-1"_s);
    const auto last = api.chats().pressable(bound).constLast();
    EXPECT_EQ(last.button.data, u"allow-always:abcdefgh-1"_s);
    api.pressData(bound, last.messageId, last.button.data);
    ASSERT_TRUE(waitUntil([&] { return decisions.size() == 2; }));
    EXPECT_EQ(decisions.constLast().shown, ShownInChat::Whole);

    // It holds for what was shown, which is shown with buttons only while it is so.
    bridge->updatePending({entry(u"abcdefgh-1"_s, script + u"rm x"_s), entry(u"other"_s)});
    EXPECT_TRUE(waitUntil([&] {
        const auto *shown = api.chats().find(bound, last.messageId);
        return shown != nullptr && shown->buttons.isEmpty();
    }));
    EXPECT_EQ(decide(u"/approve abcdefgh-1 allow-once"_s), ShownInChat::Part);
    api.setBehaviour(u"sendMessage"_s,
                     {.fault = BotFault::RateLimit, .retryAfterSeconds = 1, .times = 1});
    api.say(bound, u"/show abcdefgh"_s);
    ASSERT_TRUE(waitLastText(bound, u"│ rm x"_s)) << "the beginning of an id will do";
    EXPECT_EQ(decide(u"/approve abcdefgh-1 allow-once"_s), ShownInChat::Whole);

    // With a part missing, it has not been shown whole.
    bridge->updatePending({entry(u"third"_s, script)});
    ASSERT_TRUE(waitUntil([&] { return !texts(bound).filter(u"third"_s).isEmpty(); }));
    api.setBehaviour(u"sendMessage"_s, fault(BotFault::Refuse, 1));
    api.say(bound, u"/show third"_s);
    ASSERT_TRUE(waitLog(u"showing a command failed (chat=501): Bad Request: no"_s));
    EXPECT_EQ(decide(u"/approve third allow-once"_s), ShownInChat::Part);

    // Nor with its only part missing, and what the list was to show counts once it does.
    bridge->updatePending({entry(u"fourth"_s, u"a\nb"_s)});
    ASSERT_TRUE(waitUntil([&] { return !texts(bound).filter(u"fourth"_s).isEmpty(); }));
    api.setBehaviour(
        u"sendMessage"_s,
        {.fault = BotFault::Refuse, .text = u"Bad Request: not this one"_s, .times = 1});
    api.say(bound, u"/show fourth"_s);
    ASSERT_TRUE(waitLog(u"showing a command failed (chat=501): Bad Request: not this one"_s));
    EXPECT_EQ(decide(u"/approve fourth allow-once"_s), ShownInChat::Part);
    const QList<QString> changing {u"editMessageText"_s, u"sendMessage"_s};
    for (const QString &method : changing) {
        api.setBehaviour(method, fault(BotFault::Refuse));
    }
    bridge->updatePending({entry(u"fifth"_s)});
    ASSERT_TRUE(waitLog(u"pending message update failed (chat=501): "_s));
    EXPECT_EQ(decide(u"/approve fifth allow-once"_s), ShownInChat::Part);
    for (const QString &method : changing) {
        api.setBehaviour(method, {});
    }
    bridge->updatePending({entry(u"fifth"_s), entry(u"sixth"_s)});
    ASSERT_TRUE(waitUntil([&] { return !texts(bound).filter(u"fifth ls"_s).isEmpty(); }));
    EXPECT_EQ(decide(u"/approve fifth allow-once"_s), ShownInChat::Whole);
    api.say(bound, u"/show nothing-like-it"_s);
    EXPECT_TRUE(waitLastText(bound, u"BRAM: 대기 중이 아니거나 이미 처리됨"_s));
    for (const BotCall &call : api.calls()) {
        EXPECT_TRUE(
            !call.payload.contains(u"text"_s) || call.method == u"answerCallbackQuery"_s
            || (call.payload.value("disable_web_page_preview"_L1).toBool()
                && call.payload.value("link_preview_options"_L1)["is_disabled"_L1].toBool()));
    }
}

TEST_F(TelegramBridgeTest, OnlyPeopleWhoMayDecideDo)
{
    config.chatIds = {group, bound};
    config.chatAgentMap.insert(group, {u"main"_s});
    config.chatRules = {{group, {.senders = QSet<qint64> {7001}, .right = ChatRight::AllowOnce}}};
    start();
    bridge->updatePending({entry(u"a1"_s)});
    ASSERT_TRUE(waitLastText(bound, u"a1 ls"_s));
    const QString usual = uR"("from":{"id":7001,"is_bot":false})"_s;
    const struct {
        const char *what;
        qint64 chatId;
        QString members; ///< of the message beside chat, date and text
        QString decision;
        QString told; ///< empty: nothing
    } rows[] = {
        {"a bot", bound, uR"("from":{"id":7001,"is_bot":true})"_s, u"deny"_s, {}},
        {"by way of a bot",
         bound,
         usual + uR"(,"via_bot":{"id":9,"is_bot":true})"_s,
         u"deny"_s,
         {}},
        {"by a bot for a business",
         bound,
         usual + uR"(,"sender_business_bot":{"id":9,"is_bot":true})"_s,
         u"deny"_s,
         {}},
        {"by a timetable", bound, usual + uR"(,"is_from_offline":true)"_s, u"deny"_s, {}},
        {"a channel",
         bound,
         usual + uR"(,"sender_chat":{"id":-9,"type":"channel"})"_s,
         u"deny"_s,
         {}},
        {"nobody", bound, uR"("x":1)"_s, u"deny"_s, {}},
        {"a stranger in the group", group, uR"("from":{"id":7002})"_s, u"deny"_s,
         u"BRAM: You may not decide in this chat."_s},
        {"more than the group may", group, usual, u"allow-always"_s,
         u"BRAM: In this chat, requests can only be allowed once or denied."_s},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        const qsizetype before = log.lines().size();
        api.pushUpdate(
            {{u"message"_s,
              QJsonDocument::fromJson(
                  uR"({"chat":{"id":%1},"date":%2,"text":"/approve a1 %3",%4})"_s.arg(row.chatId)
                      .arg(clock.nowMs() / 1000)
                      .arg(row.decision, row.members)
                      .toUtf8())
                  .object()}});
        ASSERT_TRUE(waitUntil(
            [&] { return log.lines().mid(before).filter(u"decision refused: "_s).size() == 1; }));
        EXPECT_EQ(log.lines().constLast().contains(u" sender=id "_s), row.members != uR"("x":1)"_s);
        if (!row.told.isEmpty()) {
            EXPECT_TRUE(waitLastText(row.chatId, row.told));
        }
    }
    EXPECT_TRUE(decisions.isEmpty());
    api.pressData(group, 101, u"allow:a1"_s, {.userId = 7002});
    api.pressData(group, 101, u"allow-always:a1"_s);
    ASSERT_TRUE(waitAnswers(2));
    EXPECT_EQ(api.queryAnswers().constFirst().text, u"You may not decide in this chat."_s);
    EXPECT_TRUE(decisions.isEmpty());
    api.say(group, u"/approve a1 allow-once"_s);
    EXPECT_TRUE(waitUntil([&] { return decisions.size() == 1; }));
}

TEST_F(TelegramBridgeTest, AnOrderOlderThanTheRequestIsKnownAsOne)
{
    start(); // whose clock is years behind that of the Bot API
    bridge->updatePending({entry(u"a0"_s)});
    ASSERT_TRUE(waitLastText(bound, u"a0"_s));
    bridgeClock.current += 3'600'000;
    clock.aheadMs = 3'600'000;
    bridge->updatePending({entry(u"a0"_s), entry(u"a1"_s)});
    ASSERT_TRUE(waitLastText(bound, u"a1"_s));
    const struct {
        const char *what;
        QString id;
        int ageSeconds;
        ShownInChat shown;
    } rows[] = {
        {"now", u"a1"_s, 0, ShownInChat::Whole},
        {"a moment before", u"a1"_s, 1, ShownInChat::Whole},
        {"before", u"a1"_s, 60, ShownInChat::Nothing},
        {"after the other one", u"a0"_s, 1800, ShownInChat::Whole},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        decisions.clear();
        const QJsonObject message {
            {u"chat"_s, QJsonObject {{u"id"_s, bound}}},
            {u"from"_s, QJsonObject {{u"id"_s, 7001}}},
            {u"date"_s, clock.nowMs() / 1000 - row.ageSeconds},
            {u"text"_s, QString(u"/approve "_s + row.id + u" allow-once"_s)}};
        api.pushUpdate({{u"message"_s, message}});
        ASSERT_TRUE(waitUntil([&] { return decisions.size() == 1; }));
        EXPECT_EQ(decisions.constFirst().shown, row.shown);
    }
    // Buttons in messages that nobody knows any more: of an earlier run, or deleted.
    decisions.clear();
    api.pressData(bound, 99, u"allow:a1"_s);
    ASSERT_TRUE(waitUntil([&] { return decisions.size() == 1; }));
    EXPECT_EQ(decisions.constFirst().shown, ShownInChat::Nothing);
}

TEST_F(TelegramBridgeTest, CommandsDecideOnlyInTheirSendersOwnWords)
{
    config.enablePolling = false;
    config.enableCommandPollingInPublishOnly = true;
    start();
    api.say(503, u"/approve a1 deny"_s);
    api.say(bound, u"/approve a1 deny"_s, PracticeSaying::Forwarded);
    api.say(bound, u"/approve a1 deny"_s, PracticeSaying::Edited);
    api.pushUpdate(
        {{u"callback_query"_s, QJsonObject {{u"id"_s, u"9"_s}, {u"data"_s, u"allow:a1"_s}}},
         {u"message"_s,
          QJsonObject {{u"chat"_s, QJsonObject {{u"id"_s, bound}}},
                       {u"text"_s, u"/approve a1 allow-once"_s}}}});
    api.say(bound, u"how is it going?"_s);
    verdict = RemoteVerdict::NotPending;
    api.say(unbound, u"/approve@bot a1 allow-once"_s);
    ASSERT_TRUE(waitLastText(unbound, u"BRAM: 대기 중이 아니거나 이미 처리됨"_s));
    ASSERT_EQ(decisions.size(), 1);
    EXPECT_EQ(decisions.constFirst().chatId, unbound);
    EXPECT_EQ(decisions.constFirst().source, DecisionInputSource::CommandMessage);
    EXPECT_TRUE(texts(503).filter(u"BRAM"_s).isEmpty());
    EXPECT_EQ(log.lines().filter(u"decision refused: "_s).size(), 2);
    const QJsonArray allowed
        = api.calls().constFirst().payload.value("allowed_updates"_L1).toArray();
    EXPECT_EQ(allowed, QJsonArray {u"message"_s});

    // The keys below the chat say the command.
    verdict = RemoteVerdict::Started;
    bridge->updatePending({entry(u"a2"_s)});
    ASSERT_TRUE(waitLastText(bound, u"Use /approve"_s));
    ASSERT_TRUE(api.press(bound, 2));
    ASSERT_TRUE(waitUntil([&] { return decisions.size() == 2; }));
    EXPECT_EQ(decisions.constLast().decision, ApprovalDecision::Deny);

    // A message with keys cannot be edited: the new one takes its place.
    ASSERT_TRUE(waitLastText(unbound, u"a2"_s));
    const qint64 first = statusMessage(unbound);
    bridge->updatePending({entry(u"a3"_s)});
    ASSERT_TRUE(waitLastText(unbound, u"a3"_s));
    EXPECT_TRUE(waitUntil([&] { return api.chats().find(unbound, first) == nullptr; }));
}

TEST_F(TelegramBridgeTest, OddUpdatesAndBrokenAnswersEndNothing)
{
    start();
    for (
        const char *json : {
            R"({"update_id": 5000, "callback_query": {"id": "1", "message": {"chat": {"id": 1e300}}}})",
            R"({"update_id": 5001, "callback_query": "x", "message": []})",
            R"({"update_id": 9223372036854775808, "poll": {}})",
            R"({"update_id": "17", "message": {"chat": {"id": "501"}, "text": ["/approve"]}})",
            R"({"update_id": 4000})",
        }) {
        api.pushUpdate(QJsonDocument::fromJson(json).object());
    }
    ASSERT_TRUE(waitUntil([&] {
        return api.isPolled()
            && api.calls().constLast().payload.value("offset"_L1).toInteger() == 5002;
    }));
    // A call that waits is answered like this, then the next ones are.
    for (const BotFault kind : {BotFault::Garbage, BotFault::HtmlError}) {
        api.setBehaviour(u"getUpdates"_s, fault(kind, 1));
        api.dropClients();
        ASSERT_TRUE(waitUntil([&] { return api.isPolled(); }));
    }
    EXPECT_TRUE(waitLog(u"[Brackwen][Telegram] poll failed: Invalid Telegram response"_s));
    api.say(bound, u"/approve a1 deny"_s);
    EXPECT_TRUE(waitUntil([&] { return decisions.size() == 1; }));
}

TEST_F(TelegramBridgeTest, AfterDaysOfQuietUpdatesMayCountFromALowerNumber)
{
    PracticeBotApi quiet {{.token = token, .chatIds = {bound}, .longestPollSeconds = 1}, clock};
    ASSERT_TRUE(quiet.listen());
    start(quiet.url());
    const auto asksFrom = [&](qint64 offset) {
        const qsizetype before = quiet.calls().size();
        return waitUntil([&] { return quiet.calls().size() > before + 1; })
            && quiet.calls().constLast().payload.value("offset"_L1).toInteger() == offset;
    };
    quiet.pushUpdate({{u"update_id"_s, 5000}});
    ASSERT_TRUE(waitUntil([&] { return quiet.isPolled(); }));
    bridgeClock.current += std::chrono::milliseconds(std::chrono::days(5)).count();
    EXPECT_TRUE(asksFrom(5001));
    bridgeClock.current += std::chrono::milliseconds(std::chrono::days(2)).count();
    EXPECT_TRUE(asksFrom(0));
    quiet.say(bound, u"/approve a1 deny"_s); // update 1000
    EXPECT_TRUE(waitUntil([&] { return decisions.size() == 1; }));
    EXPECT_TRUE(asksFrom(1001));
}

TEST_F(TelegramBridgeTest, SafeModeFetchesNothingAndStopEndsEverything)
{
    config.enablePolling = false;
    start();
    bridge->updatePending({entry(u"a1"_s)});
    ASSERT_TRUE(waitLastText(bound, u"Publish-only safe mode"_s));
    EXPECT_EQ(api.callCount(u"getUpdates"_s), 0);

    config.enablePolling = true;
    start();
    ASSERT_TRUE(waitUntil([&] { return api.isPolled(); }));
    bridge->start();
    const qsizetype calls = api.calls().size();
    bridge->stop();
    bridge->start();
    bridge->updatePending({entry(u"a2"_s)});
    ASSERT_TRUE(waitUntil([&] { return !api.isPolled() && tasks.running().isEmpty(); }));
    EXPECT_EQ(api.calls().size(), calls);
}

} // namespace bram
