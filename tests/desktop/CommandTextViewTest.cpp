// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/CommandTextView.h"

#include "support/Waiting.h"

#include "model/HonestDisplay.h"

#include <QAccessible>
#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QScrollBar>
#include <QTextBlock>

#include <gmock/gmock.h>

#include <algorithm>
#include <ctime>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
void show(CommandTextView &view, const QString &command)
{
    view.resize(484, 112);
    view.show();
    view.setCommand(command);
    ASSERT_TRUE(test::waitUntil([&] { return view.isWhole(); }));
}

QString copiedFrom(CommandTextView &view)
{
    view.selectAll();
    view.copy();
    return QGuiApplication::clipboard()->text();
}

/// The parts of the text that are drawn as marks, or faintly.
QStringList marksIn(const CommandTextView &view,
                    QTextFormat::Property way = QTextFormat::BackgroundBrush)
{
    QStringList marks;
    for (QTextBlock block = view.document()->begin(); block.isValid(); block = block.next()) {
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextCharFormat format = it.fragment().charFormat();
            const bool isMark = format.hasProperty(QTextFormat::BackgroundBrush);
            if (format.hasProperty(way) && isMark == (way == QTextFormat::BackgroundBrush)) {
                marks.append(it.fragment().text());
            }
        }
    }
    return marks;
}
} // namespace

TEST(CommandTextView, IsCopiedAndToldAsItIsShown)
{
    const QString commands[] {
        u"ls"_s,
        u""_s,
        u"one\ntwo  three\n\nfour\n"_s,
        u"<b>no markup</b> &amp; nothing cut"_s,
        u"a\u202Eb\u00A0c\u2028d    e \nf"_s,
        u"한글 ⟨U+202E⟩ is forged"_s,
        u"one very long line; "_s.repeated(700) + u"end"_s,
        u"\u202E"_s.repeated(1500) + u"\nlast"_s,
        u"𝒳"_s.repeated(5000),
        u"\n"_s,
        u"x"_s.repeated(1999) + u"\n"_s,
        u"x"_s.repeated(2000) + u"\n"_s,
        u"x"_s.repeated(2001) + u"\ny\n"_s,
        u"a\nb\u202E\n\nc\n"_s.repeated(900),
        u"make:\n\tgo →\n   \tx\n"_s.repeated(200),
    };
    for (const QString &command : commands) {
        CommandTextView view;
        show(view, command);
        if (command.isEmpty()) {
            EXPECT_EQ(view.toPlainText(), QString());
        } else {
            EXPECT_EQ(copiedFrom(view), honestDisplay(command).text);
            auto &told = *QAccessible::queryAccessibleInterface(&view)->textInterface();
            EXPECT_EQ(told.text(0, told.characterCount()), honestDisplay(command).text);
            const int last = told.characterCount() - 1;
            told.setSelection(0, last, last + 1);
            EXPECT_EQ(view.textCursor().position(), view.document()->characterCount() - 1);
            view.copy();
            EXPECT_EQ(QGuiApplication::clipboard()->text(), told.text(last, last + 1));
            EXPECT_EQ(QGuiApplication::clipboard()->mimeData()->formats(),
                      QStringList {u"text/plain"_s});
        }
        EXPECT_EQ(view.isSuspicious(), honestDisplay(command).suspicious);
    }
}

TEST(CommandTextView, OnlyMarksStandOut)
{
    CommandTextView view;
    show(view, u"a\u202Eb ⟨U+200B⟩ c      d"_s);
    EXPECT_THAT(marksIn(view),
                testing::ElementsAre(u"⟨U+202E⟩"_s, u"⟨U+27E8⟩"_s, u"⟨6\u00A0blanks⟩"_s))
        << "what a command writes itself is no mark";

    show(view, u"\u202E"_s.repeated(1000));
    EXPECT_EQ(marksIn(view).join(QString()), u"⟨U+202E⟩"_s.repeated(1000))
        << "also where a piece of the line ends within a mark";

    show(view, u"x →\n  \ty → z\n"_s.repeated(50));
    EXPECT_EQ(marksIn(view, QTextFormat::ForegroundBrush).join(QString()),
              u"\u00A0\u00A0→\u00A0\u00A0\u00A0\u00A0\u00A0"_s.repeated(50))
        << "a tab is faint, an arrow is not";
}

