// SPDX-License-Identifier: Apache-2.0
#include "monitor/ApprovalMetrics.h"

#include <QStringBuilder>

namespace bram
{

using namespace Qt::StringLiterals;

QString ApprovalMetrics::snapshotText(qsizetype pendingCount) const
{
    return "requested="_L1 % QString::number(requestedCount) % " resolved="_L1
        % QString::number(resolvedCount) % " external="_L1 % QString::number(externalResolvedCount)
        % " unknown="_L1 % QString::number(unknownApprovalCount) % " allowOnce="_L1
        % QString::number(allowOnceCount) % " allowAlways="_L1 % QString::number(allowAlwaysCount)
        % " deny="_L1 % QString::number(denyCount) % " avgLatencyMs="_L1
        % QString::number(averageLatencyMs()) % " pending="_L1 % QString::number(pendingCount);
}

} // namespace bram
