// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalItem.h"

#include <QList>
#include <QSet>

#include <functional>
#include <optional>

namespace bram
{

/// Which request the popup shows and which wait for it, in order of arrival. A request that was queued
/// once is not queued again until it has been removed.
class PopupQueue
{
public:
    const QList<ApprovalItem> &waiting() const { return m_waiting; }
    const std::optional<ApprovalItem> &activeItem() const { return m_active; }

    /// False when the request had been queued before; then what waits or is on the screen is brought up
    /// to date.
    bool enqueue(const ApprovalItem &item);

    bool contains(const QString &approvalId) const
    {
        return m_queuedIds.contains(approvalId) && !m_finishedIds.contains(approvalId);
    }
    /// Whether it was ever queued, and not removed since.
    bool wasQueued(const QString &approvalId) const { return m_queuedIds.contains(approvalId); }
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
    QList<ApprovalItem> m_waiting;
    QSet<QString> m_queuedIds; ///< ever queued and not removed since
    QSet<QString> m_finishedIds; ///< of these: answered or closed
    std::optional<ApprovalItem> m_active;
};

} // namespace bram
