// SPDX-License-Identifier: Apache-2.0
#include "practice/PracticeGateway.h"
#include "practice/PracticeSession.h"
#include "practice/RawClient.h"
#include "support/Doubles.h"
#include "support/Waiting.h"

#include <gtest/gtest.h>

namespace bram
{
namespace
{
using namespace Qt::StringLiterals;
using test::outcome;
using test::RawClient;
using test::waitUntil;

class PracticeGatewayTest : public testing::Test
{
protected:
    PracticeGatewayTest()
    {
        QObject::connect(&m_gateway, &PracticeGateway::decisionReceived, &m_gateway,
                         [this](const ReceivedDecision &decision) { m_decisions << decision; });
        QObject::connect(&m_gateway, &PracticeGateway::clientRefused, &m_gateway,
                         [this](const QString &reason) { m_refusals << reason; });
        EXPECT_TRUE(m_gateway.listen());
    }

    ApprovalItem item(const QString &id, qint64 expiresAtMs = 0) const
    {
        return {.approvalId = id,
                .command = u"echo \u202E\n"_s + id,
                .agentId = u"main"_s,
                .createdAtMs = m_clock.current,
                .expiresAtMs = expiresAtMs};
    }
    static QJsonObject decision(const QString &id, const QString &text = u"allow-once"_s)
    {
        return {{u"id"_s, id}, {u"decision"_s, text}};
    }
    static QString decide(RawClient &client, const QString &id)
    {
        return outcome(client.call(u"exec.approval.resolve"_s, decision(id)));
    }

