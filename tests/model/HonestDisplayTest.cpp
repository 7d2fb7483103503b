// SPDX-License-Identifier: Apache-2.0
#include "model/HonestDisplay.h"
#include "model/HonestProperties.h"

#include <QList>
#include <QRandomGenerator>

#include <gtest/gtest.h>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
/// A text of code points, lone surrogates included.
QString fromCodePoints(const QList<char32_t> &codePoints)
{
    QString text;
    for (const char32_t c : codePoints) {
        text.append(QChar::fromUcs4(c));
    }
    return text;
}

void expectHonest(const QString &source)
{
    const QString fault = test::dishonesty(source);
    ASSERT_TRUE(fault.isEmpty()) << qPrintable(fault);
}
} // namespace

TEST(HonestDisplay, OrdinaryCommandsStayAsTheyAre)
{
    for (const QString &command :
         {u""_s, u"ls -la ~/Downloads"_s, u"git commit -m 'Änderung: naïve façade'"_s,
          u"echo e\u0301 o\u0302\u0323"_s, u"echo 안녕하세요 | wc -c"_s,
          u"echo \u1112\u1161\u11ab\u1100\u1173\u11af"_s, u"echo 👍🏽 🇰🇷 🎉"_s, u"echo 漢字 かな"_s,
          u"echo 'สวัสดีครับ' नमस्ते Привет"_s, u"if true; then\n  ls\nfi\n"_s,
          u"a   b\n\n\nc → d\n"_s + QString(64, u' ') + u"e"_s,
          u"awk '{print $1}' <a >b 2>&1 \\\n  && x=\"${y:-z}\" `w` # ~^%!?@;,"_s}) {
        EXPECT_EQ(honestDisplay(command), (HonestText {command, false})) << qPrintable(command);
    }
}

TEST(HonestDisplay, MarksWhatCouldMislead)
{
    struct Row {
        QString source;
        QString shown;
    };
    const Row rows[] = {
        {u"a\tb\rc\u001b[2Jd\0e"_s, u"a⟨U+0009⟩b⟨U+000D⟩c⟨U+001B⟩[2Jd⟨U+0000⟩e"_s},
        {u"x\u0085\u009b\u007f"_s, u"x⟨U+0085⟩⟨U+009B⟩⟨U+007F⟩"_s},
        {u"a\u202Eb\u2066c"_s, u"a⟨U+202E⟩b⟨U+2066⟩c"_s},
        {u"rm שלום ٣"_s, u"rm ⟨U+05E9⟩⟨U+05DC⟩⟨U+05D5⟩⟨U+05DD⟩ ⟨U+0663⟩"_s},
        {u"a\u200d\u200b\u00ad\ufeffb"_s, u"a⟨U+200D⟩⟨U+200B⟩⟨U+00AD⟩⟨U+FEFF⟩b"_s},
        {u"❤\ufe0f\U000e0141\U000e0101"_s, u"❤⟨U+FE0F⟩⟨U+E0141⟩⟨U+E0101⟩"_s},
        {u"\u115f\u1160\u3164\uffa0\u2800"_s, u"⟨U+115F⟩⟨U+1160⟩⟨U+3164⟩⟨U+FFA0⟩⟨U+2800⟩"_s},
        {u"a\u00a0b\u3000c\u2028d\u2029"_s, u"a⟨U+00A0⟩b⟨U+3000⟩c⟨U+2028⟩d⟨U+2029⟩"_s},
        {u"\ue000\U000f0000\u0378\ufffe"_s, u"⟨U+E000⟩⟨U+F0000⟩⟨U+0378⟩⟨U+FFFE⟩"_s},
        {fromCodePoints({0xd83d, U'x', 0xde00}), u"⟨U+D83D⟩x⟨U+DE00⟩"_s},
        {u"⟨U+202E⟩"_s, u"⟨U+27E8⟩U+202E⟩"_s},
        {u"〈1 blank〉"_s, u"⟨U+3008⟩1 blank〉"_s},
        {u"\u0301a\u0301 \u0301\n\u0301\t\u0301"_s,
         u"⟨U+0301⟩a\u0301 ⟨U+0301⟩\n⟨U+0301⟩⟨U+0009⟩⟨U+0301⟩"_s},
        {u"a\u0301\u0301\u0301\u0301\u0301"_s, u"a\u0301\u0301\u0301\u0301⟨U+0301⟩"_s},
        {u"1\u20e3"_s, u"1⟨U+20E3⟩"_s},
        {u"a\u1161b\u11a8 각\u1161"_s, u"a⟨U+1161⟩b⟨U+11A8⟩ 각⟨U+1161⟩"_s},
        {u"a   b    c"_s, u"a   b⟨4 blanks⟩c"_s},
        {u"a\n\tb\t→"_s, u"a\n→       b⟨U+0009⟩→"_s},
        {u"       \t\u0301"_s, u"       →⟨U+0301⟩"_s},
        {u"a \nb  \n \n"_s, u"a⟨1 blank⟩\nb⟨2 blanks⟩\n⟨1 blank⟩\n"_s},
        {u"a "_s, u"a⟨1 blank⟩"_s},
        {u"ls\n\n\n\nrm"_s, u"ls⟨4 line feeds⟩\nrm"_s},
        {u"ls "_s + QString(300, u'\n'), u"ls⟨1 blank⟩⟨300 line feeds⟩\n"_s},
    };
    for (const Row &row : rows) {
        const HonestText shown = honestDisplay(row.source);
        EXPECT_EQ(shown.text, row.shown) << qPrintable(shown.text);
        EXPECT_TRUE(shown.marked) << qPrintable(row.shown);
        expectHonest(row.source);
    }
    EXPECT_EQ(honestLine(u"a \nb \u001b"_s).text, u"a ⟨U+000A⟩b ⟨U+001B⟩"_s);
    EXPECT_EQ(honestLine(u"main"_s), (HonestText {u"main"_s, false}));
}

