// SPDX-License-Identifier: Apache-2.0
#include "telegram/DecisionTexts.h"
#include "telegram/TelegramDryRun.h"
#include "telegram/TelegramUpdates.h"
#include "telegram/TokenMask.h"

#include <QJsonDocument>
#include <QUrl>

#include <gtest/gtest.h>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
using Decision = ApprovalDecision;

QJsonObject object(const char *json)
{
    return QJsonDocument::fromJson(json).object();
}
} // namespace

TEST(TelegramTexts, DecisionsAsTheyAreWritten)
{
    const struct {
        QString text;
        std::optional<WrittenDecision> decision;
    } commandRows[] = {
        {u"/approve a1 allow-once"_s, {{u"a1"_s, Decision::AllowOnce}}},
        {u"/APPROVE@my_bot  \t abc \n  deny"_s, {{u"abc"_s, Decision::Deny}}},
        {u"/approve a1 Allow-Always please"_s, {{u"a1"_s, Decision::AllowAlways}}},
        {u"/approve a1"_s, {}},
        {u"/approved a1 deny"_s, {}},
        {u"approve a1 deny"_s, {}},
        {u"please /approve a1 deny"_s, {}},
        {u"/approve a1 allow"_s, {}},
        {u"/approve a1 allow-once,"_s, {}},
        {u"/approve\u00A0a1\u00A0deny"_s, {}},
        {u"/approve \u00A0 deny"_s, {}},
        {QString(), {}},
    };
    for (const auto &row : commandRows) {
        EXPECT_EQ(parseApprovalCommand(row.text), row.decision) << qPrintable(row.text);
    }
    EXPECT_EQ(parseShowCommand(u"/Show@my_bot  a1 \n x"_s), u"a1"_s);
    EXPECT_EQ(parseShowCommand(showCommand(u"a1"_s)), u"a1"_s);
    for (const QString &text : {u"/show"_s, u"/shown a1"_s, u"show a1"_s}) {
        EXPECT_EQ(parseShowCommand(text), std::nullopt);
    }
    EXPECT_EQ(parseShowData(showData(u"a:1"_s)), u"a:1"_s);
    for (const Decision decision : {Decision::AllowOnce, Decision::AllowAlways, Decision::Deny}) {
        const WrittenDecision written {u"id:1"_s, decision};
        EXPECT_EQ(parseCallbackData(callbackData(decision, u"id:1"_s)), written);
        EXPECT_EQ(parseApprovalCommand(approvalCommand(u"id:1"_s, decision)), written);
    }
    for (const QString &data :
         {u"Allow:a"_s, u"allow"_s, u" allow:a"_s, u"allow-once:a"_s, QString()}) {
        EXPECT_EQ(parseCallbackData(data), std::nullopt);
    }
}

TEST(TelegramTexts, ChatsTextsAndSendersOfUpdates)
{
    EXPECT_EQ(parseChatIdFromCallbackQuery(object(R"({"message":{"chat":{"id":" -100200 "}}})")),
              -100200);
    for (const char *odd : {R"({"message":{"chat":{"id":1.5}}})", R"({"message":{"chat":7}})",
                            R"({"message":{"chat":{"id":9223372036854775808}}})",
                            R"({"inline_message_id":"x"})", R"({"message":[{"chat":{"id":1}}]})"}) {
        EXPECT_EQ(parseChatIdFromCallbackQuery(object(odd)), std::nullopt) << odd;
    }
    EXPECT_EQ(parseApprovalText(object(R"({"text":7})")), std::nullopt);

    EXPECT_TRUE(isForwardedOrEdited(object(R"({"forward_origin":{}})")));
    EXPECT_TRUE(isForwardedOrEdited(object(R"({"edit_date":0})")));
    EXPECT_FALSE(isForwardedOrEdited(
        object(R"({"text":"x","date":1,"reply_to_message":{"forward_date":1}})")));

    const struct {
        const char *message;
        QString sender;
    } rows[] = {
        {R"({"from":{"id":77,"first_name":"Mina","last_name":"Kim","username":"mina"}})",
         u"id 77, @mina, Mina Kim"_s},
        {R"({"from":{"id":77,"first_name":" id 1,\n\u202e"}})", u"id 77, id 1,⟨U+000A⟩⟨U+202E⟩"_s},
        {R"({"from":{"id":5},"sender_chat":{"id":-9,"title":"Ops"}})", u"id -9, Ops"_s},
        {R"({"from":"Mina"})", {}},
        {"{}", {}},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(senderOf(object(row.message)).toStdString(), row.sender.toStdString());
    }
}