    test::ManualClock m_clock;
    PracticeGateway m_gateway {{}, m_clock};
    QList<ReceivedDecision> m_decisions;
    QStringList m_refusals;
};

TEST_F(PracticeGatewayTest, AnnouncesToThoseWhoAreInAndThoseWhoComeLater)
{
    m_gateway.announce(item(u"early"_s));
    m_gateway.announce(item(u"gone"_s, m_clock.current + 1000));
    m_clock.current += 1000;

    RawClient stranger(m_gateway.url());
    RawClient client(m_gateway.url());
    ASSERT_TRUE(client.logIn());
    const QJsonObject early = client.takeEvent(u"exec.approval.requested"_s);
    EXPECT_EQ(early,
              (QJsonObject {{u"id"_s, u"early"_s},
                            {u"request"_s,
                             QJsonObject {{u"command"_s, u"echo \u202E\nearly"_s},
                                          {u"agentId"_s, u"main"_s}}},
                            {u"createdAtMs"_s, m_clock.current - 1000},
                            {u"expiresAtMs"_s, 0}}));
    m_gateway.announce(item(u"late"_s));
    EXPECT_EQ(client.takeEvent(u"exec.approval.requested"_s).value("id"_L1), u"late"_s);
    m_gateway.resolveElsewhere(u"late"_s);
    EXPECT_EQ(client.takeEvent(u"exec.approval.resolved"_s).value("id"_L1), u"late"_s);

    // A stranger hears the challenge and nothing else, and may not decide.
    EXPECT_EQ(decide(stranger, u"early"_s), u"the first request must be connect"_s);
    EXPECT_EQ(stranger.texts.size(), 2);
    EXPECT_EQ(m_gateway.clientCount(), 1);
    EXPECT_TRUE(m_decisions.isEmpty());
}

TEST_F(PracticeGatewayTest, TakesADecisionOnce)
{
    RawClient first(m_gateway.url());
    RawClient second(m_gateway.url());
    ASSERT_TRUE(first.logIn() && second.logIn());
    for (const QString &id : {u"a"_s, u"b"_s, u"c"_s}) {
        m_gateway.announce(item(id, id == u"c"_s ? m_clock.current + 1 : 0));
    }
    m_clock.current += 1;
    m_gateway.resolveElsewhere(u"b"_s);

    EXPECT_EQ(decide(first, u"a"_s), u"ok"_s);
    EXPECT_EQ(decide(second, u"a"_s), u"approval already resolved"_s);
    EXPECT_EQ(decide(first, u"b"_s), u"approval already resolved"_s);
    EXPECT_EQ(decide(first, u"c"_s), u"approval not pending (expired)"_s);
    EXPECT_EQ(decide(first, u"nobody"_s), u"unknown approval id"_s);
    EXPECT_EQ(second.takeEvent(u"exec.approval.resolved"_s).value("id"_L1), u"b"_s);
    EXPECT_EQ(second.takeEvent(u"exec.approval.resolved"_s).value("id"_L1), u"a"_s);

    for (const QJsonObject &params :
         {decision(u"a"_s, u"allowOnce"_s), decision(u""_s), QJsonObject {{u"id"_s, u"a"_s}}}) {
        EXPECT_EQ(outcome(first.call(u"exec.approval.resolve"_s, params)),
                  u"resolve needs exactly an id and a decision"_s);
    }
    EXPECT_EQ(outcome(first.call(u"exec.run"_s, {})), u"unknown method: exec.run"_s);

    ASSERT_EQ(m_decisions.size(), 5);
    EXPECT_EQ(m_decisions.at(0).decision, ApprovalDecision::AllowOnce);
    EXPECT_EQ(m_decisions.at(0).outcome, PracticeAnswer::Accepted);
    EXPECT_EQ(m_decisions.at(4).outcome, PracticeAnswer::Refused);
    EXPECT_TRUE(m_gateway.pendingItems().isEmpty());
}

TEST_F(PracticeGatewayTest, MisbehavesWhenTold)
{
    auto client = std::make_unique<RawClient>(m_gateway.url());
    ASSERT_TRUE(client->logIn());
    m_gateway.announce(item(u"a"_s));

    m_gateway.setDecisionBehaviour(
        {.fault = DecisionFault::AnswerError, .text = u"approval not found"_s});
    EXPECT_EQ(decide(*client, u"a"_s), u"approval not found"_s);

    m_gateway.setDecisionBehaviour({.fault = DecisionFault::NeverAnswer});
    client->send(u"exec.approval.resolve"_s, decision(u"a"_s));
    ASSERT_TRUE(waitUntil([&] { return m_decisions.size() == 2; }));
    EXPECT_EQ(m_decisions.last().outcome, PracticeAnswer::Unanswered);

    m_gateway.setDecisionBehaviour({.fault = DecisionFault::DropSocket});
    EXPECT_EQ(decide(*client, u"a"_s), u"no response"_s);
    EXPECT_TRUE(client->waitClosed());
    EXPECT_EQ(m_gateway.pendingItems().size(), 1);

    client = std::make_unique<RawClient>(m_gateway.url());
    ASSERT_TRUE(client->logIn());
    m_gateway.setDecisionBehaviour({.fault = DecisionFault::Delay, .delayMs = 30});
    const QString requestId = client->send(u"exec.approval.resolve"_s, decision(u"a"_s));
    EXPECT_EQ(outcome(client->call(u"other"_s, {})), u"unknown method: other"_s);
    EXPECT_EQ(outcome(client->takeResponse(requestId)), u"ok"_s);

    m_gateway.announce(item(u"b"_s));
    m_gateway.setDecisionBehaviour({.fault = DecisionFault::ResolvedFirst});
    EXPECT_EQ(decide(*client, u"b"_s), u"ok"_s);
    EXPECT_TRUE(client->texts.last().contains(u"\"res\""_s));
    EXPECT_TRUE(client->texts.at(client->texts.size() - 2).contains(u"resolved"_s));

    m_gateway.sendRawText(u"{nonsense"_s);
    m_gateway.sendRawBinary("\xff\x00"_ba);
    ASSERT_TRUE(waitUntil([&] { return !client->binaries.isEmpty(); }));
    EXPECT_EQ(client->binaries.first(), "\xff\x00"_ba);
    EXPECT_EQ(client->texts.last(), u"{nonsense"_s);
}

TEST_F(PracticeGatewayTest, ComesBackOnItsPortWithItsState)
{
    m_gateway.announce(item(u"a"_s));
    RawClient before(m_gateway.url());
    ASSERT_TRUE(before.logIn());
    const QUrl url = m_gateway.url();
    m_gateway.close();
    EXPECT_TRUE(before.waitClosed());
    EXPECT_FALSE(RawClient(url).isOpen());

    m_gateway.rejectHandshakes(u"unauthorized: token revoked"_s, 2);
    ASSERT_TRUE(m_gateway.listen());
    EXPECT_EQ(m_gateway.url(), url);
    EXPECT_FALSE(RawClient(url).logIn());
    EXPECT_FALSE(RawClient(url).logIn());
    EXPECT_EQ(m_refusals,
              (QStringList {u"unauthorized: token revoked"_s, u"unauthorized: token revoked"_s}));
    RawClient after(url);
    ASSERT_TRUE(after.logIn());
    EXPECT_EQ(after.takeEvent(u"exec.approval.requested"_s).value("id"_L1), u"a"_s);

    PracticeGateway rival({.port = static_cast<quint16>(url.port())}, m_clock);
    EXPECT_FALSE(rival.listen());
}

TEST_F(PracticeGatewayTest, TurnsAwayForeignPagesAndBadFrames)
{
    EXPECT_FALSE(RawClient(m_gateway.url(), u"https://example.org"_s).isOpen());
    EXPECT_FALSE(RawClient(m_gateway.url(), u"http://127.0.0.1:1"_s).isOpen());

    for (const QString &frame : {u"not json"_s, u"[]"_s, u"{\"type\":\"req\"}"_s,
                                 u"{\"type\":\"res\",\"id\":\"1\",\"method\":\"connect\","
                                 "\"params\":{}}"_s}) {
        RawClient client(m_gateway.url());
        client.socket().sendTextMessage(frame);
        EXPECT_TRUE(client.waitClosed()) << qPrintable(frame);
        EXPECT_EQ(client.socket().closeCode(), QWebSocketProtocol::CloseCodePolicyViolated);
    }
    EXPECT_EQ(m_refusals.size(), 6);
}

TEST_F(PracticeGatewayTest, SessionDoesNotFlood)
{
    PracticeSession session(m_gateway, m_clock,
                            {.firstDelayMs = 1, .intervalMs = 1, .count = 5, .maxPending = 2});
    QStringList announced;
    QObject::connect(&m_gateway, &PracticeGateway::announced, &m_gateway,
                     [&](const ApprovalItem &request) { announced << request.approvalId; });
    RawClient client(m_gateway.url());
    EXPECT_TRUE(announced.isEmpty());
    ASSERT_TRUE(client.logIn());
    while (announced.size() < 5 || !m_gateway.pendingItems().isEmpty()) {
        const qsizetype reached = qMin<qsizetype>(announced.size() + 1, 5);
        ASSERT_TRUE(waitUntil(
            [&] { return m_gateway.pendingItems().size() == 2 || announced.size() >= reached; }));
        ASSERT_LE(m_gateway.pendingItems().size(), 2);
        ASSERT_EQ(decide(client, m_gateway.pendingItems().first().approvalId), u"ok"_s);
    }
    EXPECT_EQ(announced.size(), 5);
}

} // namespace
} // namespace bram
