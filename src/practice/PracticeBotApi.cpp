// SPDX-License-Identifier: Apache-2.0
#include "practice/PracticeBotApi.h"

#include "system/Clock.h"

#include <QJsonDocument>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <algorithm>
#include <utility>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr auto getUpdatesMethod = "getUpdates"_L1;
constexpr auto updateIdKey = "update_id"_L1;

QByteArray toJson(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

QJsonObject senderObject(const PracticeSender &sender)
{
    return {{u"id"_s, sender.userId},
            {u"is_bot"_s, false},
            {u"first_name"_s, sender.firstName},
            {u"username"_s, sender.userName}};
}

std::optional<qint64> chatIdOf(const QJsonObject &payload)
{
    const QJsonValue value = payload.value("chat_id"_L1);
    return value.isUndefined() ? std::nullopt : std::optional(value.toVariant().toLongLong());
}
} // namespace

PracticeBotApi::PracticeBotApi(PracticeBotOptions options, const Clock &clock, QObject *parent)
    : QObject(parent)
    , m_options(std::move(options))
    , m_clock(clock)
{
    for (const qint64 chatId : std::as_const(m_options.chatIds)) {
        m_chats.open(chatId);
    }
}

PracticeBotApi::~PracticeBotApi()
{
    close();
}

std::expected<void, Error> PracticeBotApi::listen()
{
    if (m_server) {
        return {};
    }
    auto server = std::make_unique<QTcpServer>(this);
    if (!server->listen(QHostAddress::LocalHost, m_options.port)) {
        return std::unexpected(Error {u"cannot listen on 127.0.0.1:%1: %2"_s.arg(
            QString::number(m_options.port), server->errorString())});
    }
    m_options.port = server->serverPort();
    connect(server.get(), &QTcpServer::newConnection, this, &PracticeBotApi::accept);
    m_server = server.release();
    return {};
}

void PracticeBotApi::close()
{
    if (m_server) {
        m_server->close();
        m_server->disconnect(this);
        std::exchange(m_server, nullptr)->deleteLater();
    }
    dropClients();
}

void PracticeBotApi::dropClients()
{
    m_poll.reset();
    for (PracticeHttpConnection *connection : std::exchange(m_connections, {})) {
        connection->disconnect(this);
        connection->reset();
        connection->deleteLater();
    }
}

QUrl PracticeBotApi::url() const
{
    return m_options.port == 0 ? QUrl() : QUrl(u"http://127.0.0.1:%1"_s.arg(m_options.port));
}

void PracticeBotApi::accept()
{
    while (QTcpSocket *socket = m_server->nextPendingConnection()) {
        auto *connection = new PracticeHttpConnection(socket, this);
        m_connections.append(connection);
        connect(connection, &PracticeHttpConnection::requestReceived, this,
                [this, connection](const PracticeHttpRequest &request) {
                    handle(connection, request);
                });
        connect(connection, &PracticeHttpConnection::closed, this, [this, connection] {
            if (m_poll && m_poll->connection == connection) {
                m_poll.reset();
            }
            m_connections.removeOne(connection);
            connection->deleteLater();
        });
    }
}

void PracticeBotApi::handle(PracticeHttpConnection *connection, const PracticeHttpRequest &request)
{
    const auto refuse = [&](int status, const QString &description, const QString &reason) {
        connection->answer(status, "application/json",
                           toJson(BotAnswer::refused(status, description).body));
        Q_EMIT clientRefused(reason);
    };
    const QList<QByteArray> parts = request.path.split('/');
    if (request.method != "POST" || parts.size() != 3 || !parts.at(1).startsWith("bot")) {
        refuse(404, u"Not Found"_s, u"not a call of the Bot API"_s);
        return;
    }
    if (QByteArray::fromPercentEncoding(parts.at(1).mid(3)) != m_options.token.toUtf8()) {
        refuse(401, u"Unauthorized"_s, u"wrong token"_s);
        return;
    }
    const QJsonDocument payload = QJsonDocument::fromJson(request.body);
    if (!request.contentType.startsWith("application/json") || !payload.isObject()) {
        refuse(400, u"Bad Request: can't parse JSON object"_s, u"not a JSON object"_s);
        return;
    }
    serve(connection, QString::fromUtf8(parts.at(2)), payload.object());
}

void PracticeBotApi::serve(PracticeHttpConnection *connection, const QString &method,
                           const QJsonObject &payload)
{
    const qsizetype index = m_calls.size();
    m_calls.append({.method = method,
                    .chatId = chatIdOf(payload),
                    .payload = payload,
                    .atMs = m_clock.nowMs()});
    const BotBehaviour behaviour = behaviourFor(method);
    Q_EMIT called(BotCall(m_calls.at(index)));
    if (behaviour.delayMs <= 0) {
        carryOut(connection, index, behaviour);
        return;
    }
    QTimer::singleShot(behaviour.delayMs, connection, [this, connection, index, behaviour] {
        carryOut(connection, index, behaviour);
    });
}

