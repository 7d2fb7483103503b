// SPDX-License-Identifier: Apache-2.0
#include "monitor/TelegramMirror.h"

#include "model/CommandRules.h"
#include "system/NextTurn.h"
#include "telegram/TelegramApprovalBridge.h"

#include <utility>

namespace bram
{

TelegramMirror::TelegramMirror(const AgentFilter &filter)
    : m_filter(filter)
{
}

void TelegramMirror::setBridge(TelegramApprovalBridge *bridge, const QList<ApprovalItem> &items)
{
    m_bridge = bridge;
    m_given.clear();
    m_changedIds.clear();
    syncTelegramPendingApprovals(items);
}

void TelegramMirror::syncTelegramPendingApprovals(const QList<ApprovalItem> &items)
{
    if (!m_bridge) {
        return;
    }
    m_items = items;
    if (!std::exchange(m_handOverScheduled, true)) {
        inNextTurn(this, [this] { handOver(); });
    }
}

void TelegramMirror::handOver()
{
    m_handOverScheduled = false;
    const auto items = std::exchange(m_items, {});
    if (!m_bridge) {
        return;
    }
    QList<TelegramApprovalEntry> entries;
    QHash<QString, TelegramApprovalEntry> given;
    QSet<QString> changedIds;
    for (const ApprovalItem &item : items) {
        if (!m_filter.matches(item)) {
            continue;
        }
        const TelegramApprovalEntry entry = entryFor(item);
        const auto before = m_given.constFind(item.approvalId);
        if (m_changedIds.contains(item.approvalId)
            || (before != m_given.constEnd() && *before != entry)) {
            changedIds.insert(item.approvalId);
        }
        entries.append(entry);
        given.insert(item.approvalId, entry);
    }
    m_given = std::move(given);
    m_changedIds = std::move(changedIds);
    m_bridge->updatePending(entries);
}

TelegramApprovalEntry TelegramMirror::entryFor(const ApprovalItem &item) const
{
    const auto known = m_given.constFind(item.approvalId);
    if (known != m_given.constEnd() && known->command == item.command
        && known->agentId == item.agentId) {
        return *known; // the rating costs more than everything else here
    }
    return {.approvalId = item.approvalId,
            .command = item.command,
            .agentId = item.agentId,
            .isHighRisk = commandRiskLevel(item.command) == CommandRisk::High};
}

} // namespace bram
