// SPDX-License-Identifier: Apache-2.0
#include "allowlist/ExactJson.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>

#include <gtest/gtest.h>

namespace bram
{
namespace
{

using namespace Qt::StringLiterals;

QByteArray rewritten(const QByteArray &text)
{
    const auto document = parseExactJson(text);
    EXPECT_TRUE(document) << text.left(100).constData();
    return document ? prettyText(document->root) : QByteArray();
}

TEST(ExactJson, KeepsEveryTokenAsItStands)
{
    const QByteArray text = R"({
  "": [],
  "a": {},
  "b": 9223372036854775807,
  "c": -18446744073709551616123,
  "d": 1.000,
  "e": 1E+400,
  "f": -0,
  "g": "\/\u0041\ud800 \"결제\"",
  "h": [
    true,
    false,
    null,
    0.10000000000000000000000001
  ],
  "twice": 1,
  "twice": 2
}
)";
    EXPECT_EQ(rewritten(text), text);
    EXPECT_EQ(rewritten(rewritten(" {\"b\":1,\"\\u0061\":[ ],\r\n\t\"C\":{ } } ")),
              "{\n  \"C\": {},\n  \"\\u0061\": [],\n  \"b\": 1\n}\n");
    EXPECT_EQ(parseExactJson(text)->root.member(u"twice"_s)->token, "2");
    EXPECT_EQ(parseExactJson(text)->root.member(u"g"_s)->text(),
              u"/A"_s + QChar(0xd800) + u" \"결제\""_s);
}

TEST(ExactJson, NumbersSurviveDigitForDigitWhateverTheyAre)
{
    QRandomGenerator random(7);
    QByteArrayList numbers;
    for (int i = 0; i < 2000; ++i) {
        const auto digits = [&] {
            QByteArray text(1, char('1' + random.bounded(9)));
            for (auto left = random.bounded(25); left > 0; --left) {
                text += char('0' + random.bounded(10));
            }
            return text;
        };
        QByteArray number = (random.bounded(2) ? "-" : "") + (random.bounded(4) ? digits() : "0");
        number += random.bounded(2) ? "." + digits() : "";
        number += random.bounded(2) ? (random.bounded(2) ? "e-" : "E") + digits() : "";
        numbers.append(number);
    }
    EXPECT_EQ(rewritten("[" + numbers.join(",") + "]"), "[\n  " + numbers.join(",\n  ") + "\n]\n");
}

TEST(ExactJson, RefusesWhatIsNotJson)
{
    const QByteArray whole = R"({"a":[1,"\u0041",{"b":null}],"c":-1.5e3})";
    for (qsizetype length = 0; length < whole.size(); ++length) {
        EXPECT_FALSE(parseExactJson(whole.first(length))) << length;
    }
    const QByteArrayList bad {"{}{}",
                              "[1,]",
                              "{\"a\":1,}",
                              "{a:1}",
                              "[01]",
                              "[+1]",
                              "[.5]",
                              "[1.]",
                              "[1e]",
                              "[-]",
                              "[\"\t\"]",
                              "[\"\\x\"]",
                              "[\"\\u12g4\"]",
                              "[nul]",
                              "[True]",
                              "{}\xef\xbb\xbf",
                              "\xef\xbb\xbf\xef\xbb\xbf{}",
                              "[\"\xff\"]",
                              "[\"\xed\xa0\x80\"]",
                              QByteArray("[1]\0", 4),
                              "// c\n{}",
                              QByteArray(300, '[') + QByteArray(300, ']'),
                              QByteArray(1'000'000, '[')};
    for (const QByteArray &text : bad) {
        const auto document = parseExactJson(text);
        ASSERT_FALSE(document) << text.left(40).constData();
        EXPECT_TRUE(document.error().message.startsWith(u"not "_s));
    }
    EXPECT_TRUE(parseExactJson(QByteArray(256, '[') + QByteArray(256, ']')));
}

TEST(ExactJson, WritesStringsThatSayWhatWasMeant)
{
    const QString text
        = u"\"\\/\b\n\r\t\u0001 é 결제 \U0001f512 "_s + QChar(0xd83d) + u'x' + QChar(0xdd12);
    auto object = ExactJson::object();
    object.setMember(text, ExactJson::string(text));
    object.setMember(u"a"_s, ExactJson::array());
    object.setMember(u"a"_s, ExactJson::string(u"b"_s));
    const auto again = parseExactJson(prettyText(object));
    ASSERT_TRUE(again);
    EXPECT_EQ(again->root.member(text)->text(), text);
    EXPECT_EQ(again->root.member(u"a"_s)->text(), u"b"_s);
    EXPECT_EQ(again->root.keys.size(), 2u);
    EXPECT_TRUE(QJsonDocument::fromJson(prettyText(object)).isObject());
}

} // namespace
} // namespace bram
