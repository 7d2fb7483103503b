// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "practice/PracticeBotApi.h"
#include "support/Doubles.h"
#include "support/Waiting.h"
#include "system/BackgroundTasks.h"
#include "system/Clock.h"
#include "telegram/TelegramApprovalBridge.h"

#include <QNetworkAccessManager>

#include <gtest/gtest.h>

#include <memory>

namespace bram::test
{

/// A bridge and the practice Bot API that it talks to over HTTP, with two chats: 501 bound to agent "main",
/// 502 to none.
class BridgeFixture : public testing::Test
{
protected:
    BridgeFixture()
    {
        EXPECT_TRUE(api.listen());
        config.token = token;
        config.chatIds = {bound, unbound};
        config.chatAgentMap = {{bound, {QStringLiteral("main")}}};
        config.enablePolling = true;
    }
    ~BridgeFixture() override
    {
        bridge.reset();
        EXPECT_TRUE(waitUntil([this] { return tasks.running().isEmpty(); }));
        for (const QString &line : log.lines()) {
            EXPECT_FALSE(line.contains(token) || line.contains(token.last(10))) << qPrintable(line);
        }
    }

    void start(const QUrl &url = {})
    {
        bridge = std::make_unique<TelegramApprovalBridge>(
            config, url.isEmpty() ? api.url() : url,
            [this](const TelegramDecision &decision) {
                decisions.append(decision);
                return verdict;
            },
            TelegramApprovalBridge::Collaborators {network, memories, bridgeClock, log, tasks});
        bridge->start();
    }
    static TelegramApprovalEntry entry(const QString &id,
                                       const QString &command = QStringLiteral("ls"))
    {
        return {.approvalId = id, .command = command, .agentId = QStringLiteral("main")};
    }
    /// The texts of the chat's messages, oldest first.
    QStringList texts(qint64 chatId) const
    {
        QStringList all;
        for (const PracticeMessage &message : api.chats().messages(chatId)) {
            all.append(message.text);
        }
        return all;
    }
    [[nodiscard]] bool waitLastText(qint64 chatId, const QString &part)
    {
        return waitUntil(
            [&] { return texts(chatId).value(texts(chatId).size() - 1).contains(part); });
    }
    [[nodiscard]] bool waitLog(const QString &part)
    {
        return waitUntil([&] { return !log.lines().filter(part).isEmpty(); });
    }

    static constexpr qint64 bound = 501;
    static constexpr qint64 unbound = 502;
    static constexpr qint64 group = -77;
    const QString token = QStringLiteral("123456:AAEhBOweik6ad9r_QXMENQjcrGbqCr4K-bc");
    /// The Bot API's own: that of the machine, or as far ahead of it as a test says.
    struct ApiClock final : Clock {
        qint64 nowMs() const override { return SystemClock().nowMs() + aheadMs; }
        qint64 aheadMs = 0;
    };
    ApiClock clock;
    ManualClock bridgeClock;
    PracticeBotApi api {{.token = token, .chatIds = {bound, unbound, group}}, clock};
    QNetworkAccessManager network;
    RecordingLog log;
    BackgroundTasks tasks {log};
    TelegramBotConfig config;
    QList<TelegramDecision> decisions;
    RemoteVerdict verdict = RemoteVerdict::Started;
    ChatMemories memories;
    std::unique_ptr<TelegramApprovalBridge> bridge;
};

} // namespace bram::test
