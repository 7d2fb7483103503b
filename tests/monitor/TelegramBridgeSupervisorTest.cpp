// SPDX-License-Identifier: Apache-2.0
#include "monitor/TelegramBridgeSupervisor.h"
#include "gateway/FaultySecretStore.h"
#include "monitor/TelegramFixture.h"
#include "monitor/TelegramTokens.h"

#include <algorithm>

using namespace bram;
using namespace bram::test;
using namespace Qt::StringLiterals;

namespace
{
const QString off = u"bridge disabled (missing token/chat_ids)"_s;
const QString polling = u"bridge enabled (polling) chats=501"_s;
const QString safe = u"bridge enabled (publish-only safe mode) chats=501"_s;

/// The platform's own channel polls the same bot.
QJsonObject sharedBot(const QString &token)
{
    return {{u"channels"_s,
             QJsonObject {
                 {u"telegram"_s, QJsonObject {{u"enabled"_s, true}, {u"botToken"_s, token}}}}}};
}

class Supervisor : public TelegramFixture
{
protected:
    TelegramBridgeSupervisor &telegram() { return core->telegram(); }
    TelegramTokens &tokens() { return core->telegram().tokens(); }
    std::expected<void, Error> store(const QString &text)
    {
        return test::waitFor(TelegramTokens::store(&tokens(), text));
    }
};
} // namespace

TEST_F(Supervisor, TheBridgeFollowsTokensSettingsAndTheFile)
{
    makeConnectedCore();
    ASSERT_TRUE(logs(off));
    EXPECT_EQ(telegram().telegramTokenSource(), TelegramTokenSource::Missing);

    for (const QString &bad : {u"12345:short"_s, token + u' ' + token, u"list"_s, QString()}) {
        const auto stored = store(bad);
        ASSERT_FALSE(stored);
        EXPECT_FALSE(!bad.isEmpty() && stored.error().message.contains(bad));
    }
    EXPECT_TRUE(store(u" \n"_s + token + u'\n'));
    ASSERT_TRUE(logs(polling));
    EXPECT_EQ(telegram().telegramTokenSource(), TelegramTokenSource::Keychain);
    ASSERT_TRUE(waitUntil([&] { return bot.isPolled(); }));
    request(item("first"));
    ASSERT_TRUE(chatShows(u"first"_s));

    writeConfiguration(sharedBot(token));
    ASSERT_TRUE(logs(safe));
    ASSERT_TRUE(waitUntil([&] { return !bot.isPolled(); }));
    core->sharedPolling().setAllowSharedBotPollingOverride(true);
    ASSERT_TRUE(logs(polling));
    ASSERT_TRUE(waitUntil([&] { return bot.isPolled(); }));
    core->sharedPolling().setAllowSharedBotPollingOverride(false);
    ASSERT_TRUE(logs(safe));

    // A file in the middle of being written must not look like one that says nothing.
    QFile file(folder.filePath(u".brackwen/brackwen.json"_s));
    ASSERT_TRUE(file.open(QFile::WriteOnly | QFile::Truncate));
    file.write("{\"channels\": ");
    file.flush();
    ASSERT_TRUE(logs(u"the bridge stays as it was"_s));
    EXPECT_EQ(telegram().status().mode, TelegramMode::PublishOnlySafe);
    file.close();

    EXPECT_TRUE(test::waitFor(TelegramTokens::clear(&tokens())));
    ASSERT_TRUE(logs(off));
    EXPECT_EQ(telegram().status().mode, std::nullopt);
    const qsizetype calls = bot.calls().size();
    request(item("second"));
    EXPECT_EQ(bot.calls().size(), calls);
}

