// SPDX-License-Identifier: Apache-2.0
#include "telegram/TelegramChat.h"

#include "config/ValueParsers.h"
#include "system/BackgroundTasks.h"
#include "system/SystemLog.h"
#include "telegram/PendingMessage.h"

#include <QJsonArray>

#include <algorithm>

namespace bram
{

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{
/// What Telegram lets a bot do in one chat without asking it to wait.
constexpr auto updateInterval = 1s;
constexpr auto firstPause = 2s;
constexpr std::chrono::seconds longestPause = 60s;
constexpr int pausesToLongest = 5;
constexpr qsizetype maxReplies = 20;

/// Telegram refuses an edit that changes nothing; then the message already reads as it shall.
bool isNotModified(const TelegramBotApi::Result &result)
{
    return !result && result.error().kind == BridgeError::Kind::Api
        && result.error().message.contains(u"message is not modified"_s, Qt::CaseInsensitive);
}

const TelegramApprovalEntry *find(const QList<TelegramApprovalEntry> &entries,
                                  const QString &approvalId)
{
    const auto found = std::ranges::find(entries, approvalId, &TelegramApprovalEntry::approvalId);
    return found == entries.end() ? nullptr : &*found;
}

std::optional<QJsonObject> keyboardFor(const QList<TelegramApprovalEntry> &entries,
                                       TelegramMode mode)
{
    // Nobody shall decide by a key what is not listed above it.
    return mode == TelegramMode::Polling
        ? renderCallbackKeyboard(entries, mode)
        : renderCommandKeyboard(entries.first(listedCount(entries, mode)), mode);
}
} // namespace

TelegramChat::TelegramChat(qint64 chatId, TelegramMode mode, const Collaborators &collaborators)
    : m_chatId(chatId)
    , m_mode(mode)
    , m_collaborators(collaborators)
{
    m_wakeUp.setSingleShot(true);
    connect(&m_wakeUp, &QTimer::timeout, this, &TelegramChat::next);
}

void TelegramChat::updatePending(const QList<TelegramApprovalEntry> &entries)
{
    m_isRefused = false;
    if (m_wanted != entries && m_failures > 1) {
        // Something new is worth an earlier try than the old was.
        m_failures = 1;
        m_updatesFrom = std::min(m_updatesFrom, QDeadlineTimer(firstPause));
    }
    m_wanted = entries;
    m_wasEmptied = m_wasEmptied || entries.isEmpty();
    next();
}

void TelegramChat::say(const QString &text)
{
    if (m_replies.size() < maxReplies) {
        m_replies.enqueue(text);
    }
    next();
}

bool TelegramChat::showsOutdated(const QString &approvalId) const
{
    const auto *wanted = find(m_wanted, approvalId);
    const auto isOlder = [&](const TelegramApprovalEntry &entry) {
        return entry.approvalId == approvalId && entry != *wanted;
    };
    return wanted != nullptr
        && (std::ranges::any_of(m_shown, isOlder) || std::ranges::any_of(m_perhapsShown, isOlder));
}

void TelegramChat::stop()
{
    m_isStopped = true;
    m_wakeUp.stop();
}

bool TelegramChat::isOutOfDate() const
{
    if (m_isRefused) {
        return false;
    }
    if (m_messageId) {
        return m_wasEmptied || m_wanted != m_shown;
    }
    return !m_wanted.isEmpty();
}

void TelegramChat::next()
{
    const bool hasReply = !m_replies.isEmpty();
    if (m_isCalling || m_isStopped || (!hasReply && !isOutOfDate())) {
        return;
    }
    const QDeadlineTimer due = hasReply ? m_callsFrom : std::max(m_callsFrom, m_updatesFrom);
    if (!due.hasExpired()) {
        m_wakeUp.start(std::chrono::ceil<std::chrono::milliseconds>(due.remainingTimeAsDuration()));
        return;
    }
    m_isCalling = true;
    if (hasReply) {
        m_collaborators.tasks.spawn(sendReply(this, m_replies.dequeue()), u"chat reply"_s);
    } else {
        m_collaborators.tasks.spawn(bringUpToDate(this), u"chat update"_s);
    }
}

QCoro::Task<> TelegramChat::bringUpToDate(QPointer<TelegramChat> self)
{
    std::optional<BridgeError> error;
    if (self->m_messageId && self->m_wasEmptied) {
        error = co_await retireMessage(self);
        if (!self) {
            co_return;
        }
    }
    const QList<TelegramApprovalEntry> entries = self->m_wanted;
    if (!error && !entries.isEmpty()) {
        error = co_await upsertPendingMessage(self, entries);
        if (!self) {
            co_return;
        }
    }
    self->onUpdated(entries, error);
}

QCoro::Task<std::optional<BridgeError>>
TelegramChat::upsertPendingMessage(QPointer<TelegramChat> self,
                                   QList<TelegramApprovalEntry> entries)
{
    QJsonObject payload {{u"chat_id"_s, self->m_chatId},
                         {u"text"_s, renderPendingText(entries, self->m_mode)}};
    if (const auto keyboard = keyboardFor(entries, self->m_mode)) {
        payload.insert(u"reply_markup"_s, *keyboard);
    }
    self->rememberAttempt(entries);
    const auto former = self->m_messageId;
    bool isFormerGone = !former;
    if (former) {
        QJsonObject edit = payload;
        edit.insert(u"message_id"_s, *former);
        const auto edited = co_await self->m_collaborators.api.call(u"editMessageText"_s, edit);
        if (!self || edited || isNotModified(edited)) {
            co_return std::nullopt;
        }
        if (!edited.error().isLasting()) {
            co_return edited.error();
        }
        isFormerGone = edited.error().message.contains(u"not found"_s);
    }
    // Whatever the list was before this message: the message starts with this one.
    self->m_wasEmptied = self->m_wanted.isEmpty();
    const auto sent = co_await self->m_collaborators.api.call(u"sendMessage"_s, payload);
    if (!self) {
        co_return std::nullopt;
    }
    if (!sent) {
        co_return sent.error();
    }
    self->m_messageId = parseInt64(sent->value("result"_L1).toObject().value("message_id"_L1));
    if (!isFormerGone) {
        // Telegram edits no message that came with keys. It would go on showing an old list.
        const QJsonObject message {{u"chat_id"_s, self->m_chatId}, {u"message_id"_s, *former}};
        co_await self->m_collaborators.api.call(u"deleteMessage"_s, message);
    }
    co_return std::nullopt;
}

QCoro::Task<std::optional<BridgeError>> TelegramChat::retireMessage(QPointer<TelegramChat> self)
{
    const QJsonObject message {{u"chat_id"_s, self->m_chatId},
                               {u"message_id"_s, *self->m_messageId}};
    QJsonObject edit = message;
    edit.insert(u"text"_s, QString(nothingPendingText));
    edit.insert(u"reply_markup"_s, QJsonObject {{u"inline_keyboard"_s, QJsonArray()}});
    const auto edited = co_await self->m_collaborators.api.call(u"editMessageText"_s, edit);
    if (!self) {
        co_return std::nullopt;
    }
    if (!edited && !isNotModified(edited)) {
        if (!edited.error().isLasting()) {
            co_return edited.error();
        }
        const auto deleted = co_await self->m_collaborators.api.call(u"deleteMessage"_s, message);
        if (!self) {
            co_return std::nullopt;
        }
        if (!deleted && !deleted.error().isLasting()) {
            co_return deleted.error();
        }
    }
    self->m_messageId.reset();
    self->m_shown.clear();
    self->m_perhapsShown.clear();
    self->m_wasEmptied = self->m_wanted.isEmpty();
    co_return std::nullopt;
}

QCoro::Task<> TelegramChat::sendReply(QPointer<TelegramChat> self, QString text)
{
    const QJsonObject payload {{u"chat_id"_s, self->m_chatId}, {u"text"_s, text}};
    const auto sent = co_await self->m_collaborators.api.call(u"sendMessage"_s, payload);
    if (!self) {
        co_return;
    }
    self->m_isCalling = false;
    if (!sent && sent.error().retryAfter) {
        self->m_callsFrom = QDeadlineTimer(*sent.error().retryAfter);
    }
    self->next();
}

void TelegramChat::rememberAttempt(const QList<TelegramApprovalEntry> &entries)
{
    m_perhapsShown.removeIf([this](const TelegramApprovalEntry &entry) {
        return find(m_wanted, entry.approvalId) == nullptr;
    });
    for (const TelegramApprovalEntry &entry : entries) {
        if (!m_perhapsShown.contains(entry)) {
            m_perhapsShown.append(entry);
        }
    }
}

void TelegramChat::onUpdated(const QList<TelegramApprovalEntry> &entries,
                             const std::optional<BridgeError> &error)
{
    m_isCalling = false;
    if (m_isStopped) {
        return;
    }
    if (error) {
        m_collaborators.log.write(QString(
            u"[Brackwen][Telegram] pending message update failed (chat=%1): "_s.arg(m_chatId)
            + error->description()));
        postpone(*error);
    } else {
        m_shown = entries;
        m_perhapsShown.clear();
        m_failures = 0;
        m_updatesFrom = QDeadlineTimer(updateInterval);
        // An answer without a message id leaves nothing to edit; sending again and again would fill the chat.
        m_isRefused = !entries.isEmpty() && !m_messageId;
    }
    next();
}

void TelegramChat::postpone(const BridgeError &error)
{
    m_isRefused = error.isLasting();
    if (error.retryAfter) {
        m_callsFrom = QDeadlineTimer(*error.retryAfter);
    } else if (m_isRefused) {
        m_updatesFrom = QDeadlineTimer(updateInterval);
    } else {
        m_updatesFrom = QDeadlineTimer(
            std::min<std::chrono::seconds>(firstPause * (1 << m_failures), longestPause));
        m_failures = std::min(m_failures + 1, pausesToLongest);
    }
}

} // namespace bram
