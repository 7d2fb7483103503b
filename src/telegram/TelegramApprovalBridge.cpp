// SPDX-License-Identifier: Apache-2.0
#include "telegram/TelegramApprovalBridge.h"

#include "audit/Redaction.h"
#include "config/ValueParsers.h"
#include "system/SystemLog.h"
#include "telegram/PendingMessage.h"
#include "telegram/TelegramUpdates.h"

#include <QCoreApplication>
#include <QPointer>

#include <utility>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
class BridgeTr
{
    Q_DECLARE_TR_FUNCTIONS(TelegramChat)
};

using Look = CallbackAnswers::Look;

constexpr qsizetype maxLoggedStrangers = 100;

const QString notPending = u"대기 중이 아니거나 이미 처리됨"_s;

QString confirmation(ApprovalDecision decision)
{
    switch (decision) {
    case ApprovalDecision::AllowOnce:
        return u"승인 요청 전송됨"_s;
    case ApprovalDecision::Deny:
        return u"거부 요청 전송됨"_s;
    case ApprovalDecision::AllowAlways:
        return u"영구 승인 요청 전송됨"_s;
    }
    Q_UNREACHABLE();
}

/// What the chat is told of a decision that was not started.
QString refusalText(RemoteVerdict verdict)
{
    switch (verdict) {
    case RemoteVerdict::Started:
    case RemoteVerdict::NotPending:
        return notPending;
    case RemoteVerdict::Locked:
        return BridgeTr::tr("Nothing can be decided in chats while the gateway refuses this "
                            "program's token.");
    case RemoteVerdict::Expired:
        return BridgeTr::tr("The time to decide this request is over: it has expired.");
    case RemoteVerdict::Changed:
        return BridgeTr::tr("The request is no longer what was shown here first. Decide it where "
                            "BRAM runs.");
    case RemoteVerdict::OlderThanRequest:
        return BridgeTr::tr("This is older than the request as it is listed here now.");
    case RemoteVerdict::NotShownWhole:
        return BridgeTr::tr("Not all of this command has been shown here. Use Show, or /show and "
                            "its id, and decide below that.");
    }
    Q_UNREACHABLE();
}

/// What the chat is told of a decision that it has no right to; nothing when it has.
std::optional<QString> missingRight(ChatRight right, ApprovalDecision decision)
{
    if (covers(right, decision)) {
        return std::nullopt;
    }
    return right == ChatRight::Deny
        ? BridgeTr::tr("In this chat, requests can only be denied.")
        : BridgeTr::tr("In this chat, requests can only be allowed once or denied.");
}
} // namespace

TelegramApprovalBridge::TelegramApprovalBridge(const TelegramBotConfig &config, const QUrl &apiUrl,
                                               TelegramDecisionCallback onDecision,
                                               const Collaborators &collaborators)
    : m_config(config)
    , m_onDecision(std::move(onDecision))
    , m_log(collaborators.log)
    , m_api(config, apiUrl, collaborators.network, collaborators.log)
    , m_polling(config, {m_api, collaborators.clock, collaborators.log, collaborators.tasks})
    , m_answers(m_api, collaborators.tasks)
{
    for (const qint64 chatId : config.chatIds) {
        m_chats.emplace(chatId,
                        std::make_unique<TelegramChat>(
                            chatId, termsOf(config, chatId, &m_api.mask()),
                            TelegramChat::Collaborators {.api = m_api,
                                                         .memory = collaborators.memories[chatId],
                                                         .clock = collaborators.clock,
                                                         .log = m_log,
                                                         .tasks = collaborators.tasks}));
    }
    connect(&m_polling, &UpdatePolling::updateReceived, this,
            &TelegramApprovalBridge::handleUpdate);
}

TelegramApprovalBridge::~TelegramApprovalBridge()
{
    stop();
}

void TelegramApprovalBridge::start()
{
    if (!m_isStopped && m_config.mode() != TelegramMode::PublishOnlySafe) {
        m_polling.start();
    }
}

