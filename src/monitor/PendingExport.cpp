// SPDX-License-Identifier: Apache-2.0
#include "monitor/PendingExport.h"

#include "audit/Redaction.h"
#include "model/HonestDisplay.h"
#include "model/UtcTime.h"

#include <QDateTime>
#include <QStringList>

namespace bram
{

using namespace Qt::StringLiterals;

QString pendingApprovalExportText(const QList<ApprovalItem> &displayItems, qint64 nowMs,
                                  SecretsInExport secrets)
{
    QStringList lines {
        u"Pending approvals export"_s,
        u"Generated at: "_s + utcTime(nowMs).toString(Qt::ISODate),
        u"Count: "_s + QString::number(displayItems.size()),
    };
    bool isMarked = false;
    const auto shown = [&isMarked](const QString &text) {
        const HonestText honest = honestDisplay(text);
        isMarked = isMarked || honest.suspicious;
        return honest.suspicious ? honest.text : text;
    };
    qsizetype position = 0;
    for (const ApprovalItem &item : displayItems) {
        lines += {QString(), u'[' + QString::number(++position) + u']',
                  u"ID: "_s + honestLine(item.approvalId).text};
        if (item.agentId && !item.agentId->isEmpty()) {
            lines += u"Agent: "_s + honestLine(*item.agentId).text;
        }
        lines += {
            u"Command: "_s
                + shown(secrets == SecretsInExport::Masked ? redacted(item.command) : item.command),
            u"CreatedAtMs: "_s + QString::number(item.createdAtMs),
            u"ExpiresAtMs: "_s + QString::number(item.expiresAtMs),
        };
    }
    if (isMarked) {
        lines += {QString(),
                  u"(commands with marks ⟨…⟩ are not as they would run: what could mislead "
                  "stands as a mark)"_s};
    }
    return lines.join(u'\n');
}

} // namespace bram
