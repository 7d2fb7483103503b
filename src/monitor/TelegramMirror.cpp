// SPDX-License-Identifier: Apache-2.0
#include "monitor/TelegramMirror.h"

#include "model/CommandRules.h"
#include "system/NextTurn.h"
#include "telegram/TelegramApprovalBridge.h"

#include <QCryptographicHash>

#include <utility>

namespace bram
{

namespace
{
/// Many times what can be pending; older messages are out of sight in any chat.
constexpr qsizetype maxRemembered = 1000;

/// Of what a person decides about (`isSameQuestion`) under one id.
QByteArray digestOf(const ApprovalItem &item)
{
    const auto bytesOf = [](const QString &text) {
        return QByteArrayView(reinterpret_cast<const char *>(text.constData()),
                              text.size() * qsizetype(sizeof(QChar)));
    };
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (item.agentId) {
        hash.addData(QByteArray::number(item.agentId->size()) + ':');
        hash.addData(bytesOf(*item.agentId));
    }
    hash.addData(QByteArrayView("/"));
    hash.addData(bytesOf(item.command));
    return hash.result();
}
} // namespace

TelegramMirror::TelegramMirror(const AgentFilter &filter)
    : m_filter(filter)
{
}

void TelegramMirror::setBridge(TelegramApprovalBridge *bridge, const QList<ApprovalItem> &items)
{
    m_bridge = bridge;
    m_given.clear();
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
    for (const ApprovalItem &item : items) {
        if (!m_filter.matches(item)) {
            continue;
        }
        const TelegramApprovalEntry entry = entryFor(item);
        if (m_given.value(item.approvalId) != entry) {
            remember(item);
        }
        entries.append(entry);
        given.insert(item.approvalId, entry);
    }
    m_given = std::move(given);
    m_bridge->updatePending(entries);
}

void TelegramMirror::remember(const ApprovalItem &item)
{
    const auto first = m_firstGiven.find(item.approvalId);
    if (first != m_firstGiven.end()) {
        if (*first != digestOf(item)) {
            first->clear();
        }
        return;
    }
    m_firstGiven.insert(item.approvalId, digestOf(item));
    m_firstGivenIds.enqueue(item.approvalId);
    if (m_firstGivenIds.size() > maxRemembered) {
        m_firstGiven.remove(m_firstGivenIds.dequeue());
    }
}

bool TelegramMirror::hasChanged(const ApprovalItem &item) const
{
    const auto first = m_firstGiven.constFind(item.approvalId);
    return first != m_firstGiven.constEnd() && *first != digestOf(item);
}

TelegramApprovalEntry TelegramMirror::entryFor(const ApprovalItem &item) const
{
    const auto known = m_given.constFind(item.approvalId);
    if (known != m_given.constEnd() && known->command == item.command
        && known->agentId == item.agentId) {
        TelegramApprovalEntry same = *known; // the rating costs more than everything else here
        same.expiresAtMs = item.expiresAtMs;
        return same;
    }
    return {.approvalId = item.approvalId,
            .command = item.command,
            .agentId = item.agentId,
            .isHighRisk = commandRiskLevel(item.command) == CommandRisk::High,
            .expiresAtMs = item.expiresAtMs};
}

} // namespace bram
