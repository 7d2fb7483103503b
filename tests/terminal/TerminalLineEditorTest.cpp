// SPDX-License-Identifier: Apache-2.0
#include "ui/terminal/TerminalLineEditor.h"
#include "Descriptors.h"
#include "Screen.h"
#include "support/Waiting.h"
#include "ui/terminal/TerminalInput.h"
#include "ui/terminal/TerminalOutput.h"

#include <gmock/gmock.h>

#include <termios.h>

using namespace bram;
using namespace bram::test;
using namespace Qt::StringLiterals;
using testing::ElementsAre;

/// The terminal library forgets a few bytes for each editor made; the leak checker of a sanitized build
/// asks here what is known.
extern "C" const char *__lsan_default_suppressions();
extern "C" const char *__lsan_default_suppressions()
{
    return "leak:libtinfo";
}

namespace
{

/// A person at a terminal of 40 columns.
class LineEditor : public testing::Test
{
protected:
    LineEditor()
    {
        qputenv("TERM", "xterm");
        output = std::make_unique<TerminalOutput>(terminal.inner());
        tcgetattr(terminal.inner(), &settingsBefore);
        editor = std::make_unique<TerminalLineEditor>(terminal.inner(), *output);
        editor->setMomentSource([this] { return moment; });
        QObject::connect(editor.get(), &LineSource::lineEntered, editor.get(),
                         [this](const QString &text, DialogueMoment begunAt) {
                             entered.push_back(
                                 (text + u'@' + QString::number(begunAt)).toStdString());
                         });
        QObject::connect(editor.get(), &LineSource::endOfInput, editor.get(), [this] { ++ends; });
        editor->start();
        EXPECT_TRUE(shows({u"bram>"_s}));
    }

    void type(const QByteArray &keys)
    {
        terminal.send(keys);
        editor->readWaiting();
    }
    bool shows(const QStringList &rows)
    {
        const bool shown = waitUntil(
            [&] {
                screen.take(terminal.received());
                return screen.rows() == rows;
            },
            3000);
        EXPECT_EQ(screen.unknown(), QString());
        EXPECT_TRUE(shown) << qPrintable(screen.rows().join(u'\n'));
        return shown;
    }
    void announce(const QString &text)
    {
        editor->printAbove([&] { output->write({{text, LineStyle::Plain}}); });
    }

    Terminal terminal {40};
    termios settingsBefore {};
    std::unique_ptr<TerminalOutput> output;
    std::unique_ptr<TerminalLineEditor> editor;
    Screen screen {40};
    DialogueMoment moment = 0;
    std::vector<std::string> entered;
    int ends = 0;
};

const QByteArray leftArrow = "\033[D";
const QByteArray upArrow = "\033[A";
} // namespace

TEST_F(LineEditor, AnAnnouncementDoesNotTearTheLineBeingTyped)
{
    type("deny 12");
    type(leftArrow + leftArrow);
    announce(u"Request #3"_s);
    EXPECT_TRUE(shows({u"Request #3"_s, u"bram> deny 12"_s}));
    EXPECT_EQ(screen.column(), 11);
    type("3");
    EXPECT_TRUE(shows({u"Request #3"_s, u"bram> deny 312"_s}));
    // Over two rows, and exactly to the end of one.
    type("\x15" + QByteArray(34, 'y'));
    announce(u"Request #4"_s);
    EXPECT_TRUE(shows({u"Request #3"_s, u"Request #4"_s, u"bram> "_s + QString(34, u'y')}));
    type("zz");
    announce(u"Request #5"_s);
    EXPECT_TRUE(shows({u"Request #3"_s, u"Request #4"_s, u"Request #5"_s,
                       u"bram> "_s + QString(34, u'y'), u"zz"_s}));
    type("\n");
    EXPECT_TRUE(waitUntil([&] { return !entered.empty(); }));
    std::string whole(34, 'y');
    whole += "zz@0";
    EXPECT_THAT(entered, ElementsAre(whole));
}

TEST_F(LineEditor, ASecretIsNeitherShownNorRemembered)
{
    type("hal"); // typed ahead
    editor->hideInput(true);
    EXPECT_TRUE(shows({u"(hidden)>"_s}));
    type("lo-x\x7F\xEA\xB0\x80");
    announce(u"Request #3"_s);
    EXPECT_TRUE(shows({u"Request #3"_s, u"(hidden)>"_s}));
    type("\n");
    ASSERT_TRUE(waitUntil([&] { return !entered.empty(); }));
    EXPECT_THAT(entered, ElementsAre("hallo-가@0"));
    editor->hideInput(false);
    EXPECT_TRUE(shows({u"Request #3"_s, u"bram>"_s}));
    type("123456789:Token-in-the-test_which\n"); // pasted too early
    ASSERT_TRUE(waitUntil([&] { return entered.size() == 2; }));
    type(upArrow);
    type("list\n");
    ASSERT_TRUE(waitUntil([&] { return entered.size() == 3; }));
    EXPECT_EQ(entered.back(), "list@0");
}

