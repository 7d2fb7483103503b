// SPDX-License-Identifier: Apache-2.0
#include "app/PracticeWorld.h"

#include "practice/SampleRequests.h"
#include "system/Clock.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr qint64 practiceChatId = 1001;
const QString practiceBotToken = u"100200300:practice-bot-of-this-program"_s;
} // namespace

std::expected<std::unique_ptr<PracticeWorld>, Error> PracticeWorld::create(const Clock &clock)
{
    std::unique_ptr<PracticeWorld> world(new PracticeWorld(clock));
    if (!world->m_folder.isValid()) {
        return std::unexpected(
            Error {u"Practice mode needs a temporary folder: "_s + world->m_folder.errorString()});
    }
    if (const auto listening = world->m_gateway.listen(); !listening) {
        return std::unexpected(listening.error());
    }
    if (const auto listening = world->m_botApi.listen(); !listening) {
        return std::unexpected(listening.error());
    }
    if (const auto written = world->writeConfiguration(); !written) {
        return std::unexpected(written.error());
    }
    return world;
}

PracticeWorld::PracticeWorld(const Clock &clock)
    : m_gateway({}, clock)
    , m_session(m_gateway, clock, {})
    , m_botApi({.token = practiceBotToken, .chatIds = {practiceChatId}}, clock)
    , m_chat(m_botApi, practiceChatId)
{
}

std::expected<void, Error> PracticeWorld::writeConfiguration() const
{
    QStringList agentIds;
    for (int i = 0; i < sampleRequestCount(); ++i) {
        if (const auto agentId = sampleRequest(i, 0).agentId;
            agentId && !agentIds.contains(*agentId)) {
            agentIds.append(*agentId);
        }
    }
    QJsonArray bindings;
    for (const QString &agentId : std::as_const(agentIds)) {
        const QJsonObject peer {{u"kind"_s, u"dm"_s}, {u"id"_s, practiceChatId}};
        bindings.append(QJsonObject {
            {u"agentId"_s, agentId},
            {u"match"_s, QJsonObject {{u"channel"_s, u"telegram"_s}, {u"peer"_s, peer}}}});
    }
    const QString folder = m_folder.filePath(u".brackwen"_s);
    QFile file(folder + u"/brackwen.json"_s);
    const QByteArray content = QJsonDocument(QJsonObject {{u"bindings"_s, bindings}}).toJson();
    if (!QDir().mkpath(folder) || !file.open(QFile::WriteOnly) || file.write(content) < 0) {
        return std::unexpected(
            Error {u"Practice mode cannot write its configuration: "_s + file.errorString()});
    }
    return {};
}

Places PracticeWorld::places() const
{
    Places places = Places::ofPractice(m_folder.path(), m_gateway.url().toString());
    places.environment = places.environment.overriddenBy(
        {{u"BRACKWEN_TELEGRAM_API_URL"_s, m_botApi.url().toString()},
         {u"BRACKWEN_TELEGRAM_BOT_TOKEN"_s, practiceBotToken},
         {u"BRACKWEN_TELEGRAM_CHAT_ID"_s, QString::number(practiceChatId)}});
    return places;
}

} // namespace bram
