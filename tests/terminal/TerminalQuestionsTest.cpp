// SPDX-License-Identifier: Apache-2.0
#include "FrontEndFixture.h"

#include <QDir>
#include <QFile>

using namespace bram;
using namespace bram::test;
using namespace Qt::StringLiterals;

namespace
{

/// Operations that ask, over the real front-end.
class Questions : public FrontEndFixture
{
protected:
    static QCoro::Task<> note(QCoro::Task<qsizetype> asked, QList<qsizetype> *answers)
    {
        const qsizetype answer = co_await asked;
        answers->append(answer);
    }
    static QCoro::Task<> note(QCoro::Task<std::optional<QString>> asked,
                              QList<std::optional<QString>> *answers)
    {
        const auto answer = co_await asked;
        answers->append(answer);
    }
    void ask(const QString &title, const QStringList &buttons)
    {
        core->tasks().spawn(note(frontEnd->prompts().ask({.title = title,
                                                          .text = u"first\nsecond"_s,
                                                          .buttons = buttons,
                                                          .harmless = buttons.size() - 1}),
                                 &answers),
                            u"question"_s);
    }
    void askForFile(FileQuestion::Kind kind)
    {
        FileQuestion question;
        question.kind = kind;
        question.title = u"Where to?"_s;
        core->tasks().spawn(note(frontEnd->prompts().askForFile(question), &files), u"file"_s);
        EXPECT_TRUE(says(u"Where to?"_s));
    }
    [[nodiscard]] bool isAnswered(const QList<qsizetype> &expected)
    {
        return waitUntil([&] { return answers == expected; }, 2000);
    }

    QList<qsizetype> answers;
    QList<std::optional<QString>> files;
};

} // namespace

TEST_F(Questions, AreAnsweredByNumberOrWordsOneAfterTheOther)
{
    ask(u"One?"_s, {u"Yes please"_s, u"No"_s});
    ask(u"Two?"_s, {u"a"_s, u"b"_s, u"c"_s});
    ask(u"Three?"_s, {u"deny 1"_s, u"Keep"_s});
    EXPECT_TRUE(says(u"\nOne?\n  first\n  second\n  1) Yes please\n  2) No\n"_s));
    EXPECT_FALSE(shown.contains(u"Two?"_s));
    typeAndHear(u"  yes   PLEASE "_s, u"\nTwo?\n"_s);
    EXPECT_TRUE(isAnswered({0}));
    for (const QString &line :
         {u"0"_s, u"4"_s, u"-1"_s, u"ab"_s, u"yes please"_s, u"99999999999"_s}) {
        typeAndHear(line, u"Neither a command nor one of the choices 1 to 3: "_s + line);
    }
    typeAndHear(u"\x1b[2J"_s, u"choices 1 to 3: ⟨U+001B⟩[2J\n"_s);
    typeAndHear(QString(), u"The question is still open."_s);
    typeAndHear(u"3"_s, u"\nThree?\n"_s);
    EXPECT_TRUE(isAnswered({0, 2}));
    input.end();
    EXPECT_TRUE(isAnswered({0, 2, 1}));
    // Nothing is asked any more, but what it is about is told.
    ask(u"Four?"_s, {u"a"_s, u"b"_s});
    EXPECT_TRUE(isAnswered({0, 2, 1, 1}));
    EXPECT_TRUE(says(u"Four?\n  first\n  second\nNot answered: the input has ended.\n"_s));
}

TEST_F(Questions, CanBeLeftWithAnEmptyLineWhereThatIsAnAnswer)
{
    core->tasks().spawn(note(frontEnd->prompts().ask({.title = u"One?"_s,
                                                      .text = {},
                                                      .buttons = {u"a"_s, u"b"_s},
                                                      .harmless = Question::noButton}),
                             &answers),
                        u"question"_s);
    EXPECT_TRUE(says(u"an empty line means none."_s));
    input.type(u" "_s);
    EXPECT_TRUE(isAnswered({-1}));
}

TEST_F(Questions, ACommandStaysACommandAndRequestsAreDecidedMeanwhile)
{
    ask(u"One?"_s, {u"list"_s, u"No"_s});
    EXPECT_TRUE(says(u"One?"_s));
    typeAndHear(u"list"_s, u"No requests are pending."_s);
    typeAndHear(u"always-allow remove 15"_s,
                u"Write it so: always-allow remove DIGEST app|brackwen|both\n"_s);
    announceAndSee("a-1", u"Request #1"_s);
    EXPECT_TRUE(says(u"  | ls -la\n"_s));
    typeAndHear(u"deny 1"_s, u"#1 denied."_s);
    ASSERT_EQ(received.size(), 1);
    EXPECT_TRUE(answers.isEmpty());
    input.type(u"1"_s);
    EXPECT_TRUE(isAnswered({0}));
    typeAndHear(u"1"_s, u"Unknown command: 1 (try `help`)"_s);
}