TEST_F(Supervisor, AFileThatSaysTheSameAboutTelegramLeavesTheBridgeAlone)
{
    environmentExtras.insert(u"BRACKWEN_TELEGRAM_BOT_TOKEN"_s, token);
    writeConfiguration(boundConfiguration());
    makeConnectedCore();
    ASSERT_TRUE(waitUntil([&] { return bot.isPolled(); }));
    request(item("first"));
    ASSERT_TRUE(chatShows(u"first"_s));
    QJsonObject other = boundConfiguration();
    other.insert(u"agents"_s, QJsonObject {{u"main"_s, QJsonObject()}});
    writeConfiguration(other);
    ASSERT_TRUE(
        waitUntil([&] { return core->agents().availableAgentIds() == QStringList {u"main"_s}; }));
    request(item("second"));
    ASSERT_TRUE(chatShows(u"second"_s));
    EXPECT_EQ(bot.callCount(u"sendMessage"_s), 1) << "a new bridge would send a new message";
    EXPECT_EQ(log.lines().filter(polling).size(), 1);
}

TEST_F(Supervisor, OneOfTwoTokensIsSetAside)
{
    environmentExtras.insert(u"TELEGRAM_BOT_TOKEN"_s, u"987654321:of-the-environment-0123456789"_s);
    makeConnectedCore();
    ASSERT_TRUE(logs(polling));
    EXPECT_EQ(telegram().telegramTokenSource(), TelegramTokenSource::Environment);
    EXPECT_TRUE(store(token));
    ASSERT_TRUE(waitUntil([&] { return bot.isPolled(); })) << "the token of the keyring counts";
    EXPECT_TRUE(telegram().status().isEnvironmentSetAside);
    EXPECT_EQ(telegram().telegramTokenSource(), TelegramTokenSource::Keychain);
    EXPECT_TRUE(tokens().useEnvironment());
    ASSERT_TRUE(waitUntil(
        [&] { return telegram().telegramTokenSource() == TelegramTokenSource::Environment; }));
    EXPECT_FALSE(telegram().status().isEnvironmentSetAside);
}

TEST_F(Supervisor, AKeyringThatWaitsOrFailsHoldsNothingUpAndIsSaid)
{
    FaultySecretStore keyring;
    test::waitFor(keyring.memory.set(u"QX.BrackwenApprovalsMenu.telegram"_s, u"bot-token"_s, token,
                                     SecretAccessibility::AfterFirstUnlock));
    keyring.promptedRead = u"bot-token"_s;
    secretStore = &keyring;
    makeConnectedCore();
    ASSERT_TRUE(waitUntil([&] { return telegram().status().isWaitingForKeyring; }));
    request(item("waiting"));

    keyring.readsFail = true;
    keyring.isLocked = true;
    keyring.endPrompts();
    ASSERT_TRUE(logs(u"the keyring did not give the bot token: "_s + FaultySecretStore::errorText));
    ASSERT_TRUE(logs(off));
    EXPECT_TRUE(telegram().status().isWaitingForKeyring);
    EXPECT_EQ(telegram().status().problem, QString());

    // None at all is a keyring without a token, and no failure.
    keyring.isLocked = false;
    keyring.promptedRead.clear();
    telegram().configureTelegramBridge();
    ASSERT_TRUE(logs(off));
    EXPECT_EQ(telegram().status(), TelegramStatus());

    keyring.readsFail = false;
    keyring.promptedRead.clear();
    telegram().configureTelegramBridge();
    ASSERT_TRUE(logs(polling));
    ASSERT_TRUE(chatShows(u"waiting"_s));

    // Locked again. What is withdrawn meanwhile is withdrawn, and no other bot takes over.
    keyring.promptedRead = u"bot-token"_s;
    writeConfiguration(sharedBot(token));
    ASSERT_TRUE(logs(safe));
    core->sharedPolling().setAllowSharedBotPollingOverride(true);
    ASSERT_TRUE(logs(polling));
    core->sharedPolling().setAllowSharedBotPollingOverride(false);
    ASSERT_TRUE(logs(safe));
    EXPECT_EQ(telegram().telegramTokenSource(), TelegramTokenSource::Keychain);
    EXPECT_FALSE(telegram().status().isWaitingForKeyring);
    keyring.promptedRead.clear();

    keyring.writesFail = {u"bot-token"_s};
    EXPECT_FALSE(store(token));
    EXPECT_FALSE(test::waitFor(TelegramTokens::clear(&tokens())));
    EXPECT_TRUE(telegram().status().mode.has_value());
    secretStore = &secrets;
    core->telegram().stop();
    core->monitor().stop();
    ASSERT_TRUE(waitUntil([this] { return core->tasks().running().isEmpty(); }));
    core.reset();
}

