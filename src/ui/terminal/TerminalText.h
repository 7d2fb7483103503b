// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "allowlist/AlwaysAllowEntry.h"
#include "gateway/GatewayStatus.h"
#include "model/ActivityEntry.h"
#include "model/ApprovalDecision.h"
#include "model/ApprovalHistoryEntry.h"
#include "model/ApprovalItem.h"
#include "model/AskReason.h"
#include "monitor/ApprovalMetrics.h"
#include "monitor/DecisionResolver.h"
#include "ui/terminal/RequestNumbers.h"
#include "ui/terminal/TerminalLine.h"

namespace bram
{

/// What the terminal front-end shows, as lines. Texts from outside are shown honestly and, where the width
/// of the terminal is known (`columns`; 0: unknown), broken here rather than by the terminal, each row
/// behind a prefix: nothing a command holds can look like a line of this program. Nothing is cut but
/// where the function says so.

enum class RequestOccasion {
    Arrived,
    Changed, ///< another request came under an id that had been shown
    Shown, ///< the operator asked for it
    Listed, ///< one of many: the id only with its beginning
};

/// How much of its command `requestLines` shows: of a giant one only the beginning and the end, unless the
/// operator asked for it and a terminal can take it.
ShownExtent shownExtent(const ApprovalItem &item, RequestOccasion occasion);

TerminalLines requestLines(const ApprovalItem &item, int number, RequestOccasion occasion,
                           qint64 nowMs, int columns, AskReason reason = AskReason::Usual);

/// A line of this program's own with a text from outside at its end.
TerminalLines messageLines(const QString &message, int columns, LineStyle style = LineStyle::Plain);

/// What became of requests, newest first; the command with its beginning.
TerminalLines historyLines(const QList<ApprovalHistoryEntry> &entries, int columns);
TerminalLines activityLines(const QList<ActivityEntry> &entries, int columns);
TerminalLines statusLines(const GatewayStatus::Lines &status, qsizetype pendingCount,
                          qsizetype notShownCount, int columns);
/// One agent a line, the selected one marked; then every agent at once.
TerminalLines agentLines(const QStringList &agentIds, const QString &selectedAgentId, int columns);
/// One entry a line: the beginning of its digest, in which list it stands, the whole command.
TerminalLines alwaysAllowLines(const QList<AlwaysAllowEntry> &entries, int columns);
TerminalLines metricsLines(const ApprovalMetrics &metrics, qsizetype pendingCount);
TerminalLines helpLines(int columns);

/// How a decision ended, for the request with this number.
QString outcomeText(int number, ApprovalDecision decision, const DecisionOutcome &outcome);

} // namespace bram
