// SPDX-License-Identifier: Apache-2.0
#include "ui/terminal/TerminalOutput.h"
#include "Descriptors.h"
#include "support/Waiting.h"

#include <gmock/gmock.h>

using namespace bram;
using namespace bram::test;
using namespace Qt::StringLiterals;

namespace
{
const TerminalLines twoLines {{u"a\x1b[2J\r\nb"_s, LineStyle::Danger}, {u"가"_s, LineStyle::Plain}};
const QByteArray withoutColours = "a\xef\xbf\xbd[2J\xef\xbf\xbd\xef\xbf\xbd"
                                  "b\n가\n";
} // namespace

TEST(TerminalOutput, ColoursOnATerminalOnlyAndNoControlCharacterOfALineAnywhere)
{
    OutputPipe pipe;
    TerminalOutput toPipe(pipe.inner());
    toPipe.write(twoLines);
    EXPECT_EQ(pipe.received(), withoutColours);
    EXPECT_EQ(toPipe.columns(), 0);

    enum class Wish { Colours, NoColour, NoEscapes };
    for (const Wish wish : {Wish::Colours, Wish::NoColour, Wish::NoEscapes}) {
        wish == Wish::NoColour ? qputenv("NO_COLOR", "1") : qunsetenv("NO_COLOR");
        qputenv("TERM", wish == Wish::NoEscapes ? "dumb" : "xterm");
        Terminal terminal(57);
        TerminalOutput toTerminal(terminal.inner());
        toTerminal.write(twoLines);
        EXPECT_EQ(toTerminal.columns(), 57);
        QByteArray shown = terminal.received();
        EXPECT_EQ(shown.startsWith("\033[1;31ma"), wish == Wish::Colours);
        shown.replace("\033[1;31m", "").replace("\033[0m", "").replace("\r\n", "\n");
        EXPECT_EQ(shown, withoutColours);
        toTerminal.write({{u"| >   x"_s, LineStyle::Plain, 2, 6}});
        EXPECT_EQ(terminal.received(),
                  wish == Wish::Colours ? "| \033[2m>   \033[0mx\r\n" : "| >   x\r\n");
    }
    qunsetenv("NO_COLOR");
}

TEST(TerminalOutput, NeverWaitsForAReaderAndLosesNothing)
{
    OutputPipe pipe;
    TerminalOutput output(pipe.inner());
    QByteArray expected;
    for (int i = 0; i < 20'000; ++i) {
        const QString text = u"line number %1 of many"_s.arg(i);
        output.write({{text, LineStyle::Plain}});
        expected += text.toUtf8() + '\n';
    }
    EXPECT_EQ(output.given(), expected.size());
    EXPECT_LT(output.written(), output.given());
    EXPECT_GT(output.written(), 0);
    QByteArray received;
    EXPECT_TRUE(waitUntil([&] {
        received += pipe.received();
        return received.size() >= expected.size();
    }));
    EXPECT_EQ(received, expected);
    EXPECT_EQ(output.written(), output.given());
}

TEST(TerminalOutput, AReaderFarBehindMissesLinesButNoQuestionAndIsToldHowMany)
{
    OutputPipe pipe;
    TerminalOutput output(pipe.inner());
    int closed = 0;
    qint64 leftOut = -1;
    QObject::connect(&output, &TerminalOutput::closed, &output, [&] { ++closed; });
    QObject::connect(&output, &TerminalOutput::caughtUp, &output,
                     [&](qint64 lines) { leftOut = lines; });
    EXPECT_TRUE(output.write({{QString(8 * 1024 * 1024, u'x'), LineStyle::Plain}}));
    const DialogueMoment given = output.given();
    for (int i = 0; i < 50; ++i) {
        EXPECT_FALSE(output.write({{QString(8 * 1024 * 1024, u'y'), LineStyle::Plain}, {}}));
    }
    EXPECT_EQ(output.given(), given); // what was left out counts as seen by nobody
    EXPECT_TRUE(
        output.write({{u"allow all?"_s, LineStyle::Plain}}, TerminalOutput::WhenBehind::Keep));
    QByteArray received;
    EXPECT_TRUE(waitUntil([&] {
        received += pipe.received();
        return leftOut >= 0;
    }));
    received += pipe.received();
    EXPECT_EQ(leftOut, 100);
    EXPECT_TRUE(received.endsWith("x\nallow all?\n"));
    EXPECT_TRUE(output.write({{u"z"_s, LineStyle::Plain}}));
    EXPECT_EQ(pipe.received(), "z\n");
    EXPECT_EQ(closed, 0);
}

TEST(TerminalOutput, SaysOnceThatNobodyReadsAnyMore)
{
    enum class Cause { ReaderGone, NoDescriptor };
    for (const Cause cause : {Cause::ReaderGone, Cause::NoDescriptor}) {
        OutputPipe pipe;
        TerminalOutput output(pipe.inner());
        int closed = 0;
        QObject::connect(&output, &TerminalOutput::closed, &output, [&] { ++closed; });
        if (cause == Cause::ReaderGone) {
            pipe.closeOuter();
        } else {
            pipe.closeInner();
        }
        output.write({{u"x"_s, LineStyle::Plain}});
        EXPECT_EQ(closed, 0); // in a turn of its own
        EXPECT_TRUE(waitUntil([&] { return closed > 0; }));
        output.write({{u"y"_s, LineStyle::Plain}});
        output.flush(1000);
        QCoreApplication::processEvents();
        EXPECT_EQ(closed, 1);
    }
}