TEST_F(Questions, WhatWasTypedBeforeDoesNotAnswer)
{
    const DialogueMoment early = output.written();
    input.waiting = QStringList {u"1"_s}; // typed, and not read yet
    ask(u"One?"_s, {u"Yes"_s, u"No"_s});
    EXPECT_TRUE(says(u"Not answered: the question came after the line was begun"_s));
    input.typeBegunAt(early, u"yes"_s);
    EXPECT_TRUE(says(u"Not answered: "_s));
    EXPECT_TRUE(answers.isEmpty());
    input.type(u"2"_s);
    EXPECT_TRUE(isAnswered({1}));
}

TEST_F(Questions, AFileIsAPathThatCanBeUsed)
{
    const QString home = folder.path();
    const auto answered = [this](std::optional<QString> expected) {
        const auto count = files.size();
        return waitUntil([&] { return files.size() > count || !files.isEmpty(); }, 2000)
            && files.takeFirst() == expected;
    };
    askForFile(FileQuestion::Kind::SaveFile);
    typeAndHear(u"report.md"_s,
                u"Neither a command nor a path beginning with / or . or ~: report"_s);
    typeAndHear(u"deny 1 2"_s, u"Say which request: deny ID|all"_s);
    typeAndHear(home, u"This is a folder: "_s);
    typeAndHear(home + u"/no/report.md"_s, u"There is no folder for this file: "_s);
    EXPECT_TRUE(files.isEmpty());
    input.type(u"  "_s + home + u"/my report.md "_s);
    EXPECT_TRUE(answered(home + u"/my report.md"_s));

    // One that is there is replaced only after a word.
    QFile(home + u"/there"_s).open(QFile::WriteOnly);
    askForFile(FileQuestion::Kind::SaveFile);
    typeAndHear(home + u"/./there"_s, u"Replace the file?"_s);
    typeAndHear(u"keep it"_s, u"Where to?"_s);
    typeAndHear(home + u"/there"_s, u"Replace the file?"_s);
    input.type(u"1"_s);
    EXPECT_TRUE(answered(home + u"/there"_s));

    askForFile(FileQuestion::Kind::OpenFile);
    typeAndHear(home + u"/nothing"_s, u"There is no such file: "_s);
    input.type(home + u"/there"_s);
    EXPECT_TRUE(answered(home + u"/there"_s));
    askForFile(FileQuestion::Kind::Folder);
    typeAndHear(home + u"/there"_s, u"This is not a folder: "_s);
    input.type(home + u"/new/folder"_s);
    EXPECT_TRUE(answered(home + u"/new/folder"_s));
    EXPECT_TRUE(QFileInfo(home + u"/new/folder"_s).isDir());
    askForFile(FileQuestion::Kind::Folder);
    input.type(QString());
    EXPECT_TRUE(answered(std::nullopt));
    askForFile(FileQuestion::Kind::SaveFile);
    input.end();
    EXPECT_TRUE(answered(std::nullopt));
}

TEST_F(Questions, TheChoiceOfAgentIsMadeHere)
{
    ASSERT_TRUE(QDir(folder.path()).mkpath(u".brackwen"_s));
    QFile config(folder.filePath(u".brackwen/brackwen.json"_s));
    ASSERT_TRUE(config.open(QFile::WriteOnly));
    config.write("{\"agents\":{\"dev\":{},\"main\":{},\"x\\u001by\":{}}}");
    config.close();
    typeAndHear(u"agents"_s, u"  dev\n  main\n  x⟨U+001B⟩y\n* __all__  All agents"_s);
    typeAndHear(u"agent Main"_s, u"No agent has this name (`agents` lists them): Main"_s);
    typeAndHear(u"agent dev"_s, u"Only requests of this agent are shown: dev\n"_s);
    gateway.announce(item("a-1"));
    ASSERT_TRUE(waitUntil([&] { return board().find(u"a-1"_s) != nullptr; }));
    typeAndHear(u"list"_s, u"No requests are pending."_s);
    typeAndHear(u"deny a-1"_s, u"No pending request is meant by: a-1"_s);
    typeAndHear(u"agent __all__"_s, u"1) Apply Unrestricted\n"_s);
    typeAndHear(u"2"_s, u"Only requests of this agent are shown: dev\n"_s);
    input.type(u"agent main"_s);
    EXPECT_TRUE(says(u"Request #1"_s));
    input.type(u"agent __all__"_s);
    EXPECT_TRUE(says(u"1) Apply Unrestricted\n"_s));
    typeAndHear(u"Apply unrestricted"_s, u"Requests of every agent are shown.\n"_s);
    typeAndHear(u"agents"_s, u"* __all__"_s);

    typeAndHear(u"language kor"_s, u"이제"_s);
    typeAndHear(u"list"_s, u"에이전트"_s);
    typeAndHear(u"language eng"_s, u"The texts are in English now."_s);
    typeAndHear(u"shared-polling on"_s, u"may be fetched."_s);
    EXPECT_TRUE(core->sharedPolling().allowSharedBotPollingOverride());
    typeAndHear(u"shared-polling off"_s, u"are left to it."_s);
    EXPECT_FALSE(core->sharedPolling().allowSharedBotPollingOverride());
    typeAndHear(u"simulate"_s, u"sim-high-"_s);
    EXPECT_TRUE(says(u"\nSimulation Executed\n  Generated 2 synthetic"_s));
}
