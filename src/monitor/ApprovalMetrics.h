// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

#include <optional>

namespace bram
{

/// Counters of this run; never persisted.
struct ApprovalMetrics {
    qint64 requestedCount = 0; ///< distinct requests seen
    qint64 resolvedCount = 0; ///< resolved here or elsewhere
    qint64 externalResolvedCount = 0; ///< resolved by another client
    qint64 unknownApprovalCount = 0; ///< decisions the gateway rejected as unknown
    qint64 allowOnceCount = 0;
    qint64 allowAlwaysCount = 0;
    qint64 denyCount = 0;
    qint64 latencyTotalMs = 0;
    qint64 latencySamples = 0;

    bool operator==(const ApprovalMetrics &) const = default;

    /// Mean time from request to resolution; 0 without samples.
    qint64 averageLatencyMs() const
    {
        return latencySamples == 0 ? 0 : latencyTotalMs / latencySamples;
    }

    /// "requested=3 resolved=1 … pending=2", as log lines carry it.
    QString snapshotText(qsizetype pendingCount) const;
};

} // namespace bram
