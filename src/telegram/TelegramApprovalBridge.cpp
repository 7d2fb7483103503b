// SPDX-License-Identifier: Apache-2.0
#include "telegram/TelegramApprovalBridge.h"

#include "system/SystemLog.h"
#include "telegram/DecisionTexts.h"
#include "telegram/PendingMessage.h"
#include "telegram/TelegramUpdates.h"

#include <QPointer>

#include <utility>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
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
                            chatId, config.mode(),
                            TelegramChat::Collaborators {m_api, m_log, collaborators.tasks}));
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
    const TelegramChat *chat = chatWith(chatId);
    if (chat == nullptr) {
        logStranger(chatId);
        refuse(u"허용되지 않은 채팅입니다"_s);
        return;
    }
    if (m_config.agentsOf(*chatId).isEmpty()) {
        logRefusal(u"no agent bound"_s, chatId);
        refuse(u"승인 권한이 없는 채팅입니다"_s);
        return;
    }
    const auto written = parseCallbackData(callbackQuery.value("data"_L1).toString());
    if (!written) {
        logRefusal(u"unknown button"_s, chatId);
        refuse(u"지원하지 않는 작업"_s);
        return;
    }
    if (chat->showsOutdated(written->approvalId)) {
        logRefusal(u"request changed since it was shown"_s, chatId);
        refuse(notPending);
        return;
    }
    const QPointer<TelegramApprovalBridge> self(this);
    const bool isAccepted = m_onDecision({.approvalId = written->approvalId,
                                          .decision = written->decision,
                                          .chatId = *chatId,
                                          .source = DecisionInputSource::CallbackButton,
                                          .sender = senderOf(callbackQuery)});
    if (!self || m_isStopped) {
        return;
    }
    if (isAccepted) {
        m_answers.answerCallbackQuery(callbackId, confirmation(written->decision), Look::Note);
    } else {
        refuse(notPending);
    }
}

void TelegramApprovalBridge::handleMessageUpdate(const QJsonObject &message)
{
    const auto text = parseApprovalText(message);
    const auto written = text ? parseApprovalCommand(*text) : std::nullopt;
    if (!written) {
        return;
    }
    const auto chatId = parseChatIdFromMessage(message);
    TelegramChat *chat = chatWith(chatId);
    if (chat == nullptr) {
        logStranger(chatId);
        return;
    }
    if (isForwardedOrEdited(message)) {
        logRefusal(u"forwarded or edited message"_s, chatId);
        return;
    }
    const QPointer<TelegramApprovalBridge> self(this);
    const bool isAccepted = m_onDecision({.approvalId = written->approvalId,
                                          .decision = written->decision,
                                          .chatId = *chatId,
                                          .source = DecisionInputSource::CommandMessage,
                                          .sender = senderOf(message)});
    if (self && !m_isStopped && !isAccepted) {
        chat->say(QString(u"BRAM: "_s + notPending));
    }
}

TelegramChat *TelegramApprovalBridge::chatWith(std::optional<qint64> chatId) const
{
    const auto found = chatId ? m_chats.find(*chatId) : m_chats.end();
    return found == m_chats.end() ? nullptr : found->second.get();
}

void TelegramApprovalBridge::logRefusal(const QString &reason, std::optional<qint64> chatId)
{
    m_log.write(QString(u"[Brackwen][Telegram] decision refused: "_s + reason + u" chat="_s
                        + (chatId ? QString::number(*chatId) : u"nil"_s)));
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
