// SPDX-License-Identifier: Apache-2.0
#include "monitor/ApprovalMetrics.h"

#include <array>
#include <charconv>

namespace bram
{

using namespace Qt::StringLiterals;

QString ApprovalMetrics::snapshotText(qsizetype pendingCount) const
{
    constexpr qsizetype usualLength = 160;
    QString text;
    text.reserve(usualLength);
    const auto add = [&text](QLatin1StringView name, qint64 value) {
        std::array<char, 20> digits; // as many as an integer can have, with its sign
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
        text.append(name);
        text.append(QLatin1StringView(digits.data(), end));
    };
    add("requested="_L1, requestedCount);
    add(" resolved="_L1, resolvedCount);
    add(" external="_L1, externalResolvedCount);
    add(" unknown="_L1, unknownApprovalCount);
    add(" allowOnce="_L1, allowOnceCount);
    add(" allowAlways="_L1, allowAlwaysCount);
    add(" deny="_L1, denyCount);
    add(" avgLatencyMs="_L1, averageLatencyMs());
    add(" pending="_L1, pendingCount);
    return text;
}

} // namespace bram
