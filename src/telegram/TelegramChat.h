// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "telegram/BridgeError.h"
#include "telegram/ChatOutbox.h"
#include "telegram/PendingMessage.h"
#include "telegram/TelegramApprovalEntry.h"
#include "telegram/TelegramBotApi.h"
#include "telegram/TelegramBotConfig.h"
#include "telegram/TelegramDecision.h"

#include <QCoro/QCoroTask>
#include <QDeadlineTimer>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <optional>

namespace bram
{

class BackgroundTasks;
class ChatMemory;
class Clock;
class SystemLog;

/// One chat: its status message, which it keeps at the newest list, and what else it is told. One call at a
/// time, so that what stands in the chat in the end is what was said last; at most one change of the status
/// message a second, and none while Telegram asks to wait. Main thread only.
class TelegramChat final : public QObject
{
    Q_OBJECT

public:
    struct Collaborators {
        TelegramBotApi &api;
        ChatMemory &memory; ///< of this chat
        const Clock &clock;
        SystemLog &log;
        BackgroundTasks &tasks;
    };

    TelegramChat(qint64 chatId, const ChatTerms &terms, const Collaborators &collaborators);

    /// What the status message shall list. A list that was empty in between ends the message, so that the
    /// next request comes as a new one, which phones announce.
    void updatePending(const QList<TelegramApprovalEntry> &entries);

    /// A message of its own, once; dropped when it cannot be sent.
    void say(const QString &text);

    /// What becomes of the wish to be shown a command whole.
    enum class Showing {
        Begun,
        NotListed,
        Busy, ///< enough is being sent already
    };
    /// Sends the command of the request in messages of its own, with the keys for it below the last. The
    /// beginning of an id is enough if it is that of one listed request.
    Showing show(const QString &approvalId);

    /// What the chat had been given of the request by an order of this date, or by a button under this
    /// message, which is of that date.
    ShownInChat shownOf(const QString &approvalId, std::optional<qint64> messageId,
                        std::optional<qint64> dateSeconds) const;

    /// Whether the status message may still show this request as it is no longer: whoever decides it from
    /// there has read something else.
    bool showsOutdated(const QString &approvalId) const;

    /// No further call. Those under way are the API's to end.
    void stop();

private:
    bool isOutOfDate() const;
    void next();
    static QCoro::Task<> bringUpToDate(QPointer<TelegramChat> self);
    static QCoro::Task<std::optional<BridgeError>>
    upsertPendingMessage(QPointer<TelegramChat> self, QList<TelegramApprovalEntry> entries);
    static QCoro::Task<std::optional<BridgeError>> retireMessage(QPointer<TelegramChat> self);
    static QCoro::Task<> sendFromOutbox(QPointer<TelegramChat> self, ChatOutbox::Call call);
    void onSent(const ChatOutbox::Call &call, const TelegramBotApi::Result &sent);
    void endOutdatedShowings();
    void noteServerTime(const TelegramBotApi::Result &answer);
    void rememberAttempt(const QList<TelegramApprovalEntry> &entries);
    void onUpdated(const QList<TelegramApprovalEntry> &entries,
                   const std::optional<BridgeError> &error);
    void postpone(const BridgeError &error);

    qint64 m_chatId;
    ChatTerms m_terms;
    Collaborators m_collaborators;
    QList<TelegramApprovalEntry> m_wanted;
    bool m_wasEmptied = false; ///< since the status message was sent
    std::optional<qint64> m_messageId; ///< of the status message
    QList<TelegramApprovalEntry> m_shown; ///< in it, as its last confirmed change has it
    QList<TelegramApprovalEntry> m_perhapsShown; ///< by changes that are not confirmed (yet)
    QList<TelegramApprovalEntry>
        m_perhapsShownWhole; ///< by the change under way, for the first time
    ChatOutbox m_outbox;
    bool m_isCalling = false;
    bool m_isRefused = false; ///< until the next list, because another try would end alike
    int m_failures = 0; ///< in a row, of a kind that passes
    QDeadlineTimer m_callsFrom; ///< before that, no call at all
    QDeadlineTimer m_updatesFrom; ///< before that, none for the status message
    QTimer m_wakeUp; ///< runs only while a call is due and has to wait
    bool m_isStopped = false;
};

} // namespace bram