TEST(HonestDisplay, IndentationIsDrawnAndRaisesNoAlarm)
{
    struct Row {
        QString source;
        QString shown;
    };
    const Row drawn[] = {
        {u"\tgo build\n\t\tif x {"_s, u"→       go build\n→       →       if x {"_s},
        {u"  \tx\n       \ty\n        \tz"_s, u"  →     x\n       →y\n        →       z"_s},
        {u"    if x:\n            pass"_s, u"    if x:\n            pass"_s},
    };
    for (const Row &row : drawn) {
        EXPECT_EQ(honestDisplay(row.source), (HonestText {row.shown, false}))
            << qPrintable(row.shown);
        expectHonest(row.source);
    }

    const Row harmless[] = {
        {u"→       x\n       →y\n￫x"_s, u"⟨U+2192⟩⟨7 blanks⟩x\n       ⟨U+2192⟩y\n⟨U+FFEB⟩x"_s},
        {u"a\n    \n \t\nb"_s, u"a\n⟨4 blanks⟩\n ⟨U+0009⟩\nb"_s},
    };
    EXPECT_FALSE(honestDisplay(u"→ x\n       →y\n￫x").suspicious);
    for (const Row &row : harmless) {
        EXPECT_EQ(honestDisplay(row.source).text, row.shown);
        expectHonest(row.source);
    }
    EXPECT_FALSE(honestDisplay(harmless[1].source).suspicious);

    const QString tooDeep(65, u' ');
    for (const QString &source :
         {tooDeep + u"a"_s, u"\t\t\t\t\t\t\t\t a"_s, u"a    b"_s, u"a\tb"_s, u"a\n    b\u200b"_s,
          u"    a "_s, u"    a\t"_s, u"a\n\n\n\n    b"_s, u"a\r    b"_s, u"a\n"_s + tooDeep}) {
        EXPECT_TRUE(honestDisplay(source).suspicious) << qPrintable(source);
        expectHonest(source);
    }
    EXPECT_EQ(honestDisplay(tooDeep + u'a').text, u"⟨65 blanks⟩a"_s);
    EXPECT_EQ(honestLine(u"\ta\n    b").text, u"⟨U+0009⟩a⟨U+000A⟩⟨4 blanks⟩b"_s)
        << "there is no room for it on one line";
    EXPECT_EQ(indentationLength(u"  →     x → y"), 8);
    EXPECT_EQ(indentationLength(u""), 0);
}

TEST(HonestDisplay, EveryCodePointIsShownHonestly)
{
    for (char32_t c = 0; c <= 0x10FFFF; ++c) {
        expectHonest(u'a' + fromCodePoints({c}) + u'b');
        if (testing::Test::HasFatalFailure()) {
            return;
        }
    }
}

TEST(HonestDisplay, RandomMixturesAreRebuiltExactly)
{
    QRandomGenerator random(20240611);
    const QList<char32_t> nasty {U' ',    U' ',   U' ',    U'\n',  U'\n',  U'\t',  U'→',   U'\r',
                                 0x1b,    0x9b,   U'⟨',    U'⟩',   0x202e, 0x2069, 0x05d0, 0x0660,
                                 0x200d,  0xfe0f, 0xe0041, 0x115f, 0x1160, 0x3164, 0xffa0, 0x2800,
                                 0x00a0,  0x2028, 0xe000,  0x0378, 0xd800, 0xdbff, 0xdc00, 0x0301,
                                 0x20dd,  0x1100, 0x1161,  0x11a8, 0xac00, 0xac01, U'a',   U'/',
                                 0x1f600, 0x034f, 0x0e33,  0x3008, U'1'};
    for (int round = 0; round < 20'000; ++round) {
        QList<char32_t> codePoints(random.bounded(40));
        for (char32_t &c : codePoints) {
            c = random.bounded(4) == 0 ? char32_t(random.bounded(0x110000))
                                       : nasty[random.bounded(int(nasty.size()))];
        }
        expectHonest(fromCodePoints(codePoints));
        if (testing::Test::HasFatalFailure()) {
            return;
        }
    }
}

} // namespace bram
