// SPDX-License-Identifier: Apache-2.0
#include "monitor/ApprovalMetrics.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

namespace bram
{

QString ApprovalMetrics::snapshotText(qsizetype pendingCount) const
{
    // Written for every event: in one buffer, as bytes.
    constexpr std::size_t fields = 9;
    constexpr std::size_t longestName = 16;
    constexpr std::size_t longestNumber = 20;
    std::array<char, fields *(longestName + longestNumber)> buffer;
    char *out = buffer.data();
    const auto add = [&](std::string_view name, qint64 value) {
        out = std::ranges::copy(name, out).out;
        out = std::to_chars(out, out + longestNumber, value).ptr;
    };
    add("requested=", requestedCount);
    add(" resolved=", resolvedCount);
    add(" external=", externalResolvedCount);
    add(" unknown=", unknownApprovalCount);
    add(" allowOnce=", allowOnceCount);
    add(" allowAlways=", allowAlwaysCount);
    add(" deny=", denyCount);
    add(" avgLatencyMs=", averageLatencyMs());
    add(" pending=", pendingCount);
    return QString::fromLatin1(buffer.data(), out - buffer.data());
}

} // namespace bram