void TelegramApprovalBridge::stop()
{
    m_isStopped = true;
    m_polling.stop();
    m_answers.stop();
    for (const auto &[chatId, chat] : m_chats) {
        chat->stop();
    }
    m_api.stop();
}

void TelegramApprovalBridge::updatePending(const QList<TelegramApprovalEntry> &entries)
{
    for (const auto &[chatId, chat] : m_chats) {
        chat->updatePending(entriesForChat(m_config, chatId, entries));
    }
}

void TelegramApprovalBridge::handleUpdate(const QJsonObject &update)
{
    const QJsonValue callbackQuery = update.value("callback_query"_L1);
    if (callbackQuery.isObject()) {
        if (m_config.enablePolling) {
            handleCallbackUpdate(callbackQuery.toObject());
        }
        return;
    }
    // Other kinds, edited messages among them, decide nothing.
    handleMessageUpdate(update.value("message"_L1).toObject());
}

void TelegramApprovalBridge::handleCallbackUpdate(const QJsonObject &callbackQuery)
{
    const QString callbackId = callbackQuery.value("id"_L1).toString();
    if (callbackId.isEmpty()) {
        return;
    }
    const auto chatId = parseChatIdFromCallbackQuery(callbackQuery);
    const auto refuse = [&](const QString &text) {
        m_answers.answerCallbackQuery(callbackId, text, Look::Alert);
    };
    TelegramChat *chat = chatWith(chatId);
    if (chat == nullptr) {
        logStranger(chatId);
        refuse(u"허용되지 않은 채팅입니다"_s);
        return;
    }
    const auto shown = parseShowData(callbackQuery.value("data"_L1).toString());
    if (!shown && m_config.agentsOf(*chatId).isEmpty()) {
        logRefusal(u"no agent bound"_s, chatId, callbackQuery);
        refuse(u"승인 권한이 없는 채팅입니다"_s);
        return;
    }
    if (const auto why = foreignSender(*chatId, callbackQuery)) {
        logRefusal(*why, chatId, callbackQuery);
        refuse(BridgeTr::tr("You may not decide in this chat."));
        return;
    }
    if (shown) {
        show(*chat, *shown, callbackId);
        return;
    }
    const auto written = parseCallbackData(callbackQuery.value("data"_L1).toString());
    if (!written) {
        logRefusal(u"unknown button"_s, chatId, callbackQuery);
        refuse(u"지원하지 않는 작업"_s);
        return;
    }
    if (const auto text = missingRight(m_config.rulesOf(*chatId).right, written->decision)) {
        logRefusal(u"beyond the rights of the chat"_s, chatId, callbackQuery);
        refuse(*text);
        return;
    }
    if (chat->showsOutdated(written->approvalId)) {
        logRefusal(u"request changed since it was shown"_s, chatId, callbackQuery);
        refuse(refusalText(RemoteVerdict::Changed));
        return;
    }
    const QJsonObject message = callbackQuery.value("message"_L1).toObject();
    const QPointer<TelegramApprovalBridge> self(this);
    const auto verdict = m_onDecision(
        {.approvalId = written->approvalId,
         .decision = written->decision,
         .chatId = *chatId,
         .source = DecisionInputSource::CallbackButton,
         .sender = senderOf(callbackQuery),
         .shown = chat->shownOf(written->approvalId, parseInt64(message.value("message_id"_L1)),
                                dateOf(message))});
    if (!self || m_isStopped) {
        return;
    }
    if (verdict == RemoteVerdict::Started) {
        m_answers.answerCallbackQuery(callbackId, confirmation(written->decision), Look::Note);
    } else {
        refuse(refusalText(verdict));
    }
}

