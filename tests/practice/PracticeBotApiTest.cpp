// SPDX-License-Identifier: Apache-2.0
#include "practice/PracticeBotApi.h"
#include "support/Doubles.h"
#include "support/Waiting.h"

#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <gtest/gtest.h>

#include <memory>

namespace bram
{
namespace
{
using namespace Qt::StringLiterals;
using test::waitUntil;

constexpr qint64 chat = 501;

/// What a client sees of a call.
struct Seen {
    int status = 0; ///< 0: no answer
    bool isComplete = false; ///< no error below HTTP
    QJsonObject body;
};

QJsonObject inlineKeyboard(const QString &data)
{
    return {{u"inline_keyboard"_s,
             QJsonArray {
                 QJsonArray {QJsonObject {{u"text"_s, u"Allow"_s}, {u"callback_data"_s, data}}}}}};
}

class PracticeBotApiTest : public testing::Test
{
protected:
    PracticeBotApiTest() { EXPECT_TRUE(m_api.listen()); }

    std::unique_ptr<QNetworkReply> start(const QString &method, const QJsonObject &payload,
                                         const QString &token = u"1:right"_s)
    {
        QNetworkRequest request(QUrl(m_api.url().toString() + u"/bot"_s + token + u'/' + method));
        request.setHeader(QNetworkRequest::ContentTypeHeader, u"application/json"_s);
        return std::unique_ptr<QNetworkReply>(
            m_http.post(request, QJsonDocument(payload).toJson()));
    }

    static Seen finish(QNetworkReply &reply)
    {
        EXPECT_TRUE(waitUntil([&] { return reply.isFinished(); }));
        const auto error = reply.error();
        return {.status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).value<int>(),
                .isComplete = error != QNetworkReply::RemoteHostClosedError
                    && error != QNetworkReply::ConnectionRefusedError,
                .body = QJsonDocument::fromJson(reply.readAll()).object()};
    }

    Seen call(const QString &method, const QJsonObject &payload)
    {
        return finish(*start(method, payload));
    }

    Seen send(const QString &text, const QJsonObject &markup = {})
    {
        QJsonObject payload {{u"chat_id"_s, chat}, {u"text"_s, text}};
        if (!markup.isEmpty()) {
            payload.insert(u"reply_markup"_s, markup);
        }
        return call(u"sendMessage"_s, payload);
    }

    QJsonArray updates(qint64 offset, const QJsonArray &allowed = {})
    {
        return call(u"getUpdates"_s,
                    {{u"offset"_s, offset}, {u"timeout"_s, 0}, {u"allowed_updates"_s, allowed}})
            .body.value("result"_L1)
            .toArray();
    }