TEST_F(Supervisor, TheSwitchAndTheRulesOfTheFileHoldAtOnce)
{
    environmentExtras.insert(u"BRACKWEN_TELEGRAM_BOT_TOKEN"_s, token);
    writeConfiguration(boundConfiguration());
    makeConnectedCore();
    request(item("lines", "echo ok\nrm x"));
    ASSERT_TRUE(chatShows(u"echo ok⏎rm x"_s));
    const auto buttons = [this] {
        QStringList data;
        for (const auto &shown : bot.chats().pressable(chat)) {
            data.append(shown.button.data);
        }
        return data.join(u' ');
    };
    EXPECT_EQ(buttons(), u"deny:lines show:lines"_s);
    ASSERT_TRUE(waitUntil([&] { return bot.isPolled(); }));
    bot.say(chat, u"/approve lines allow-once"_s);
    ASSERT_TRUE(logs(u"decision denied: command not shown whole chat=501 sender=id 7001"_s));
    ASSERT_TRUE(chatShows(u"BRAM: Not all of this command has been shown here."_s));

    core->allowPartlyShown().setOn(true);
    ASSERT_TRUE(waitUntil([&] { return buttons().contains(u"allow-always:lines"_s); }));
    QJsonObject ruled = boundConfiguration();
    const QJsonObject rules {{u"approvalsSenders"_s, QJsonObject {{u"501"_s, u"mina"_s}}},
                             {u"approvalsRights"_s, QJsonObject {{u"501"_s, u"once"_s}}}};
    ruled.insert(u"channels"_s, QJsonObject {{u"telegram"_s, rules}});
    writeConfiguration(ruled);
    ASSERT_TRUE(logs(u"channels.telegram.approvalsSenders cannot be read in part"_s));
    ASSERT_TRUE(waitUntil([&] { return telegram().status().chatRules.size() == 1; }));
    EXPECT_EQ(telegram().status().chatRules.value(chat),
              (ChatRules {QSet<qint64>(), ChatRight::AllowOnce}));
    bot.say(chat, u"/approve lines deny"_s);
    ASSERT_TRUE(logs(u"decision refused: sender not listed for the chat chat=501"_s));
    EXPECT_TRUE(received.isEmpty());

    // What was shown in a chat is known to the bridge that comes after, and so is when.
    core->allowPartlyShown().setOn(false);
    writeConfiguration(boundConfiguration());
    ASSERT_TRUE(waitUntil([&] { return telegram().status().chatRules.isEmpty(); }));
    bot.say(chat, u"/show lines"_s);
    ASSERT_TRUE(chatShows(u"│ echo ok\n│ rm x"_s));
    bot.close();
    bot.say(chat, u"/approve lines allow-once"_s);
    telegram().configureTelegramBridge();
    EXPECT_TRUE(bot.listen());
    EXPECT_TRUE(waitUntil([&] { return received.size() == 1; }));
}

TEST_F(Supervisor, ShowsOnlyTheChosenAgentsRequestsAndSendsThemOnce)
{
    environmentExtras.insert(u"BRACKWEN_TELEGRAM_BOT_TOKEN"_s, token);
    writeConfiguration(
        QJsonDocument::fromJson(R"({"agents": {"main": {}, "other": {}}})").object());
    makeConnectedCore();
    ASSERT_TRUE(waitUntil([&] { return bot.isPolled(); }));
    ApprovalItem others = item("others");
    others.agentId = u"other"_s;
    gateway.announce(others);
    for (int i = 0; i < 40; ++i) {
        gateway.announce(item(qPrintable(u"burst-%1"_s.arg(i))));
    }
    ASSERT_TRUE(chatShows(u"pending approvals (40)"_s));
    EXPECT_LE(bot.calls().size(), 8);
    core->agents().setSelectedAgent(u"other"_s);
    ASSERT_TRUE(chatShows(u"pending approvals (1)"_s));
}
