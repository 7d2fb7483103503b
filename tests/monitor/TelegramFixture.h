// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "monitor/MonitorFixture.h"
#include "practice/PracticeBotApi.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>

namespace bram::test
{

/// The real core between a practice gateway and a practice Bot API.
class TelegramFixture : public MonitorFixture
{
protected:
    static constexpr qint64 chat = 501;
    static inline const QString token = QStringLiteral("123456789:Token-in-the-test_which-is-42");

    TelegramFixture()
    {
        EXPECT_TRUE(bot.listen());
        environmentExtras.insert(QStringLiteral("BRACKWEN_TELEGRAM_API_URL"), bot.url().toString());
        environmentExtras.insert(QStringLiteral("BRACKWEN_TELEGRAM_CHAT_ID"),
                                 QString::number(chat));
    }

    /// Agent "main" may be decided about in the chat.
    static QJsonObject boundConfiguration()
    {
        return QJsonDocument::fromJson(R"({"bindings": [{"agentId": "main",
            "match": {"channel": "telegram", "peer": {"kind": "group", "id": 501}}}]})")
            .object();
    }

    void writeConfiguration(const QJsonObject &content)
    {
        QDir(folder.path()).mkpath(QStringLiteral(".brackwen"));
        QFile file(folder.filePath(QStringLiteral(".brackwen/brackwen.json")));
        ASSERT_TRUE(file.open(QFile::WriteOnly));
        file.write(QJsonDocument(content).toJson());
    }

    [[nodiscard]] bool logs(const QString &part)
    {
        return waitUntil([&] {
            const QStringList lines = log.lines().mid(logSeen);
            for (qsizetype i = 0; i < lines.size(); ++i) {
                if (lines.at(i).contains(part)) {
                    logSeen += i + 1;
                    return true;
                }
            }
            return false;
        });
    }

    /// Waits until the newest message of the bot in the chat holds this text.
    [[nodiscard]] bool chatShows(const QString &text)
    {
        return waitUntil([&] {
            const auto messages = bot.chats().messages(chat);
            return !messages.isEmpty() && messages.constLast().text.contains(text);
        });
    }

    PracticeBotApi bot {{.token = token, .chatIds = {chat}}, clock};
    qsizetype logSeen = 0;
};

} // namespace bram::test
