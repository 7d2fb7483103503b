// SPDX-License-Identifier: Apache-2.0
#include "telegram/TelegramChat.h"

#include "config/ValueParsers.h"
#include "system/BackgroundTasks.h"
#include "system/Clock.h"
#include "system/SystemLog.h"
#include "telegram/ChatMemory.h"
#include "telegram/ChatText.h"
#include "telegram/TelegramUpdates.h"

#include <QJsonArray>

#include <algorithm>
#include <utility>

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
                                       const ChatTerms &terms)
{
    // Nobody shall decide by a key what is not listed above it.
    return terms.mode == TelegramMode::Polling
        ? renderCallbackKeyboard(entries, terms)
        : renderCommandKeyboard(entries.first(listedCount(entries, terms)), terms);
}

std::optional<qint64> messageIdIn(const QJsonObject &answer)
{
    return parseInt64(answer.value("result"_L1).toObject().value("message_id"_L1));
}
} // namespace

TelegramChat::TelegramChat(qint64 chatId, const ChatTerms &terms,
                           const Collaborators &collaborators)
    : m_chatId(chatId)
    , m_terms(terms)
    , m_collaborators(collaborators)
    , m_outbox(chatId, terms)
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
    m_collaborators.memory.update(entries, m_collaborators.clock.nowMs());
    endOutdatedShowings();
    next();
}

void TelegramChat::say(const QString &text)
{
    m_outbox.say(text);
    next();
}

TelegramChat::Showing TelegramChat::show(const QString &approvalId)
{
    const auto *entry = find(m_wanted, approvalId);
    if (entry == nullptr) {
        const auto beginsSo = [&](const TelegramApprovalEntry &each) {
            return each.approvalId.startsWith(approvalId);
        };
        const auto found = std::ranges::find_if(m_wanted, beginsSo);
        if (found == m_wanted.end() || std::ranges::count_if(m_wanted, beginsSo) != 1) {
            return Showing::NotListed;
        }
        entry = &*found;
    }
    const bool isTaken = m_outbox.show(*entry);
    next();
    return isTaken ? Showing::Begun : Showing::Busy;
}

ShownInChat TelegramChat::shownOf(const QString &approvalId, std::optional<qint64> messageId,
                                  std::optional<qint64> dateSeconds) const
{
    const auto *entry = find(m_wanted, approvalId);
    const bool isOurs
        = messageId && (messageId == m_messageId || m_outbox.hasShownWith(*messageId));
    const auto &memory = m_collaborators.memory;
    if (entry == nullptr
        || (!isOurs && (!dateSeconds || memory.isOlderThan(approvalId, *dateSeconds)))) {
        return ShownInChat::Nothing;
    }
    return memory.wasShownWhole(*entry) ? ShownInChat::Whole : ShownInChat::Part;
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
    const bool hasOther = !m_outbox.isEmpty();
    if (m_isCalling || m_isStopped || (!hasOther && !isOutOfDate())) {
        return;
    }
    const QDeadlineTimer due = hasOther ? m_callsFrom : std::max(m_callsFrom, m_updatesFrom);
    if (!due.hasExpired()) {
        m_wakeUp.start(std::chrono::ceil<std::chrono::milliseconds>(due.remainingTimeAsDuration()));
        return;
    }
    m_isCalling = true;
    if (hasOther) {
        m_collaborators.tasks.spawn(sendFromOutbox(this, m_outbox.takeNext()), u"chat message"_s);
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
    QJsonObject payload = chatMessage(self->m_chatId, renderPendingText(entries, self->m_terms));
    if (const auto keyboard = keyboardFor(entries, self->m_terms)) {
        payload.insert(u"reply_markup"_s, *keyboard);
    }
    self->rememberAttempt(entries);
    const auto former = self->m_messageId;
    bool isFormerGone = !former;
    if (former) {
        QJsonObject edit = payload;
        edit.insert(u"message_id"_s, *former);
        const auto edited = co_await self->m_collaborators.api.call(u"editMessageText"_s, edit);
        if (!self) {
            co_return std::nullopt;
        }
        self->noteServerTime(edited);
        if (edited || isNotModified(edited)) {
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
    self->noteServerTime(sent);
    self->m_messageId = messageIdIn(*sent);
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
    QJsonObject edit = chatMessage(self->m_chatId, nothingPendingText);
    edit.insert(u"message_id"_s, *self->m_messageId);
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

QCoro::Task<> TelegramChat::sendFromOutbox(QPointer<TelegramChat> self, ChatOutbox::Call call)
{
    // Before the answer: a person may be faster.
    const bool isNew = call.isWhole && self->m_collaborators.memory.noteShownWhole(*call.shows);
    const auto sent = co_await self->m_collaborators.api.call(call.method, call.payload);
    if (!self) {
        co_return;
    }
    if (!sent && isNew) {
        self->m_collaborators.memory.takeBackShownWhole(*call.shows);
    }
    self->onSent(call, sent);
}

void TelegramChat::onSent(const ChatOutbox::Call &call, const TelegramBotApi::Result &sent)
{
    m_isCalling = false;
    noteServerTime(sent);
    if (sent) {
        m_outbox.onSent(call, messageIdIn(*sent));
    } else if (sent.error().retryAfter) {
        m_callsFrom = QDeadlineTimer(*sent.error().retryAfter);
        m_outbox.putBack(call);
    } else {
        m_outbox.onFailed(call);
        if (call.shows) {
            m_collaborators.log.write(
                QString(u"[Brackwen][Telegram] showing a command failed (chat=%1): "_s.arg(m_chatId)
                        + sent.error().description()));
        }
    }
    endOutdatedShowings(); // the list may have changed meanwhile
    next();
}

void TelegramChat::endOutdatedShowings()
{
    m_outbox.end([this](const TelegramApprovalEntry &entry) {
        const auto *wanted = find(m_wanted, entry.approvalId);
        return wanted == nullptr || *wanted != entry;
    });
}

void TelegramChat::noteServerTime(const TelegramBotApi::Result &answer)
{
    if (const auto date = answer ? dateOf(answer->value("result"_L1).toObject()) : std::nullopt) {
        m_collaborators.memory.noteServerTime(*date, m_collaborators.clock.nowMs());
    }
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
    for (const TelegramApprovalEntry &entry : entries.first(listedCount(entries, m_terms))) {
        if (isShownWholeInList(entry.command, m_terms.mask)
            && m_collaborators.memory.noteShownWhole(entry)) {
            m_perhapsShownWhole.append(entry);
        }
    }
}

void TelegramChat::onUpdated(const QList<TelegramApprovalEntry> &entries,
                             const std::optional<BridgeError> &error)
{
    m_isCalling = false;
    for (const auto newlyShown = std::exchange(m_perhapsShownWhole, {});
         const TelegramApprovalEntry &entry : newlyShown) {
        // Where only the answer was lost, the list may be there, and its buttons are pressed.
        if (error && error->isLasting()) {
            m_collaborators.memory.takeBackShownWhole(entry);
        }
    }
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
