// SPDX-License-Identifier: Apache-2.0
#include "model/ApprovalItem.h"

#include "model/HonestDisplay.h"

namespace bram
{

using namespace Qt::StringLiterals;

QString ApprovalItem::pretty() const
{
    const QString agentLine = agentId.value_or(QString()).isEmpty()
        ? QString()
        : "\nagent: "_L1 + honestLine(*agentId).text;
    const HonestText shown = honestDisplay(command);
    const QString commandLines = shown.suspicious
        ? shown.text + u"\n(not as it would run: what could mislead stands as ⟨…⟩)"_s
        : command;
    return "approval id: "_L1 + honestLine(approvalId).text + agentLine + "\ncmd: "_L1
        + commandLines;
}

size_t qHash(const ApprovalItem &item, size_t seed) noexcept
{
    return qHashMulti(seed, item.approvalId, item.command, item.agentId.has_value(),
                      item.agentId.value_or(QString()), item.createdAtMs, item.expiresAtMs);
}

bool isSameQuestion(const ApprovalItem &a, const ApprovalItem &b)
{
    return a.approvalId == b.approvalId && a.command == b.command && a.agentId == b.agentId;
}

bool isApprovalExpired(const ApprovalItem &item, qint64 nowMs)
{
    return item.expiresAtMs >= 1 && item.expiresAtMs <= nowMs;
}

} // namespace bram
