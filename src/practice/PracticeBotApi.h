// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/Error.h"
#include "practice/PracticeChats.h"
#include "practice/PracticeHttpConnection.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QString>
#include <QUrl>

#include <expected>
#include <map>
#include <optional>

class QTcpServer;

namespace bram
{

class Clock;

/// How the practice Bot API is set up.
struct PracticeBotOptions {
    quint16 port = 0; ///< 0: any free port, kept over `close` and `listen`
    QString token {}; ///< calls with another one are refused
    QList<qint64> chatIds {}; ///< the chats that the bot may write to
    int longestPollSeconds
        = 50; ///< a call for updates ends then without any, whatever it asked for
};

/// How a call goes wrong.
enum class BotFault {
    None,
    Reset, ///< the connection is reset and the call does not count
    AnswerLost, ///< it counts, and the connection is reset
    CutInBody, ///< it counts, and half of the answer arrives
    TruncatedJson, ///< it counts, and the answer is half of a JSON text
    Garbage, ///< bytes that are no JSON, with status 200; does not count
    JsonArray, ///< JSON that is no object; does not count
    HtmlError, ///< an error page of some server in between, status 502; does not count
    RateLimit, ///< refused with `retryAfterSeconds`; does not count
    Refuse, ///< refused with `text`; does not count
    Hang, ///< never answered; does not count
};

struct BotBehaviour {
    BotFault fault = BotFault::None;
    int delayMs = 0; ///< before whatever happens
    int retryAfterSeconds = 1;
    QString text {};
    int times = -1; ///< for so many calls; negative: until set again
};

/// One call as the practice Bot API saw it.
struct BotCall {
    QString method {};
    std::optional<qint64> chatId {};
    QJsonObject payload {};
    qint64 atMs = 0; ///< since the epoch
    bool isAccepted = false; ///< it counted, and was not refused
};

/// The answer to a press, as the person sees it.
struct BotQueryAnswer {
    QString queryId {};
    QString text {};
    bool isAlert = false;
};

struct PracticeSender {
    qint64 userId = 7001;
    QString firstName = QStringLiteral("Operator");
    QString userName = QStringLiteral("operator");
};

enum class PracticeSaying {
    Usual,
    Forwarded, ///< somebody else's words
    Edited, ///< an older message that reads like this now
};

/// A Bot API that stands in for the public one: it speaks HTTP on the loopback interface, keeps chats with
/// messages and keyboards, lets a test or a person press and say things there, and can misbehave on
/// demand, down to the bytes. Main thread only.
class PracticeBotApi final : public QObject
{
    Q_OBJECT

public:
    /// The clock must outlive this.
    PracticeBotApi(PracticeBotOptions options, const Clock &clock, QObject *parent = nullptr);
    ~PracticeBotApi() override;

    /// Starts to take connections; fails when the port is taken. Does nothing when already listening.
    std::expected<void, Error> listen();
    /// As if the server were killed: connections are reset, chats and undelivered updates stay.
    void close();
    /// Resets every connection and goes on listening.
    void dropClients();

    /// Base URL for clients, e.g. "http://127.0.0.1:43210"; empty before the first `listen`.
    QUrl url() const;

    const PracticeChats &chats() const { return m_chats; }

    // What people do in chats. Presses give the id of the callback query, or why there is none.
    /// `number` counts from 1 in the order of `PracticeChats::pressable`. A key says its text.
    std::expected<QString, Error> press(qint64 chatId, qsizetype number,
                                        const PracticeSender &sender = {});
    /// A button with this data under this message, whether or not it is shown (any more).
    QString pressData(qint64 chatId, qint64 messageId, const QString &data,
                      const PracticeSender &sender = {});
    void say(qint64 chatId, const QString &text, PracticeSaying saying = PracticeSaying::Usual,
             const PracticeSender &sender = {});
    void removeMessage(qint64 chatId, qint64 messageId);
    /// Any update, however odd; it gets an id unless it has one.
    void pushUpdate(QJsonObject update);

    /// How calls of this method go from now on; of every method without an own behaviour if it is empty.
    void setBehaviour(const QString &method, const BotBehaviour &behaviour);

    const QList<BotCall> &calls() const { return m_calls; }
    qsizetype callCount(const QString &method, std::optional<qint64> chatId = {}) const;
    const QList<BotQueryAnswer> &queryAnswers() const { return m_queryAnswers; }
    /// A client waits for updates.
    bool isPolled() const { return m_poll.has_value(); }

Q_SIGNALS:
    /// A call has come, whatever becomes of it.
    void called(const bram::BotCall &call);
    void chatChanged(qint64 chatId);
    void queryAnswered(const bram::BotQueryAnswer &answer);
    /// Nothing is let in with this token or path; without quoting it.
    void clientRefused(const QString &reason);

private:
    /// A call that waits for updates.
    struct Poll {
        PracticeHttpConnection *connection;
        qint64 serial;
    };

    void accept();
    void handle(PracticeHttpConnection *connection, const PracticeHttpRequest &request);
    /// A call with the right token.
    void serve(PracticeHttpConnection *connection, const QString &method,
               const QJsonObject &payload);
    void carryOut(PracticeHttpConnection *connection, qsizetype call,
                  const BotBehaviour &behaviour);
    BotBehaviour behaviourFor(const QString &method);
    BotAnswer dispatch(const QString &method, const QJsonObject &payload);
    BotAnswer answerCallbackQuery(const QJsonObject &payload);
    void getUpdates(PracticeHttpConnection *connection, const QJsonObject &payload,
                    const BotBehaviour &behaviour);
    void answerPoll(PracticeHttpConnection *connection, const BotBehaviour &behaviour);
    void endPollWithConflict();
    void enqueue(const QString &kind, const QJsonObject &content);
    void deliver();
    static void send(PracticeHttpConnection *connection, const BotAnswer &answer,
                     const BotBehaviour &behaviour);

    PracticeBotOptions m_options;
    const Clock &m_clock;
    QTcpServer *m_server = nullptr; ///< owned as a child; present while listening
    QList<PracticeHttpConnection *> m_connections; ///< owned as children
    PracticeChats m_chats;
    std::map<QString, BotBehaviour> m_behaviours; ///< by method
    QList<BotCall> m_calls;
    QList<BotQueryAnswer> m_queryAnswers;
    QList<QString> m_openQueryIds;
    QJsonArray m_updates; ///< not confirmed yet, oldest first
    QStringList m_allowedUpdates; ///< as the last poll asked; empty: all
    qint64 m_nextUpdateId = 1000;
    qint64 m_nextQueryId = 1;
    std::optional<Poll> m_poll;
    qint64 m_pollSerial = 0;
};

} // namespace bram
