// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "gateway/TokenSyncState.h"
#include "model/ActivityEntry.h"
#include "model/AlwaysAllowSource.h"
#include "model/ApprovalHistoryEntry.h"
#include "model/ApprovalItem.h"
#include "model/AskReason.h"
#include "model/IndicatorState.h"

#include <QString>

namespace bram
{

/// The words that every front-end uses for values that have no wording of their own.

QString indicatorWord(IndicatorState indicator);
QString historyStateWord(ApprovalHistoryState state, DecisionMaker maker = DecisionMaker::Person);
/// A sentence; empty for the usual reason.
QString askReasonWords(AskReason reason);
QString activityActionWord(ActivityAction action);
/// The list or lists that an entry of the always-allow list is in.
QString alwaysAllowSourceWord(AlwaysAllowSource source);
QString activityActorWord(ActivityActor actor);
QString tokenStateWords(TokenSyncState state);
/// "expires in 42 s", or that it has; empty for a request that does not expire.
QString timeLeftWords(const ApprovalItem &item, qint64 nowMs);
/// What says on every surface that nothing is real.
QString practiceMark();
QString practiceSentence();

} // namespace bram