TEST(TelegramTexts, NoPieceOfTheTokenInAText)
{
    const QString token = u"123456789:AAEhBOweik6ad9r_QXMENQjcrGbqCr4K-bc"_s;
    const TokenMask mask(token);
    const QString mark = u"[REDACTED_BOT_TOKEN]"_s;
    QString encoded;
    for (const QChar c : token) {
        encoded += u'%' + QString::number(c.unicode(), 16);
    }
    const QString twice = QString(encoded).replace(u'%', u"%25"_s);
    for (const QString &form : {token, encoded, encoded.toUpper(), twice, token.first(20),
                                token.last(12), QString(token).replace(u':', u"%3A"_s)}) {
        EXPECT_EQ(mask.masked(u"GET http://h/bot"_s + form + u"/getMe failed"_s).toStdString(),
                  (u"GET http://h/bot"_s + mark + u"/getMe failed"_s).toStdString())
            << qPrintable(form);
    }
    // In pieces of an address, and cut off at the end of what is shown.
    EXPECT_FALSE(mask.masked(token.first(25) + u"/../"_s + token.mid(25)).contains(u"cr"_s));
    for (int length = 330; length < 410; ++length) {
        const QString shown = mask.masked(QString(length, u'-') + token);
        EXPECT_FALSE(shown.contains(u"1234"_s)) << length;
        EXPECT_LE(shown.size(), 400);
    }
    EXPECT_EQ(mask.masked(u"100% of\n%zz %2 %"_s), u"100% of %zz %2 %"_s);
    EXPECT_EQ(mask.masked(u"Bearer abc.def"_s), u"Bearer [REDACTED]"_s);
    EXPECT_EQ(TokenMask(u"t1"_s).masked(u"bott1/x"_s), u"bot[REDACTED_BOT_TOKEN]/x"_s);
}

TEST(TelegramTexts, DryRunDescribesWithoutSecrets)
{
    const TokenMask mask(u"123456:AAEhBOweik6ad9r_QXMENQjcrGbqCr4K"_s);
    EXPECT_EQ(dryRunPayloadDescription({{u"text"_s, u"x"_s}, {u"chat_id"_s, -5}}, mask),
              u"{\"chat_id\":-5,\"text\":\"x\"}"_s);
    EXPECT_FALSE(dryRunPayloadDescription(
                     {{u"text"_s, u"curl -H 'Authorization: Bearer abc' x --api-key=1"_s}}, mask)
                     .contains(u"abc"_s));
    EXPECT_FALSE(
        dryRunPayloadDescription(
            {{u"text"_s, u"curl https://x/bot123456:AAEhBOweik6ad9r_QXMENQjcrGbqCr4K/getMe"_s}},
            mask)
            .contains(u"BOweik"_s));
    const qsizetype around = dryRunPayloadDescription({{u"t"_s, QString()}}, mask).size();
    const auto describe = [&mask](qsizetype length) {
        return dryRunPayloadDescription({{u"t"_s, QString(length, u'x')}}, mask);
    };
    EXPECT_EQ(describe(450 - around).size(), 450);
    EXPECT_FALSE(describe(450 - around).endsWith(u"..."_s));
    EXPECT_EQ(describe(451 - around).size(), 453);
    EXPECT_TRUE(describe(451 - around).endsWith(u"..."_s));
}

} // namespace bram
