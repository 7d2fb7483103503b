// SPDX-License-Identifier: Apache-2.0
#include "telegram/TelegramBotApi.h"
#include "BridgeFixture.h"

#include <QTcpServer>
#include <QTcpSocket>

#include <gmock/gmock.h>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
using test::waitUntil;

class TelegramBotApiTest : public test::BridgeFixture
{
protected:
    static QCoro::Task<TelegramBotApi::Result> call(TelegramBotApi *client, QString method,
                                                    std::chrono::seconds timeLimit)
    {
        const QJsonObject payload {{u"chat_id"_s, bound}, {u"text"_s, u"x"_s}};
        co_return co_await client->call(method, payload, timeLimit);
    }
    TelegramBotApi::Result result(TelegramBotApi &client, const QString &method,
                                  std::chrono::seconds timeLimit = std::chrono::seconds(20))
    {
        return test::waitFor(call(&client, method, timeLimit));
    }
    /// The answer, or why there is none, in a word.
    std::string outcome(TelegramBotApi &client, const QString &method)
    {
        const auto answer = result(client, method);
        return answer ? "ok" : answer.error().description().toStdString();
    }
};
} // namespace

TEST_F(TelegramBotApiTest, EveryFailureIsOneClearLine)
{
    TelegramBotApi client(config, api.url(), network, log);
    const struct {
        BotFault fault;
        std::string outcome;
        bool isLasting;
    } rows[] = {
        {BotFault::None, "ok", false},
        {BotFault::Reset, "Connection closed", false},
        {BotFault::CutInBody, "Connection closed", false},
        {BotFault::TruncatedJson, "Invalid Telegram response", false},
        {BotFault::Garbage, "Invalid Telegram response", false},
        {BotFault::JsonArray, "Invalid Telegram response", false},
        {BotFault::HtmlError, "Invalid Telegram response", false},
        {BotFault::RateLimit, "Too Many Requests: retry after 3", false},
        {BotFault::Refuse, "Bad Request: [REDACTED_BOT_TOKEN] is wrong", true},
    };
    for (const auto &row : rows) {
        api.setBehaviour(u"sendMessage"_s,
                         {.fault = row.fault,
                          .retryAfterSeconds = 3,
                          .text = u"Bad Request: "_s + token + u" is wrong"_s});
        const auto answer = result(client, u"sendMessage"_s);
        EXPECT_EQ(answer ? "ok" : answer.error().description().toStdString(), row.outcome);
        EXPECT_EQ(!answer && answer.error().isLasting(), row.isLasting);
        if (row.fault == BotFault::RateLimit) {
            EXPECT_EQ(answer.error().retryAfter, std::chrono::seconds(3));
        }
    }
    api.setBehaviour(u"sendMessage"_s, {.fault = BotFault::Hang});
    EXPECT_EQ(result(client, u"sendMessage"_s, std::chrono::seconds(1)).error().description(),
              u"no answer within 1 s"_s);
    EXPECT_EQ(outcome(client, u"noSuchMethod"_s), "Not Found: method not found");
    api.close();
    EXPECT_EQ(outcome(client, u"getMe"_s), "Connection refused");
    client.stop();
    EXPECT_EQ(outcome(client, u"getMe"_s), "stopped");
}

TEST_F(TelegramBotApiTest, AnyTokenIsOnePieceOfThePath)
{
    PracticeBotApi oddApi({.token = u"1:a/../b?c#d%2F é"_s, .chatIds = {bound}}, clock);
    ASSERT_TRUE(oddApi.listen());
    config.token = u"1:a/../b?c#d%2F é"_s;
    TelegramBotApi client(config, oddApi.url(), network, log);
    EXPECT_EQ(outcome(client, u"sendMessage"_s), "ok");
    config.token = u"2:wrong"_s;
    TelegramBotApi stranger(config, oddApi.url(), network, log);
    EXPECT_EQ(outcome(stranger, u"sendMessage"_s), "Unauthorized");
}

TEST_F(TelegramBotApiTest, WhatIsNoBotApiIsNotFollowedNorReadForEver)
{
    const struct {
        QByteArray start;
        QByteArray repeated;
        std::string outcome;
    } rows[] = {
        {"HTTP/1.1 302 Found\r\nLocation: " + api.url().toEncoded()
             + "/bot1:x/sendMessage\r\nContent-Length: 2\r\n\r\nno",
         {},
         "Invalid Telegram response"},
        {"HTTP/1.1 200 OK\r\n\r\n", QByteArray(1 << 20, ' '), "the answer is too long"},
        {"HTTP/1.1 401 Unauthorized\r\nWWW-Authenticate: Basic realm=\"x\"\r\nContent-Length: "
         "2\r\n\r\n{}",
         {},
         "ok"},
        {"SSH-2.0-Server\r\n\r\n", {}, "Connection closed"},
    };
    for (const auto &row : rows) {
        QTcpServer server;
        ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
        QObject::connect(&server, &QTcpServer::newConnection, &server, [&] {
            QTcpSocket *socket = server.nextPendingConnection();
            QObject::connect(socket, &QTcpSocket::readyRead, socket, [socket, &row] {
                if (socket->property("answered").toBool()) {
                    return;
                }
                socket->setProperty("answered", true);
                socket->write(row.start);
                if (row.repeated.isEmpty()) {
                    socket->disconnectFromHost();
                    return;
                }
                QObject::connect(socket, &QTcpSocket::bytesWritten, socket, [socket, &row] {
                    if (socket->bytesToWrite() == 0) {
                        socket->write(row.repeated);
                    }
                });
            });
        });
        TelegramBotApi client(config, QUrl(u"http://127.0.0.1:%1"_s.arg(server.serverPort())),
                              network, log);
        EXPECT_EQ(outcome(client, u"sendMessage"_s), row.outcome);
    }
    EXPECT_TRUE(api.calls().isEmpty());
}

TEST_F(TelegramBotApiTest, ADryRunSendsNothing)
{
    config.dryRun = true;
    TelegramBotApi client(config, api.url(), network, log);
    const auto sent = result(client, u"sendMessage"_s);
    const qint64 id = (*sent)["result"_L1]["message_id"_L1].toInteger();
    EXPECT_TRUE(id >= 10'000 && id <= 99'999) << id;
    EXPECT_EQ((*result(client, u"editMessageText"_s))["result"_L1], QJsonValue(true));
    EXPECT_EQ((*result(client, u"getUpdates"_s))["result"_L1], QJsonValue(QJsonArray()));
    EXPECT_THAT(
        log.lines(),
        testing::ElementsAre(
            u"[Brackwen][Telegram][DryRun] method=sendMessage payload={\"chat_id\":501,\"text\":\"x\"}"_s,
            u"[Brackwen][Telegram][DryRun] method=editMessageText payload={\"chat_id\":501,\"text\":\"x\"}"_s));
    EXPECT_TRUE(api.calls().isEmpty());
}

} // namespace bram