void TelegramApprovalBridge::handleMessageUpdate(const QJsonObject &message)
{
    const auto text = parseApprovalText(message);
    const auto written = text ? parseApprovalCommand(*text) : std::nullopt;
    const auto shown = text ? parseShowCommand(*text) : std::nullopt;
    if (!written && !shown) {
        return;
    }
    const auto chatId = parseChatIdFromMessage(message);
    TelegramChat *chat = chatWith(chatId);
    if (chat == nullptr) {
        logStranger(chatId);
        return;
    }
    if (isForwardedOrEdited(message)) {
        logRefusal(u"forwarded, edited or scheduled message"_s, chatId, message);
        return;
    }
    const auto refuse = [chat](const QString &why) { chat->say(QString(u"BRAM: "_s + why)); };
    if (const auto why = foreignSender(*chatId, message)) {
        logRefusal(*why, chatId, message);
        if (isFromAPerson(message)) { // two bots could answer each other for ever
            refuse(BridgeTr::tr("You may not decide in this chat."));
        }
        return;
    }
    if (shown) {
        show(*chat, *shown, {});
        return;
    }
    if (const auto why = missingRight(m_config.rulesOf(*chatId).right, written->decision)) {
        logRefusal(u"beyond the rights of the chat"_s, chatId, message);
        refuse(*why);
        return;
    }
    const QPointer<TelegramApprovalBridge> self(this);
    const auto verdict = m_onDecision(
        {.approvalId = written->approvalId,
         .decision = written->decision,
         .chatId = *chatId,
         .source = DecisionInputSource::CommandMessage,
         .sender = senderOf(message),
         .shown = chat->shownOf(written->approvalId, std::nullopt, dateOf(message))});
    if (self && !m_isStopped && verdict != RemoteVerdict::Started) {
        refuse(refusalText(verdict));
    }
}

std::optional<QString>
TelegramApprovalBridge::foreignSender(qint64 chatId, const QJsonObject &messageOrQuery) const
{
    if (!isFromAPerson(messageOrQuery)) {
        return u"sent by a bot, a channel or a group"_s;
    }
    const auto senders = m_config.rulesOf(chatId).senders;
    if (senders && !senders->contains(senderIdOf(messageOrQuery).value_or(0))) {
        return u"sender not listed for the chat"_s;
    }
    // Nobody knows who reads a channel, and all of them see its buttons.
    if (!senders && isInAChannel(messageOrQuery.value("message"_L1).toObject())) {
        return u"no senders listed for the channel"_s;
    }
    return std::nullopt;
}

void TelegramApprovalBridge::show(TelegramChat &chat, const QString &approvalId,
                                  const QString &callbackId)
{
    using Showing = TelegramChat::Showing;
    const auto showing = chat.show(approvalId);
    const QString text = showing == Showing::Begun ? BridgeTr::tr("The command follows below.")
        : showing == Showing::NotListed
        ? notPending
        : BridgeTr::tr("Other messages are still being sent. Try again in a moment.");
    if (!callbackId.isEmpty()) {
        m_answers.answerCallbackQuery(callbackId, text,
                                      showing == Showing::Begun ? Look::Note : Look::Alert);
    } else if (showing != Showing::Begun) {
        chat.say(QString(u"BRAM: "_s + text));
    }
}

TelegramChat *TelegramApprovalBridge::chatWith(std::optional<qint64> chatId) const
{
    const auto found = chatId ? m_chats.find(*chatId) : m_chats.end();
    return found == m_chats.end() ? nullptr : found->second.get();
}

void TelegramApprovalBridge::logRefusal(const QString &reason, std::optional<qint64> chatId,
                                        const QJsonObject &messageOrQuery)
{
    const QString sender = redacted(senderOf(messageOrQuery));
    m_log.write(QString(u"[Brackwen][Telegram] decision refused: "_s + reason + u" chat="_s
                        + (chatId ? QString::number(*chatId) : u"nil"_s)
                        + (sender.isEmpty() ? QString() : u" sender="_s + sender)));
}

/// Once a chat: anybody can write to a bot, as often as they like.
void TelegramApprovalBridge::logStranger(std::optional<qint64> chatId)
{
    const qint64 key = chatId.value_or(0);
    if (!m_loggedStrangers.contains(key) && m_loggedStrangers.size() < maxLoggedStrangers) {
        m_loggedStrangers.insert(key);
        logRefusal(u"chat not configured"_s, chatId);
    }
}

} // namespace bram
