// SPDX-License-Identifier: Apache-2.0
#include "audit/Redaction.h"

#include <gtest/gtest.h>

namespace bram
{

using namespace Qt::StringLiterals;

TEST(Redaction, masksByTheFourRules)
{
    const QString botToken = u"123456789:AbCdEfGhIjKlMnOpQrStUvWxYz0123"_s;
    const struct {
        QString text;
        QString expected;
    } rows[] = {
        {u""_s, u""_s},
        {u"nothing to hide"_s, u"nothing to hide"_s},
        {u"x "_s + botToken + u" y"_s, u"x [REDACTED_BOT_TOKEN] y"_s},
        {u"https://host/bot"_s + botToken + u"/getMe"_s,
         u"https://host/bot"_s + botToken + u"/getMe"_s},
        {u"12345:AbCdEfGhIjKlMnOpQrStUvWxYz0123"_s, u"12345:AbCdEfGhIjKlMnOpQrStUvWxYz0123"_s},
        {u"Authorization: BEARER \t abc.D-e_f rest"_s,
         u"Authorization: BEARER \t [REDACTED] rest"_s},
        {u"password: hunter2"_s, u"password=[REDACTED]"_s},
        {u"token=abcsdef"_s, u"token=[REDACTED]sdef"_s},
        {u"token=abcSdef"_s, u"token=[REDACTED]Sdef"_s},
        {u"API-Key = a b c, api_key:x;apikey=y"_s,
         u"API-Key=[REDACTED], api_key=[REDACTED];apikey=[REDACTED]"_s},
        {u"secret='x'"_s, u"secret='x'"_s},
        {u"passwd=a\\b"_s, u"passwd=[REDACTED]\\b"_s},
        {u"tokens=abc mytoken=abc"_s, u"tokens=abc mytoken=abc"_s},
        {u"BRACKWEN_GATEWAY_TOKEN = abc\nnext"_s, u"BRACKWEN_GATEWAY_TOKEN = [REDACTED]"_s},
        {u"brackwen_x_password_y=abc\"def"_s, u"brackwen_x_password_y=[REDACTED]\"def"_s},
        {u"BRACKWEN_GATEWAY_URL=ws://a"_s, u"BRACKWEN_GATEWAY_URL=ws://a"_s},
        {u"비밀 password=가나다"_s, u"비밀 password=[REDACTED]"_s},
        // A letter of any alphabet before the key word makes it part of another word.
        {u"비token=abc"_s, u"비token=abc"_s},
        {u"password=a, token=b, bearer c"_s,
         u"password=[REDACTED], token=[REDACTED], bearer [REDACTED]"_s},
        // Half a surrogate pair must not switch the masking off.
        {QString(QChar(0xd800)) + u" token=abc"_s, u"\ufffd token=[REDACTED]"_s},
        {u"token=abc🚀"_s, u"token=[REDACTED]"_s},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(redacted(row.text), row.expected) << qPrintable(row.text);
    }
}

TEST(Redaction, aTextThatTheRulesCannotGoThroughIsWithheldAsAWhole)
{
    const QString name = u"BRACKWEN_TOKEN"_s;
    const QString secret = u" BRACKWEN_TOKEN=hunter2"_s;
    EXPECT_EQ(redacted(name.repeated(20) + secret),
              name.repeated(20) + u" BRACKWEN_TOKEN=[REDACTED]"_s);
    // Also when it gives up only after some matches.
    for (const QString &before : {QString(), u"password=a, "_s, u"BRACKWEN_X_TOKEN=a, "_s}) {
        EXPECT_EQ(redacted(before + name.repeated(2000) + secret), u"[REDACTED]"_s);
    }
}

} // namespace bram
