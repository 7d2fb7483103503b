// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "monitor/MonitorPorts.h"
#include "telegram/TelegramApprovalEntry.h"

#include <QHash>
#include <QObject>
#include <QPointer>
#include <QSet>

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

    /// Whether the pending request with this id is not what the bridge was first given under it.
    bool hasChanged(const QString &approvalId) const { return m_changedIds.contains(approvalId); }

private:
    void handOver();
    TelegramApprovalEntry entryFor(const ApprovalItem &item) const;

    const AgentFilter &m_filter;
    QPointer<TelegramApprovalBridge> m_bridge;
    QList<ApprovalItem> m_items;
    bool m_handOverScheduled = false;
    QHash<QString, TelegramApprovalEntry> m_given; ///< by id: what the bridge has now
    QSet<QString> m_changedIds; ///< of those
};

} // namespace bram
