// SPDX-License-Identifier: Apache-2.0
#include "practice/RawClient.h"
#include "support/ProgramUnderTest.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace bram
{
namespace
{
using namespace Qt::StringLiterals;
using test::outcome;
using test::RawClient;

class Program : public test::ProgramUnderTest
{
public:
    explicit Program(const QStringList &arguments)
        : ProgramUnderTest(QStringLiteral(BRAM_PRACTICE_GATEWAY), arguments)
    {
    }

    QUrl url()
    {
        const QString prefix = u"listening on "_s;
        EXPECT_TRUE(says(prefix) && says(u"\n"_s));
        return QUrl(output().section(u'\n', 0, 0).sliced(prefix.size()));
    }
};

QString writeScript(const QTemporaryDir &folder, const QByteArray &text)
{
    QFile file(folder.filePath(u"script"_s));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(text);
    return file.fileName();
}

TEST(PracticeProgram, PlaysAScriptAndPrintsDecisions)
{
    const QTemporaryDir folder;
    Program program({u"--script"_s,
                     writeScript(folder,
                                 "wait-client\n"
                                 "request r-1 main echo \\u202E hello\n"
                                 "wait-decision r-1\n"
                                 "error approval not found\n"
                                 "request r-2 - ls\n"
                                 "wait-decision r-2\n"
                                 "close\n"
                                 "listen\n"
                                 "resolve r-2\n"
                                 "wait-client\n"
                                 "quit\n")});
    const QUrl url = program.url();
    RawClient client(url);
    ASSERT_TRUE(client.logIn());
    for (const auto &[id, answer] :
         {std::pair(u"r-1"_s, u"ok"_s), std::pair(u"r-2"_s, u"approval not found"_s)}) {
        EXPECT_EQ(client.takeEvent(u"exec.approval.requested"_s).value("id"_L1), id);
        EXPECT_EQ(outcome(client.call(u"exec.approval.resolve"_s,
                                      {{u"id"_s, id}, {u"decision"_s, u"deny"_s}})),
                  answer);
    }
    EXPECT_TRUE(program.says(u"request r-1 main echo ⟨U+202E⟩ hello"_s));
    EXPECT_TRUE(program.says(u"decision r-1 deny accepted"_s));
    EXPECT_TRUE(program.says(u"decision r-2 deny refused: approval not found"_s));
    EXPECT_TRUE(client.waitClosed());
    EXPECT_TRUE(program.says(u"resolved r-2 elsewhere"_s));
    ASSERT_TRUE(RawClient(url).logIn());
    EXPECT_EQ(program.ends(), 0);
}

TEST(PracticeProgram, SendsSamplesUntilItIsTerminated)
{
    Program program({u"--interval"_s, u"0.01"_s, u"--count"_s, u"2"_s});
    RawClient client(program.url());
    ASSERT_TRUE(client.logIn());
    EXPECT_FALSE(client.takeEvent(u"exec.approval.requested"_s).isEmpty());
    EXPECT_FALSE(client.takeEvent(u"exec.approval.requested"_s).isEmpty());
    program.signal(SIGTERM);
    EXPECT_EQ(program.ends(), 0) << qPrintable(program.output());
}

TEST(PracticeProgram, AsksForTheTokenAndNonce)
{
    Program program({u"--token"_s, u"abc"_s, u"--require-nonce"_s});
    const test::DeviceKey key;
    RawClient client(program.url());
    const QString nonce = client.takeEvent(u"connect.challenge"_s).value("nonce"_L1).toString();
    const QJsonObject auth {{u"token"_s, u"abc"_s}, {u"password"_s, u""_s}};
    const auto attempt = [&](const test::HandshakeParts &parts) {
        return outcome(client.call(u"connect"_s, connectParams(key, parts)));
    };
    EXPECT_EQ(attempt({.nonce = nonce}), u"unauthorized: token missing"_s);
    EXPECT_EQ(attempt({.signedToken = u"abc"_s, .auth = auth}), u"device nonce required"_s);
    EXPECT_EQ(attempt({.nonce = nonce, .signedToken = u"abc"_s, .auth = auth}), u"ok"_s);
    EXPECT_TRUE(program.says(u"client connected"_s));
}

TEST(PracticeProgram, RefusesABadCommandLineInOneLine)
{
    const QTemporaryDir folder;
    const QString badScript = writeScript(folder, "explode\n");
    const QStringList rows[] {
        {u"--bogus"_s},
        {u"extra"_s},
        {u"--port"_s, u"65536"_s},
        {u"--port"_s, u"x"_s},
        {u"--count"_s, u"-1"_s},
        {u"--interval"_s, u"0"_s},
        {u"--interval"_s, u"nan"_s},
        {u"--script"_s, badScript},
        {u"--script"_s, u"/nonexistent"_s},
        {u"--script"_s, badScript, u"--count"_s, u"1"_s},
    };
    for (const QStringList &arguments : rows) {
        Program program(arguments);
        EXPECT_EQ(program.ends(), 2) << qPrintable(arguments.join(u' '));
        EXPECT_EQ(program.errors().count(u'\n'), 1) << qPrintable(program.errors());
        EXPECT_EQ(program.output(), QString());
    }
}

} // namespace
} // namespace bram