void PracticeBotApi::carryOut(PracticeHttpConnection *connection, qsizetype call,
                              const BotBehaviour &behaviour)
{
    switch (behaviour.fault) {
    case BotFault::Reset:
        connection->reset();
        return;
    case BotFault::Hang:
        return;
    case BotFault::Garbage:
        connection->answer(200, "application/json", "\x1f\x8b{\"ok\":tru\xff\xfe");
        return;
    case BotFault::JsonArray:
        connection->answer(200, "application/json", "[{\"ok\":true}]");
        return;
    case BotFault::HtmlError:
        connection->answer(502, "text/html",
                           "<html><head><title>502 Bad Gateway</title></head>"
                           "<body><h1>502 Bad Gateway</h1></body></html>\n");
        return;
    case BotFault::RateLimit: {
        auto answer = BotAnswer::refused(
            429, u"Too Many Requests: retry after %1"_s.arg(behaviour.retryAfterSeconds));
        answer.body.insert(u"parameters"_s,
                           QJsonObject {{u"retry_after"_s, behaviour.retryAfterSeconds}});
        send(connection, answer, behaviour);
        return;
    }
    case BotFault::Refuse:
        send(connection, BotAnswer::refused(400, behaviour.text), behaviour);
        return;
    default:
        break;
    }
    const BotCall taken = m_calls.at(call);
    if (taken.method == getUpdatesMethod) {
        m_calls[call].isAccepted = true;
        getUpdates(connection, taken.payload, behaviour);
        return;
    }
    const BotAnswer answer = dispatch(taken.method, taken.payload);
    m_calls[call].isAccepted = answer.status == 200;
    send(connection, answer, behaviour);
    if (answer.status == 200 && taken.chatId) {
        Q_EMIT chatChanged(*taken.chatId);
    }
}

BotBehaviour PracticeBotApi::behaviourFor(const QString &method)
{
    auto found = m_behaviours.find(method);
    if (found == m_behaviours.end()) {
        found = m_behaviours.find(QString());
    }
    if (found == m_behaviours.end()) {
        return {};
    }
    const BotBehaviour behaviour = found->second;
    if (found->second.times > 0 && --found->second.times == 0) {
        m_behaviours.erase(found);
    }
    return behaviour;
}

void PracticeBotApi::setBehaviour(const QString &method, const BotBehaviour &behaviour)
{
    if (behaviour.times == 0) {
        m_behaviours.erase(method);
    } else {
        m_behaviours[method] = behaviour;
    }
}

BotAnswer PracticeBotApi::dispatch(const QString &method, const QJsonObject &payload)
{
    const qint64 nowSeconds = m_clock.nowMs() / 1000;
    if (method == "sendMessage"_L1) {
        return m_chats.sendMessage(payload, nowSeconds);
    }
    if (method == "editMessageText"_L1) {
        return m_chats.editMessageText(payload, nowSeconds);
    }
    if (method == "deleteMessage"_L1) {
        return m_chats.deleteMessage(payload);
    }
    if (method == "answerCallbackQuery"_L1) {
        return answerCallbackQuery(payload);
    }
    return BotAnswer::refused(404, u"Not Found: method not found"_s);
}

BotAnswer PracticeBotApi::answerCallbackQuery(const QJsonObject &payload)
{
    const QString queryId = payload.value("callback_query_id"_L1).toString();
    if (!m_openQueryIds.removeOne(queryId)) {
        return BotAnswer::refused(
            400,
            u"Bad Request: query is too old and response timeout expired or query ID is invalid"_s);
    }
    m_queryAnswers.append({.queryId = queryId,
                           .text = payload.value("text"_L1).toString(),
                           .isAlert = payload.value("show_alert"_L1).toBool()});
    Q_EMIT queryAnswered(BotQueryAnswer(m_queryAnswers.constLast()));
    return BotAnswer::ok(true);
}

void PracticeBotApi::getUpdates(PracticeHttpConnection *connection, const QJsonObject &payload,
                                const BotBehaviour &behaviour)
{
    const qint64 offset = payload.value("offset"_L1).toInteger();
    while (!m_updates.isEmpty() && m_updates.at(0)[updateIdKey].toInteger() < offset) {
        m_updates.removeFirst();
    }
    if (payload.value("allowed_updates"_L1).isArray()) {
        m_allowedUpdates.clear();
        for (const auto &kind : payload.value("allowed_updates"_L1).toArray()) {
            m_allowedUpdates.append(kind.toString());
        }
    }
    endPollWithConflict();
    const int timeoutSeconds
        = qBound(0, payload.value("timeout"_L1).toInt(), m_options.longestPollSeconds);
    if (!m_updates.isEmpty() || timeoutSeconds == 0 || behaviour.fault != BotFault::None) {
        answerPoll(connection, behaviour);
        return;
    }
    const qint64 serial = ++m_pollSerial;
    m_poll = Poll {connection, serial};
    QTimer::singleShot(timeoutSeconds * 1000, connection, [this, serial] {
        if (m_poll && m_poll->serial == serial) {
            answerPoll(std::exchange(m_poll, std::nullopt)->connection, {});
        }
    });
}

void PracticeBotApi::answerPoll(PracticeHttpConnection *connection, const BotBehaviour &behaviour)
{
    send(connection, BotAnswer::ok(m_updates), behaviour);
}

