// SPDX-License-Identifier: Apache-2.0
// The real program between the practice gateway, in a process of its own, and the practice Bot API here.
#include "practice/PracticeBotApi.h"
#include "support/ProgramFixture.h"
#include "system/Clock.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QJsonDocument>

#include <algorithm>

using namespace bram;
using namespace bram::test;
using namespace Qt::StringLiterals;

namespace
{

constexpr qint64 chat = -501;
const QString token = u"123456789:Token-in-the-test_which-is-42"_s;

class TelegramRoad : public ProgramFixture
{
protected:
    void SetUp() override
    {
        ProgramFixture::SetUp();
        ASSERT_TRUE(bot.listen());
        environment.insert(u"BRACKWEN_TELEGRAM_API_URL"_s, bot.url().toString());
        environment.insert(u"BRACKWEN_TELEGRAM_CHAT_ID"_s, QString::number(chat));
    }

    /// The chat may decide about the requests of agent "main"; `channel` is what the platform's own Telegram
    /// channel is set to.
    void configure(const QJsonObject &channel = {})
    {
        const QJsonObject peer {{u"kind"_s, u"group"_s}, {u"id"_s, QString::number(chat)}};
        const QJsonObject content {
            {u"channels"_s, QJsonObject {{u"telegram"_s, channel}}},
            {u"bindings"_s,
             QJsonArray {QJsonObject {
                 {u"agentId"_s, u"main"_s},
                 {u"match"_s, QJsonObject {{u"channel"_s, u"telegram"_s}, {u"peer"_s, peer}}}}}}};
        QDir(home.path()).mkpath(u".brackwen"_s);
        QFile file(home.filePath(u".brackwen/brackwen.json"_s));
        ASSERT_TRUE(file.open(QFile::WriteOnly));
        file.write(QJsonDocument(content).toJson());
    }