TEST(CommandTextView, ALongLineIsWrappedAnywhereAndReachesItsEnd)
{
    CommandTextView view;
    show(view, u"x"_s.repeated(30'000));
    EXPECT_EQ(view.horizontalScrollBar()->maximum(), 0);
    view.moveCursor(QTextCursor::End);
    const QTextBlock last = view.document()->lastBlock();
    EXPECT_GT(last.layout()->lineCount(), 0);
    const int rowLength = view.document()->begin().layout()->lineAt(0).textLength();
    for (QTextBlock block = view.document()->begin(); block != last; block = block.next()) {
        EXPECT_EQ((block.length() - 1) % rowLength, 0) << "a piece ends where a row is full";
    }
    view.resize(300, 112);
    ASSERT_TRUE(test::waitUntil([&] { return view.isWhole(); }));
    EXPECT_EQ(copiedFrom(view), u"x"_s.repeated(30'000)) << "broken anew for another width";
}

TEST(CommandTextView, FindsTheSizeInWhichAllIsInView)
{
    const QSize least(484, 100);
    const QSize most(700, 420);
    const struct {
        QString command;
        bool isWhole;
    } rows[] {
        {u"ls"_s, true},
        {u"ls 한글\n"_s.repeated(12), true},
        {u"x"_s.repeated(700), true},
        {u"\tx\n"_s.repeated(15), true},
        {u"x\n"_s.repeated(40), false},
        {u"x"_s.repeated(5000), false},
        {u"y"_s.repeated(1'000'000), false},
    };
    for (const auto &row : rows) {
        CommandTextView view;
        show(view, row.command);
        const CommandFit fit = view.fit(least, most);
        EXPECT_EQ(fit.isWhole, row.isWhole) << qPrintable(row.command.left(9));
        EXPECT_EQ(fit.size.expandedTo(least).boundedTo(most), fit.size);
        view.resize(fit.size);
        EXPECT_TRUE(test::waitUntil([&] {
            return view.isWhole() && view.isAllVisible() == row.isWhole;
        })) << qPrintable(row.command.left(9));
        EXPECT_EQ(test::waitUntil([&] { return view.isEndSeen(); }, 300), row.isWhole);
    }
}

TEST(CommandTextView, AHugeCommandComesInWithoutHoldingTheLoopUp)
{
    const struct {
        const char *name;
        QString command;
        qint64 mostMs;
    } rows[] {
        {"16 kB in lines", u"echo some words of a usual line\n"_s.repeated(500), 50},
        {"16 kB in one line", u"echo some words of a usual line;"_s.repeated(500), 50},
        {"16 kB of marks", u"\u202E"_s.repeated(5000), 50},
        {"1 MB in lines", u"echo some words of a usual line\n"_s.repeated(32'000), 250},
        {"1 MB in one line", u"echo some words of a usual line;"_s.repeated(32'000), 250},
    };
    for (const auto &row : rows) {
        CommandTextView view;
        view.resize(484, 112);
        view.show();
        (void)test::waitUntil([&] { return view.isActiveWindow(); });
        // Time of the processor, so that a busy machine does not count.
        qint64 longestMs = 0;
        const auto turn = [&](const auto &work) {
            const std::clock_t before = std::clock();
            work();
            longestMs = std::max(longestMs, qint64(std::clock() - before) * 1000 / CLOCKS_PER_SEC);
        };
        turn([&] { view.setCommand(row.command); });
        do {
            turn([] { QCoreApplication::processEvents(); });
        } while (!view.isWhole());
        turn([] { QCoreApplication::processEvents(); });
        EXPECT_LT(longestMs, row.mostMs) << row.name;
    }
}

} // namespace bram
