// SPDX-License-Identifier: Apache-2.0
#include "ui/terminal/PipeLineReader.h"
#include "Descriptors.h"
#include "support/Waiting.h"

#include <QTemporaryFile>

#include <gmock/gmock.h>

#include <termios.h>

using namespace bram;
using namespace bram::test;
using namespace Qt::StringLiterals;
using testing::ElementsAre;

namespace
{

/// What a reader delivers: "text@moment" for a line, "refused: …", "end".
class Reading
{
public:
    explicit Reading(int descriptor,
                     PipeLineReader::LineStart lineStart = PipeLineReader::LineStart::WhenRead)
        : reader(descriptor, lineStart)
    {
        reader.setMomentSource([this] { return moment; });
        QObject::connect(&reader, &LineSource::lineEntered, &reader,
                         [this](const QString &text, DialogueMoment begunAt) {
                             delivered.push_back(
                                 (text + u'@' + QString::number(begunAt)).toStdString());
                         });
        QObject::connect(&reader, &LineSource::lineRefused, &reader, [this](const QString &reason) {
            delivered.push_back("refused: " + reason.toStdString());
        });
        QObject::connect(&reader, &LineSource::endOfInput, &reader, [this] { ended = true; });
        reader.start();
    }
    const std::vector<std::string> &untilEnd()
    {
        EXPECT_TRUE(waitUntil([this] { return ended; }));
        return delivered;
    }

    PipeLineReader reader;
    DialogueMoment moment = 0;
    std::vector<std::string> delivered;
    bool ended = false;
};

const std::string tooLong = "refused: A line of more than 64 KiB was refused.";
const std::string notUtf8 = "refused: A line that is not valid UTF-8 was refused.";

} // namespace

TEST(PipeLineReader, ALineCountsAsBegunWithItsFirstByte)
{
    InputPipe input;
    const int flags = fcntl(input.inner(), F_GETFL);
    Reading reading(input.inner());
    const std::pair<DialogueMoment, QByteArray> pieces[]
        = {{1, "de"}, {2, "ny 1\r\nlist\n\nal"}, {3, "l "}, {4, "가\nlast"}};
    for (const auto &[moment, bytes] : pieces) {
        reading.moment = moment;
        input.send(bytes);
        reading.reader.readWaiting();
    }
    reading.moment = 5;
    EXPECT_EQ(fcntl(input.inner(), F_GETFL), flags);
    input.closeOuter();
    EXPECT_THAT(reading.untilEnd(), ElementsAre("deny 1@1", "list@2", "@2", "all 가@2", "last@4"));
}

TEST(PipeLineReader, ALineOfATerminalThatEditsByItselfCountsAsBegunWhenTheOneBeforeEnded)
{
    InputPipe input;
    Reading reading(input.inner(), PipeLineReader::LineStart::AtPreviousEnd);
    reading.moment = 5;
    input.send("a\nb\n");
    reading.reader.readWaiting();
    reading.moment = 9;
    input.send("c\n");
    reading.reader.readWaiting();
    input.closeOuter();
    EXPECT_THAT(reading.untilEnd(), ElementsAre("a@0", "b@5", "c@5"));
}

TEST(PipeLineReader, RefusesLinesThatAreTooLongOrNotUtf8AndGoesOn)
{
    const std::string longest(PipeLineReader::maxLineBytes, 'x');
    const std::pair<std::string, std::vector<std::string>> rows[] = {
        {longest + "\nlist\n", {longest + "@0", "list@0"}},
        {longest + "x\nlist\n", {tooLong, "list@0"}},
        {longest + longest + longest + "\nlist", {tooLong, "list@0"}},
        {longest + "x", {tooLong}},
        {"\xff\nlist\n", {notUtf8, "list@0"}},
        {"a\xc3\n\xa9\n", {notUtf8, notUtf8}},
        {"\xc0\xaf\n\xed\xa0\x80\n\xf4\x90\x80\x80\n", {notUtf8, notUtf8, notUtf8}},
        {"list\nde\xe2\x82", {"list@0", notUtf8}},
        {"", {}},
    };
    for (const auto &[bytes, expected] : rows) {
        InputPipe input;
        Reading reading(input.inner());
        for (size_t at = 0; at < bytes.size(); at += 4096) {
            input.send(QByteArray::fromStdString(bytes.substr(at, 4096)));
            reading.reader.readWaiting();
        }
        input.closeOuter();
        EXPECT_EQ(reading.untilEnd(), expected);
    }
}

TEST(PipeLineReader, ReadsFilesAndNothingAtAll)
{
    const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
    EXPECT_TRUE(Reading(nothing).untilEnd().empty());
    close(nothing);

    // Longer than what is read at once: all of it waited already when the first of it was read.
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    const QByteArray line = QByteArray(999, 'x') + '\n';
    file.write(line.repeated(3000));
    file.flush();
    file.seek(0);
    Reading reading(file.handle());
    for (reading.moment = 7; !reading.ended; ++reading.moment) {
        reading.reader.readWaiting();
        QCoreApplication::processEvents();
    }
    ASSERT_EQ(reading.delivered.size(), 3000U);
    EXPECT_TRUE(reading.delivered.front().ends_with("@7"));
    EXPECT_TRUE(reading.delivered.back().ends_with("@7"));
}

TEST(PipeLineReader, ATerminalThatEditsByItselfDoesNotShowASecret)
{
    const Terminal terminal(40);
    const auto echoes = [&] {
        termios settings {};
        tcgetattr(terminal.inner(), &settings);
        return (settings.c_lflag & ECHO) != 0;
    };
    ASSERT_TRUE(echoes());
    {
        PipeLineReader reader(terminal.inner(), PipeLineReader::LineStart::AtPreviousEnd);
        reader.hideInput(true);
        EXPECT_FALSE(echoes());
        reader.hideInput(true);
        reader.hideInput(false);
        EXPECT_TRUE(echoes());
        reader.hideInput(true);
    }
    EXPECT_TRUE(echoes()) << "the program may end in the middle";
}