    /// The number of the button or key, waiting until it is there.
    qsizetype button(const QString &dataOrText)
    {
        qsizetype number = 0;
        EXPECT_TRUE(waitUntil(
            [&] {
                const auto buttons = bot.chats().pressable(chat);
                const auto found = std::ranges::find_if(buttons, [&](const auto &shown) {
                    return (shown.button.data.isEmpty() ? shown.button.text : shown.button.data)
                        == dataOrText;
                });
                number = found == buttons.end() ? 0 : found - buttons.begin() + 1;
                return number > 0;
            },
            20'000))
            << qPrintable(dataOrText);
        return number;
    }
    void press(const QString &dataOrText) { EXPECT_TRUE(bot.press(chat, button(dataOrText))); }
    [[nodiscard]] bool shows(const QString &text)
    {
        return waitUntil(
            [&] {
                const auto messages = bot.chats().messages(chat);
                return std::ranges::any_of(messages, [&](const PracticeMessage &message) {
                    return message.isFromBot && message.text.contains(text);
                });
            },
            20'000);
    }

    /// Where the token stands in what the program has written or said. The configuration is not its work.
    QStringList placesOfToken(ProgramUnderTest &bram)
    {
        const QString secret = token.section(u':', 1);
        QStringList places;
        if (bram.output().contains(secret)) {
            places.append(u"output"_s);
        }
        if (bram.errors().contains(secret)) {
            places.append(u"errors"_s);
        }
        for (QDirIterator files(home.path(), QDir::Files | QDir::Hidden,
                                QDirIterator::Subdirectories);
             files.hasNext();) {
            QFile file(files.next());
            if (!file.fileName().endsWith(u"brackwen.json"_s) && file.open(QFile::ReadOnly)
                && file.readAll().contains(secret.toUtf8())) {
                places.append(file.fileName());
            }
        }
        return places;
    }
    /// After a bundle for diagnostics has been made, too.
    void expectNoTokenAnywhere(ProgramUnderTest &bram)
    {
        QDir(home.path()).mkpath(u"bundle"_s);
        bram.send(u"telegram status"_s);
        bram.send(u"diagnostics "_s + home.filePath(u"bundle"_s));
        EXPECT_TRUE(waitUntil([&] {
            return !QDir(home.filePath(u"bundle"_s))
                        .entryList(QDir::Dirs | QDir::NoDotAndDotDot)
                        .isEmpty()
                && bram.output().contains(home.filePath(u"bundle/"_s));
        }));
        bram.closeInput();
        EXPECT_EQ(bram.ends(), 0);
        EXPECT_EQ(placesOfToken(bram), QStringList());
    }

    SystemClock clock;
    PracticeBotApi bot {{.token = token, .chatIds = {chat}}, clock};
};

struct Trouble {
    QString method;
    BotFault fault;
    int times;
};

} // namespace

TEST_F(TelegramRoad, ThroughEveryFaultEachRequestIsDecidedOnce)
{
    const Trouble troubles[] {
        {u"sendMessage"_s, BotFault::None, 1},
        {u"getUpdates"_s, BotFault::Reset, 1},
        {u"getUpdates"_s, BotFault::TruncatedJson, 1},
        {u"sendMessage"_s, BotFault::HtmlError, 1},
        {u"sendMessage"_s, BotFault::AnswerLost, 1}, // a second message comes, and the first one stays
        {u"sendMessage"_s, BotFault::RateLimit, 1},
        {u"editMessageText"_s, BotFault::CutInBody, 1},
        {u"getUpdates"_s, BotFault::AnswerLost, 1},
        {u"answerCallbackQuery"_s, BotFault::Garbage, 1},
        {u"editMessageText"_s, BotFault::JsonArray, 1},
        {QString(), BotFault::Reset, 4},
    };
    configure();
    environment.insert(u"TELEGRAM_BOT_TOKEN"_s, token);
    QString script = u"wait-client\n"_s;
    for (qsizetype i = 0; i < std::ssize(troubles); ++i) {
        script += u"request rq-%1 main touch %1\nwait-decision rq-%1\n"_s.arg(i);
    }
    auto gateway = startGateway(script);
    bot.setBehaviour(troubles[0].method, {.fault = troubles[0].fault, .times = 1});
    auto bram = startBram();
    ASSERT_TRUE(bram->complains(u"bridge enabled (polling) chats=-501"_s));
    for (qsizetype i = 0; i < std::ssize(troubles); ++i) {
        const QString id = u"rq-%1"_s.arg(i);
        const QString decision = i % 3 == 0 ? u"allow"_s
            : i % 3 == 1                    ? u"deny"_s
                                            : u"allow-always"_s;
        SCOPED_TRACE(qPrintable(id));
        const qsizetype number = button(decision + u':' + id);
        ASSERT_GT(number, 0);
        if (i + 1 < std::ssize(troubles)) {
            const Trouble &next = troubles[i + 1];
            bot.setBehaviour(next.method, {.fault = next.fault, .times = next.times});
        }
        if (i % 2 == 0) {
            ASSERT_TRUE(bot.press(chat, number));
            ASSERT_TRUE(bot.press(chat, number)); // a nervous finger
        } else {
            bot.say(
                chat,
                u"/approve %1 %2"_s.arg(id, decision == u"allow"_s ? u"allow-once"_s : decision));
        }
        ASSERT_TRUE(gateway->says(u"decision "_s + id));
    }
    ASSERT_TRUE(shows(u"none"_s));
    const QString said = gateway->output();
    for (qsizetype i = 0; i < std::ssize(troubles); ++i) {
        EXPECT_EQ(said.count(u"decision rq-%1 "_s.arg(i)), 1);
    }
    EXPECT_EQ(said.count(u" accepted"_s), std::ssize(troubles));
    expectNoTokenAnywhere(*bram);
}

TEST_F(TelegramRoad, EachModeDoesWhatItSaysAndTheFileChangesIt)
{
    const QJsonObject shared {{u"enabled"_s, true}, {u"botToken"_s, token}};
    configure(shared);
    auto gateway = startGateway(
        u"wait-client\nrequest aa main ls\nwait-decision aa\nrequest bb main pwd\n"_s);
    auto bram = startBram();

    ASSERT_TRUE(bram->complains(u"bridge enabled (publish-only safe mode) chats=-501"_s));
    ASSERT_TRUE(shows(u"Publish-only safe mode"_s));
    press(u"/approve aa allow-once"_s);
    bram->send(u"telegram status"_s);
    ASSERT_TRUE(bram->says(u"Telegram: only shows requests (safe mode); chats: 1"_s));
    ASSERT_TRUE(bram->says(u"Bot token: from the platform's configuration file"_s));
    EXPECT_EQ(bot.callCount(u"getUpdates"_s), 0);

    bram->send(u"shared-polling on"_s);
    ASSERT_TRUE(bram->complains(u"bridge enabled (polling)"_s));
    ASSERT_TRUE(gateway->says(u"decision aa allow-once accepted"_s))
        << "it had been said in the chat";
    button(u"deny:bb"_s);

    QJsonObject withoutToken = shared;
    withoutToken.remove(u"botToken"_s);
    configure(withoutToken);
    ASSERT_TRUE(bram->complains(u"bridge disabled (missing token/chat_ids)"_s));
    bram->send(u"shared-polling off"_s);
    configure(shared);
    ASSERT_TRUE(bram->complains(u"bridge enabled (publish-only safe mode)"_s));
    expectNoTokenAnywhere(*bram);

    environment.insert(u"BRACKWEN_TELEGRAM_COMMAND_POLLING"_s, u"on"_s);
    auto again = startBram();
    ASSERT_TRUE(again->complains(u"bridge enabled (publish-only command polling) chats=-501"_s));
    ASSERT_TRUE(again->complains(u"caution: command polling"_s));
    ASSERT_TRUE(shows(u"Use /approve <id>"_s));
    press(u"/approve bb deny"_s);
    ASSERT_TRUE(gateway->says(u"decision bb deny accepted"_s));
    expectNoTokenAnywhere(*again);
}

TEST_F(TelegramRoad, WhoMayNotDecideChangesNothing)
{
    configure();
    environment.insert(u"BRACKWEN_TELEGRAM_BOT_TOKEN"_s, token);
    auto gateway = startGateway(u"wait-client\nrequest mine main ls\nrequest other ops ls\n"
                                "request nobodys - ls\n"_s);
    auto bram = startBram();
    button(u"deny:nobodys"_s);
    bot.say(-999, u"/approve mine deny"_s);
    bot.say(chat, u"/approve mine deny"_s, PracticeSaying::Forwarded);
    bot.say(chat, u"/approve mine deny"_s, PracticeSaying::Edited);
    bot.pressData(-999, 1, u"deny:mine"_s);
    bot.pressData(chat, 101, u"deny:other"_s); // not shown in this chat
    press(u"deny:nobodys"_s);
    ASSERT_TRUE(bram->complains(u"decision denied: agent not bound chat=-501 pendingAgent=ops"_s));
    ASSERT_TRUE(bram->complains(u"decision denied: agent not bound chat=-501 pendingAgent=nil"_s));

    press(u"deny:mine"_s); // what came before it has been taken by then
    ASSERT_TRUE(gateway->says(u"decision mine deny accepted"_s));
    EXPECT_EQ(gateway->output().count(u"decision "_s), 1);
    EXPECT_TRUE(waitUntil([&] {
        QFile audit(auditFile());
        return audit.open(QFile::ReadOnly)
            && audit.readAll().contains("chat=-501 sender=id 7001, @operator, Operator");
    }));

    // While a gateway refuses our token, chats decide nothing. Between two attempts, that is: the lock is
    // released for a moment with each of them.
    button(u"deny:nobodys"_s);
    gateway->kill();
    gateway = startGateway(u"request later main ls\n"_s, {u"--token"_s, u"other"_s});
    for (int count = 1; count <= 3; ++count) {
        ASSERT_TRUE(bram->complains(u"unauthorized disconnect count=%1"_s.arg(count)));
    }
    bot.say(chat, u"/approve nobodys deny"_s);
    ASSERT_TRUE(bram->complains(u"decision blocked by remote lock chat=-501 reason="_s));
    EXPECT_FALSE(gateway->output().contains(u"decision "_s));
    expectNoTokenAnywhere(*bram);
}

TEST_F(TelegramRoad, ACommandIsReadWholeBeforeItIsAllowed)
{
    configure();
    environment.insert(u"BRACKWEN_TELEGRAM_BOT_TOKEN"_s, token);
    environment.insert(u"BRACKWEN_TELEGRAM_RIGHTS"_s, u"-501:once"_s);
    const QString hidden = u"; find ~/work -delete"_s;
    const QString command = u"cat README.md "_s + QString(60, u'x') + hidden;
    auto gateway = startGateway(u"wait-client\nrequest cut main "_s + command
                                + u"\nrequest plain main ls\n"_s);
    auto bram = startBram();
    button(u"allow:plain"_s);
    ASSERT_TRUE(shows(u"Everybody in this group may decide"_s));
    for (const auto &shown : bot.chats().pressable(chat)) {
        EXPECT_NE(shown.button.data, u"allow:cut"_s);
        EXPECT_FALSE(shown.button.data.startsWith(u"allow-always:"_s));
    }
    bot.say(chat, u"/approve cut allow-once"_s);
    ASSERT_TRUE(shows(u"BRAM: Not all of this command has been shown here."_s));
    press(u"show:cut"_s);
    ASSERT_TRUE(shows(command.last(40)));
    EXPECT_EQ(gateway->output().count(u"decision cut"_s), 0);
    press(u"allow:cut"_s);
    ASSERT_TRUE(gateway->says(u"decision cut allow-once accepted"_s));
    bram->send(u"telegram status"_s);
    ASSERT_TRUE(bram->says(u"Chat -501: everybody in this group may decide."_s));
    ASSERT_TRUE(bram->says(u"Chat -501: requests can be allowed once or denied."_s));
    expectNoTokenAnywhere(*bram);
}

TEST_F(TelegramRoad, PracticeHasAChatOfItsOwn)
{
    configure();
    environment.insert(u"BRACKWEN_TELEGRAM_BOT_TOKEN"_s, token);
    auto bram = startBram({u"--practice"_s, u"--terminal"_s});
    ASSERT_TRUE(bram->says(u"Request #1"_s));
    ASSERT_TRUE(bram->says(u"| git status"_s));
    ASSERT_TRUE(waitUntil([&] {
        bram->send(u"chat"_s);
        return bram->output().contains(u"2) [거부"_s);
    }));
    bram->send(u"chat press 2"_s);
    ASSERT_TRUE(waitUntil([&] { // in either order
        return bram->output().contains(u"The chat answers: 거부 요청 전송됨"_s)
            && bram->output().contains(u"#1 denied."_s);
    }));
    bram->closeInput();
    EXPECT_EQ(bram->ends(), 0);
    EXPECT_TRUE(bot.calls().isEmpty()) << "the operator's own bot was spoken to";
    EXPECT_EQ(placesOfToken(*bram), QStringList());
}