/// The later of two pollers wins, and the earlier one is told so.
void PracticeBotApi::endPollWithConflict()
{
    if (const auto earlier = std::exchange(m_poll, std::nullopt)) {
        send(earlier->connection,
             BotAnswer::refused(409,
                                u"Conflict: terminated by other getUpdates request; make sure "
                                "that only one bot instance is running"_s),
             {});
    }
}

void PracticeBotApi::send(PracticeHttpConnection *connection, const BotAnswer &answer,
                          const BotBehaviour &behaviour)
{
    using Delivery = PracticeHttpConnection::Delivery;
    const QByteArray body = toJson(answer.body);
    switch (behaviour.fault) {
    case BotFault::AnswerLost:
        connection->reset();
        return;
    case BotFault::CutInBody:
        connection->answer(answer.status, "application/json", body, Delivery::CutInBody);
        return;
    case BotFault::TruncatedJson:
        connection->answer(answer.status, "application/json", body.left(body.size() / 2));
        return;
    default:
        connection->answer(answer.status, "application/json", body);
    }
}

std::expected<QString, Error> PracticeBotApi::press(qint64 chatId, qsizetype number,
                                                    const PracticeSender &sender)
{
    const auto buttons = m_chats.pressable(chatId);
    if (number < 1 || number > buttons.size()) {
        return std::unexpected(Error {u"there is no button %1 in this chat"_s.arg(number)});
    }
    const auto &pressed = buttons.at(number - 1);
    if (pressed.button.data.isEmpty()) {
        say(chatId, pressed.button.text, PracticeSaying::Usual, sender);
        return QString();
    }
    return pressData(chatId, pressed.messageId, pressed.button.data, sender);
}

QString PracticeBotApi::pressData(qint64 chatId, qint64 messageId, const QString &data,
                                  const PracticeSender &sender)
{
    const QString queryId = QString::number(m_nextQueryId++);
    m_openQueryIds.append(queryId);
    // Of a message that is gone, the service says no date and no text.
    QJsonObject message {
        {u"message_id"_s, messageId}, {u"date"_s, 0}, {u"chat"_s, practiceChatObject(chatId)}};
    if (const auto *shown = m_chats.find(chatId, messageId)) {
        message = practiceMessageObject(chatId, *shown);
    }
    enqueue(u"callback_query"_s,
            {{u"id"_s, queryId},
             {u"from"_s, senderObject(sender)},
             {u"message"_s, message},
             {u"chat_instance"_s, QString::number(chatId)},
             {u"data"_s, data}});
    return queryId;
}

void PracticeBotApi::say(qint64 chatId, const QString &text, PracticeSaying saying,
                         const PracticeSender &sender)
{
    const qint64 nowSeconds = m_clock.nowMs() / 1000;
    QJsonObject message {{u"message_id"_s, m_chats.say(chatId, text)},
                         {u"from"_s, senderObject(sender)},
                         {u"chat"_s, practiceChatObject(chatId)},
                         {u"date"_s, nowSeconds},
                         {u"text"_s, text}};
    if (saying == PracticeSaying::Forwarded) {
        const QJsonObject author
            = senderObject({.userId = 9009, .firstName = u"Somebody"_s, .userName = u"somebody"_s});
        message.insert(u"forward_from"_s, author);
        message.insert(u"forward_date"_s, nowSeconds - 60);
        message.insert(u"forward_origin"_s,
                       QJsonObject {{u"type"_s, u"user"_s},
                                    {u"sender_user"_s, author},
                                    {u"date"_s, nowSeconds - 60}});
    } else if (saying == PracticeSaying::Edited) {
        message.insert(u"edit_date"_s, nowSeconds);
    }
    Q_EMIT chatChanged(chatId);
    enqueue(saying == PracticeSaying::Edited ? u"edited_message"_s : u"message"_s, message);
}

void PracticeBotApi::removeMessage(qint64 chatId, qint64 messageId)
{
    if (m_chats.remove(chatId, messageId)) {
        Q_EMIT chatChanged(chatId);
    }
}

void PracticeBotApi::enqueue(const QString &kind, const QJsonObject &content)
{
    if (m_allowedUpdates.isEmpty() || m_allowedUpdates.contains(kind)) {
        pushUpdate({{kind, content}});
    }
}

void PracticeBotApi::pushUpdate(QJsonObject update)
{
    if (!update.contains(updateIdKey)) {
        update.insert(updateIdKey, m_nextUpdateId++);
    }
    m_updates.append(update);
    // In a later turn: what happens at once arrives together.
    QMetaObject::invokeMethod(this, &PracticeBotApi::deliver, Qt::QueuedConnection);
}

void PracticeBotApi::deliver()
{
    if (m_poll && !m_updates.isEmpty()) {
        answerPoll(std::exchange(m_poll, std::nullopt)->connection, {});
    }
}

qsizetype PracticeBotApi::callCount(const QString &method, std::optional<qint64> chatId) const
{
    return std::ranges::count_if(m_calls, [&](const BotCall &call) {
        return call.method == method && (!chatId || call.chatId == chatId);
    });
}

} // namespace bram
