// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalItem.h"

#include <QHash>
#include <QSet>

#include <cstddef>
#include <functional>
#include <map>
#include <optional>

namespace bram
{

/// Which request the popup shows and which wait for it, in order of arrival, and not too many. A request that
/// was queued once is not queued again until it has been removed.
class PopupQueue
{
public:
    static constexpr std::size_t maxWaiting = 10'000;
    /// Of the commands that wait, together: each may have megabytes.
    static constexpr qsizetype maxWaitingUnits = 32 * 1024 * 1024;

    enum class Entry {
        Queued,
        Known, ///< queued before; what waits or is on the screen has been brought up to date
        NoRoom,
    };

    /// By their turn.
    using Waiting = std::map<quint64, ApprovalItem>;
    const Waiting &waiting() const { return m_waiting; }
    const std::optional<ApprovalItem> &activeItem() const { return m_active; }

    Entry enqueue(const ApprovalItem &item);
    bool isHalfEmpty() const
    {
        return m_waiting.size() <= maxWaiting / 2 && m_waitingUnits <= maxWaitingUnits / 2;
    }

    bool contains(const QString &approvalId) const
    {
        return m_turns.contains(approvalId) && !m_finishedIds.contains(approvalId);
    }
    /// Whether it was ever queued, and not removed since.
    bool wasQueued(const QString &approvalId) const { return m_turns.contains(approvalId); }
    /// The request on the screen or waiting for it; null when it is neither.
    const ApprovalItem *find(const QString &approvalId) const;

    /// Takes the next request whose time is not over onto the screen; nothing when one is there or none
    /// waits.
    std::optional<ApprovalItem> takeNext(qint64 nowMs);

    /// The popup for this request was answered or closed; says nothing about another one.
    void finish(const QString &approvalId);

    /// Forgets a request that is no longer pending. True when it was the one on the screen.
    bool remove(const QString &approvalId);

    /// Takes out what `isKept` is false for, as if it had never been queued. True when that was the one on
    /// the screen.
    bool retain(const std::function<bool(const ApprovalItem &)> &isKept);

    void reset();

private:
    bool isActive(const QString &approvalId) const
    {
        return m_active && m_active->approvalId == approvalId;
    }
    Waiting::iterator drop(Waiting::iterator waiting);

    Waiting m_waiting;
    qsizetype m_waitingUnits = 0;
    QHash<QString, quint64> m_turns; ///< of those ever queued and not removed since
    quint64 m_lastTurn = 0;
    QSet<QString> m_finishedIds; ///< of these: answered or closed
    std::optional<ApprovalItem> m_active;
};

} // namespace bram
