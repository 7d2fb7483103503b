// SPDX-License-Identifier: Apache-2.0
#include "allowlist/CommandDigest.h"

#include <QSet>

#include <gtest/gtest.h>

namespace bram
{
namespace
{

using namespace Qt::StringLiterals;

TEST(CommandDigest, IsTheSha256OfTheFoldedText)
{
    // printf '%s' 'ls -la' | sha256sum
    const QString expected = u"1de700c29687cae34561545f50d3c8b3d9afe88e04cc11069f8a6dc6e4ce9464"_s;
    const auto digest = normalizedCommandDigest(u"ls -la");
    ASSERT_TRUE(digest);
    EXPECT_TRUE(isCommandDigest(*digest));
    EXPECT_EQ(digest, expected);
    for (const QString &same : {u"ls  -la"_s, u" ls -la\n"_s, u"ls\t-la"_s, u"ls \r\n\f\v -la"_s,
                                u"ls\u00a0-la"_s, u"ls\u2028-la"_s, u"ls -la\u3000"_s}) {
        EXPECT_EQ(normalizedCommandDigest(same), expected) << qPrintable(same);
    }
    for (const QString &other :
         {u"ls -lA"_s, u"ls-la"_s, u"ls\u200b-la"_s, u"ls -la \\"_s, u"l\u0000s -la"_s}) {
        EXPECT_NE(normalizedCommandDigest(other), expected) << qPrintable(other);
    }
    EXPECT_NE(normalizedCommandDigest(u"결제"), normalizedCommandDigest(u"송금"));
}

TEST(CommandDigest, IsAbsentWhereThereIsNoCommandToTellFromOthers)
{
    for (const QString &text : {u""_s, u" \t\r\n"_s, u"\u00a0\u3000"_s, u"ls "_s + QChar(0xd800),
                                u"ls "_s + QChar(0xdc00) + QChar(0xd800)}) {
        EXPECT_EQ(normalizedCommandDigest(text), std::nullopt) << qPrintable(text);
    }
    EXPECT_TRUE(normalizedCommandDigest(u"ls \U0001f512"));
    const QString proper(64, u'a');
    EXPECT_TRUE(isCommandDigest(proper));
    for (const QString &text : {QString(64, u'A'), QString(63, u'a'), QString(65, u'a'),
                                QString(64, u'g'), QString(64, u'１'), proper + u'\n', QString()}) {
        EXPECT_FALSE(isCommandDigest(text)) << qPrintable(text);
    }
}

TEST(CommandDigest, OnlyPlainCommandsAreOfOneFormWhateverTheirBlanks)
{
    for (const QString &text :
         {u"a b"_s, u" \na\tb  c\t\n"_s, u"a=1 b-c /d/e | f && g > h # i"_s, u"결제 ~/x"_s}) {
        EXPECT_EQ(commandForm(text), plainCommandForm) << qPrintable(text);
    }
    QSet<QString> forms;
    const QString unusual = u"\n\r\v\f\u0001\u007f\u0085\u2028\u2029\u00a0\u3000'\"\\`$()[]{}"_s;
    for (const QChar character : unusual) {
        const QString form = commandForm(u"a"_s + character + u'b');
        EXPECT_TRUE(isCommandDigest(form)) << int(character.unicode());
        forms.insert(form);
    }
    for (const QString &text : {u"\u00a0ls"_s, u"ls\r"_s, u"ls\r\n"_s, u"ls \v\n"_s, u"ls\\"_s,
                                u"yes_to <<E"_s, u"yes_to <<E\n\n"_s}) {
        EXPECT_TRUE(isCommandDigest(commandForm(text))) << qPrintable(text);
        forms.insert(commandForm(text));
    }
    EXPECT_EQ(forms.size(), unusual.size() + 7);
    // printf '%s' 'ls "결제"' | sha256sum
    EXPECT_EQ(commandForm(u"ls \"결제\""),
              u"6987b97b71a4558c5fb7dbff098a4cb662b9a2f5afe8f698a1f84bb80cc970cb"_s);
}

} // namespace
} // namespace bram
