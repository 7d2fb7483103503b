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

    for (const bool noColor : {false, true}) {
        noColor ? qputenv("NO_COLOR", "1") : qunsetenv("NO_COLOR");
        Terminal terminal(57);
        TerminalOutput toTerminal(terminal.inner());
        toTerminal.write(twoLines);
        EXPECT_EQ(toTerminal.columns(), 57);
        QByteArray shown = terminal.received();
        EXPECT_EQ(shown.startsWith("\033[1;31ma"), !noColor);
        shown.replace("\033[1;31m", "").replace("\033[0m", "").replace("\r\n", "\n");
        EXPECT_EQ(shown, withoutColours);
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

TEST(TerminalOutput, SaysOnceThatNobodyReadsAnyMore)
{
    enum class Cause { ReaderGone, NoDescriptor, TooFarBehind };
    for (const Cause cause : {Cause::ReaderGone, Cause::NoDescriptor, Cause::TooFarBehind}) {
        OutputPipe pipe;
        TerminalOutput output(pipe.inner());
        int closed = 0;
        QObject::connect(&output, &TerminalOutput::closed, &output, [&] { ++closed; });
        if (cause == Cause::ReaderGone) {
            pipe.closeOuter();
        } else if (cause == Cause::NoDescriptor) {
            pipe.closeInner();
        }
        const QString large(32 * 1024 * 1024, u'x');
        const int times = cause == Cause::TooFarBehind ? 3 : 1;
        for (int i = 0; i < times; ++i) {
            output.write({{cause == Cause::TooFarBehind ? large : u"x"_s, LineStyle::Plain}});
        }
        EXPECT_EQ(closed, 0); // in a turn of its own
        EXPECT_TRUE(waitUntil([&] { return closed > 0; }));
        output.write({{u"y"_s, LineStyle::Plain}});
        output.flush(1000);
        QCoreApplication::processEvents();
        EXPECT_EQ(closed, 1);
    }
}
