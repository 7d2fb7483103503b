// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "telegram/TelegramApprovalEntry.h"

#include <QByteArray>
#include <QHash>
#include <QList>

#include <map>
#include <optional>

namespace bram
{

/// What one chat has been given of the pending requests, whichever bridge gave it. A request that is taken off
/// the list is forgotten: under the same id another one may come.
class ChatMemory
{
public:
    /// The chat has been given this list.
    void update(const QList<TelegramApprovalEntry> &entries, qint64 nowMs);
    /// All of the command has been sent there, in this form.
    /// True when that is new.
    bool noteShownWhole(const TelegramApprovalEntry &entry);
    /// It was not, after all.
    void takeBackShownWhole(const TelegramApprovalEntry &entry);
    /// Telegram dates messages by a clock of its own.
    void noteServerTime(qint64 serverSeconds, qint64 nowMs);

    /// False also for a request that is not listed.
    bool wasShownWhole(const TelegramApprovalEntry &entry) const;
    /// Whether something that Telegram dated so is older than the first time the chat was given the request.
    bool isOlderThan(const QString &approvalId, qint64 serverSeconds) const;

private:
    struct Given {
        qint64 firstMs = 0;
        QByteArray wholeForm {}; ///< a digest of what was sent whole; empty: nothing was
    };
    QHash<QString, Given> m_given; ///< by approval id
    std::optional<qint64> m_serverAheadMs;
};

using ChatMemories = std::map<qint64, ChatMemory>; ///< by chat id

} // namespace bram