TEST_F(LineEditor, AResizeNeverErasesWhatStandsAbove)
{
    announce(u"above"_s);
    type("deny 1");
    terminal.resize(60);
    screen.setColumns(60);
    type("2");
    EXPECT_TRUE(shows({u"above"_s, u"bram> deny 12"_s}));
    type(QByteArray(20, 'x'));
    terminal.resize(20); // as on a terminal that lets too long rows be
    screen.setColumns(20);
    announce(u"Request #3"_s);
    screen.take(terminal.received());
    const QStringList rows = screen.rows();
    ASSERT_GE(rows.size(), 4);
    EXPECT_EQ(rows.first(), u"above"_s);
    EXPECT_EQ(rows.sliced(rows.size() - 3),
              QStringList({u"Request #3"_s, u"bram> deny 12xxxxxxx"_s, QString(13, u'x')}));
}

TEST_F(LineEditor, KeysEditAndLinesAreRemembered)
{
    struct Row {
        QByteArray keys;
        QByteArray line;
    };
    const QByteArray alt = "\033x";
    const Row rows[] = {
        {"deny 1\r", "deny 1"},
        {"가나다\x7f\x7f라\n", "가라"}, // Korean, typed and erased
        {"b" + leftArrow
             + "a\033[F"
               "c\033[H"
               "x\n",
         "xabc"},
        {upArrow + "\n", "xabc"},
        {"lisst" + leftArrow + "\x7f\n", "list"},
        {"ab\033[D\033[3~c\n", "ac"},
        {"deny all\x15quit\n", "quit"},
        {"one two\x17three\n", "one three"},
        {"a\033[1;5Pb\033OPc\033[15~\x1c\x1d\t\n", "abc"}, // keys without a meaning
        {"\xff\xfe"
         "a\n",
         "\xef\xbf\xbd\xef\xbf\xbd"
         "a"},
        {alt + "\n", "x"},
        {"\xea", ""},
        {"\xb0\x80\n", "가"}, // a letter in two pieces
        {QByteArray(5000, 'x') + "\n", QByteArray(4096, 'x')},
    };
    QList<QByteArray> expected;
    for (const Row &row : rows) {
        for (qsizetype at = 0; at < row.keys.size(); at += 1000) {
            type(row.keys.mid(at, 1000));
            screen.take(terminal.received());
        }
        if (row.line.isEmpty()) {
            continue;
        }
        expected.append(row.line);
        ASSERT_TRUE(waitUntil([&] { return entered.size() == size_t(expected.size()); }))
            << row.line.toStdString();
        EXPECT_EQ(entered.back(), row.line.toStdString() + "@0");
    }
}

TEST_F(LineEditor, ALineIsAsOldAsItsFirstKey)
{
    moment = 1;
    type("x");
    moment = 2;
    type("\x7f"); // empty again: what comes now is a new line
    moment = 3;
    type("deny");
    moment = 4;
    terminal.send(" 1\nlist");
    editor->readWaiting();
    moment = 5;
    type("\n");
    ASSERT_TRUE(waitUntil([&] { return entered.size() == 2; }));
    EXPECT_THAT(entered, ElementsAre("deny 1@3", "list@4"));
}

TEST_F(LineEditor, CtrlDOnAnEmptyLineAndCtrlCEndAndTheTerminalIsAsBefore)
{
    type("a\x04"); // not empty: nothing ends
    EXPECT_TRUE(shows({u"bram> a"_s}));
    type("\x7f");
    type("\x04list\n");
    EXPECT_TRUE(waitUntil([&] { return ends == 1; }));
    EXPECT_TRUE(entered.empty());
    EXPECT_TRUE(shows({}));
    editor.reset();
    termios settings {};
    tcgetattr(terminal.inner(), &settings);
    EXPECT_EQ(settings.c_lflag, settingsBefore.c_lflag);
    EXPECT_EQ(settings.c_iflag, settingsBefore.c_iflag);
    EXPECT_EQ(settings.c_oflag, settingsBefore.c_oflag);
}

TEST_F(LineEditor, CtrlCEndsAlsoWithinALine)
{
    type("deny 1\x03\n");
    EXPECT_TRUE(waitUntil([&] { return ends == 1; }));
    EXPECT_TRUE(entered.empty());
    announce(u"Goodbye"_s);
    EXPECT_TRUE(shows({u"Goodbye"_s}));
}

TEST_F(LineEditor, ATerminalThatGoesAwayIsTheEnd)
{
    terminal.closeOuter();
    EXPECT_TRUE(waitUntil([&] { return ends == 1; }));
}

TEST(LineSource, IsChosenByWhatBothEndsAre)
{
    Terminal terminal(80);
    OutputPipe pipe;
    const auto isEditor = [](int input, int output, const char *kind) {
        qputenv("TERM", kind);
        TerminalOutput out(output);
        return dynamic_cast<TerminalLineEditor *>(makeLineSource(input, out).get()) != nullptr;
    };
    EXPECT_TRUE(isEditor(terminal.inner(), terminal.inner(), "xterm"));
    EXPECT_FALSE(isEditor(terminal.inner(), terminal.inner(), "dumb"));
    EXPECT_FALSE(isEditor(terminal.inner(), terminal.inner(), ""));
    EXPECT_FALSE(isEditor(terminal.inner(), pipe.inner(), "xterm"));
    EXPECT_FALSE(isEditor(pipe.outer(), terminal.inner(), "xterm"));
}