    test::ManualClock m_clock;
    PracticeBotApi m_api {{.token = u"1:right"_s, .chatIds = {chat}}, m_clock};
    QNetworkAccessManager m_http;
};

TEST_F(PracticeBotApiTest, KeepsAChatWithItsKeyboard)
{
    const auto sent = send(u"one"_s, inlineKeyboard(u"allow:a"_s));
    const qint64 messageId = sent.body["result"_L1]["message_id"_L1].toInteger();
    EXPECT_EQ(m_api.chats().messages(chat),
              (QList<PracticeMessage> {{.messageId = messageId,
                                        .isFromBot = true,
                                        .text = u"one"_s,
                                        .buttons = {{{u"Allow"_s, u"allow:a"_s}}},
                                        .sentAtSeconds = m_clock.nowMs() / 1000}}));

    QJsonObject edit {{u"chat_id"_s, chat}, {u"message_id"_s, messageId}, {u"text"_s, u"two"_s}};
    EXPECT_EQ(call(u"editMessageText"_s, edit).status, 200);
    EXPECT_TRUE(m_api.chats().pressable(chat).isEmpty()) << "an edit without keyboard removes it";
    EXPECT_TRUE(call(u"editMessageText"_s, edit)
                    .body["description"_L1]
                    .toString()
                    .contains(u"message is not modified"_s));
    edit.remove(u"text"_s);
    EXPECT_EQ(call(u"deleteMessage"_s, edit).status, 200);
    EXPECT_TRUE(m_api.chats().messages(chat).isEmpty());
    EXPECT_EQ(m_api.callCount(u"editMessageText"_s, chat), 2);
}

TEST_F(PracticeBotApiTest, RefusesWhatTheRealOneRefuses)
{
    EXPECT_EQ(finish(*start(u"sendMessage"_s, {}, u"1:wrong"_s)).status, 401);
    const QJsonObject keys {{u"keyboard"_s, QJsonArray {QJsonArray {u"/approve x deny"_s}}}};
    const auto withKeys = send(u"keys"_s, keys).body["result"_L1]["message_id"_L1];
    const struct {
        QString method;
        QJsonObject payload;
        QString description;
    } rows[] {
        {u"sendMessage"_s, {{u"chat_id"_s, 777}, {u"text"_s, u"x"_s}}, u"chat not found"_s},
        {u"sendMessage"_s, {{u"chat_id"_s, chat}, {u"text"_s, u" "_s}}, u"text is empty"_s},
        {u"sendMessage"_s,
         {{u"chat_id"_s, chat}, {u"text"_s, QString(4097, u'x')}},
         u"message is too long"_s},
        {u"sendMessage"_s,
         {{u"chat_id"_s, chat},
          {u"text"_s, u"x"_s},
          {u"reply_markup"_s, inlineKeyboard(QString(33, u'\u00fc'))}},
         u"BUTTON_DATA_INVALID"_s},
        {u"editMessageText"_s,
         {{u"chat_id"_s, chat}, {u"message_id"_s, 9}, {u"text"_s, u"x"_s}},
         u"message to edit not found"_s},
        {u"editMessageText"_s,
         {{u"chat_id"_s, chat}, {u"message_id"_s, withKeys}, {u"text"_s, u"x"_s}},
         u"can't be edited"_s},
        {u"deleteMessage"_s, {{u"chat_id"_s, chat}, {u"message_id"_s, 9}}, u"delete not found"_s},
        {u"answerCallbackQuery"_s, {{u"callback_query_id"_s, u"9"_s}}, u"query ID is invalid"_s},
        {u"noSuchMethod"_s, {}, u"Not Found"_s},
    };
    for (const auto &row : rows) {
        const auto seen = call(row.method, row.payload);
        EXPECT_GE(seen.status, 400);
        EXPECT_TRUE(seen.body["description"_L1].toString().contains(row.description))
            << qPrintable(row.description);
    }
    EXPECT_EQ(send(u"x"_s, inlineKeyboard(QString(32, u'\u00fc'))).status, 200);
    EXPECT_EQ(send(QString(4096, u'x')).status, 200);
}

TEST_F(PracticeBotApiTest, DeliversWhatPeopleDoUntilItIsConfirmed)
{
    send(u"one"_s, inlineKeyboard(u"deny:a"_s));
    const auto poll = start(u"getUpdates"_s, {{u"timeout"_s, 25}});
    ASSERT_TRUE(waitUntil([&] { return m_api.isPolled(); }));
    EXPECT_FALSE(m_api.press(chat, 2));
    const QString queryId = m_api.press(chat, 1).value_or(QString());
    m_api.say(chat, u"hello"_s, PracticeSaying::Forwarded);
    const QJsonArray got = finish(*poll).body["result"_L1].toArray();
    ASSERT_EQ(got.size(), 2);
    EXPECT_EQ(got[0]["callback_query"_L1]["data"_L1], u"deny:a"_s);
    EXPECT_EQ(got[0]["callback_query"_L1]["message"_L1]["chat"_L1]["id"_L1].toInteger(), chat);
    EXPECT_TRUE(got[1]["message"_L1]["forward_date"_L1].isDouble());

    EXPECT_EQ(updates(0).size(), 2);
    const qint64 last = got[1]["update_id"_L1].toInteger();
    EXPECT_EQ(updates(last).size(), 1);
    EXPECT_EQ(updates(last + 1, {u"message"_s}).size(), 0);
    m_api.press(chat, 1); // nobody asks for presses any more
    m_api.say(chat, u"edited"_s, PracticeSaying::Edited);
    m_api.say(chat, u"again"_s);
    EXPECT_EQ(updates(last + 1, {u"message"_s}).size(), 1);

    const QJsonObject answer {{u"callback_query_id"_s, queryId}, {u"text"_s, u"done"_s}};
    EXPECT_EQ(call(u"answerCallbackQuery"_s, answer).status, 200);
    EXPECT_EQ(call(u"answerCallbackQuery"_s, answer).status, 400);
    EXPECT_EQ(m_api.queryAnswers().size(), 1);
}

TEST_F(PracticeBotApiTest, LetsOnlyOneClientPoll)
{
    const auto first = start(u"getUpdates"_s, {{u"timeout"_s, 25}});
    ASSERT_TRUE(waitUntil([&] { return m_api.isPolled(); }));
    const auto second = start(u"getUpdates"_s, {{u"timeout"_s, 25}});
    EXPECT_EQ(finish(*first).status, 409);
    ASSERT_TRUE(m_api.isPolled());
    m_api.close();
    EXPECT_FALSE(finish(*second).isComplete);
    EXPECT_TRUE(m_api.listen());
    EXPECT_EQ(send(u"back"_s).status, 200);
}

TEST_F(PracticeBotApiTest, MisbehavesOnDemand)
{
    const struct {
        BotFault fault;
        int status;
        bool isComplete;
        bool isObject;
        bool isSent;
    } rows[] {
        {BotFault::Reset, 0, false, false, false},
        {BotFault::AnswerLost, 0, false, false, true},
        {BotFault::CutInBody, 200, false, false, true},
        {BotFault::TruncatedJson, 200, true, false, true},
        {BotFault::Garbage, 200, true, false, false},
        {BotFault::JsonArray, 200, true, false, false},
        {BotFault::HtmlError, 502, true, false, false},
        {BotFault::RateLimit, 429, true, true, false},
        {BotFault::Refuse, 400, true, true, false},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(static_cast<int>(row.fault));
        const qsizetype before = m_api.chats().messages(chat).size();
        // More than once: the client tries a call again by itself when its connection breaks.
        m_api.setBehaviour(u"sendMessage"_s,
                           {.fault = row.fault, .delayMs = 1, .retryAfterSeconds = 3});
        const auto seen = send(u"x"_s);
        EXPECT_EQ(seen.status, row.status);
        EXPECT_EQ(seen.isComplete, row.isComplete);
        EXPECT_EQ(!seen.body.isEmpty(), row.isObject);
        EXPECT_EQ(m_api.chats().messages(chat).size() > before, row.isSent);
        EXPECT_EQ(m_api.calls().constLast().isAccepted, row.isSent);
        if (row.fault == BotFault::RateLimit) {
            EXPECT_EQ(seen.body["parameters"_L1]["retry_after"_L1], 3);
        }
    }
    m_api.setBehaviour(u"sendMessage"_s, {.fault = BotFault::HtmlError, .times = 1});
    EXPECT_EQ(send(u"x"_s).status, 502);
    EXPECT_EQ(send(u"as usual again"_s).status, 200);
}

} // namespace
} // namespace bram
