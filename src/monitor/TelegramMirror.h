// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "monitor/MonitorPorts.h"
#include "telegram/TelegramApprovalEntry.h"

#include <QByteArray>
#include <QHash>
#include <QObject>
#include <QPointer>
#include <QQueue>

namespace bram
{

class TelegramApprovalBridge;

/// Hands the pending requests of the chosen agent to the Telegram bridge, if there is one. What changes within
/// one turn of the event loop goes out together. Main thread only.
class TelegramMirror final : public QObject, public PendingMirror
{
    Q_OBJECT

public:
    /// `filter` outlives the mirror.
    explicit TelegramMirror(const AgentFilter &filter);

    /// The bridge to hand requests to from now on, beginning with `items`; null for none.
    void setBridge(TelegramApprovalBridge *bridge, const QList<ApprovalItem> &items);

    void update(const QList<ApprovalItem> &items) override { syncTelegramPendingApprovals(items); }
    /// All pending requests, in the order of the queue.
    void syncTelegramPendingApprovals(const QList<ApprovalItem> &items);

    /// Whether something else may stand in a chat under the id of this request: as it is now, it is not what a
    /// bridge, perhaps an earlier one, was first given under that id. Messages that nobody edits any more stay
    /// in the chats, with their buttons.
    bool hasChanged(const ApprovalItem &item) const;

private:
    void handOver();
    void remember(const ApprovalItem &item);
    TelegramApprovalEntry entryFor(const ApprovalItem &item) const;

    const AgentFilter &m_filter;
    QPointer<TelegramApprovalBridge> m_bridge;
    QList<ApprovalItem> m_items;
    bool m_handOverScheduled = false;
    QHash<QString, TelegramApprovalEntry> m_given; ///< by id: what the bridge has now
    /// By id, a digest of what was first given under it; empty once that has changed. Not too many, so:
    QHash<QString, QByteArray> m_firstGiven;
    QQueue<QString> m_firstGivenIds; ///< from the oldest
};

} // namespace bram
