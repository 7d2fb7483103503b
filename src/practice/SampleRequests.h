// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalItem.h"

namespace bram
{

/// How many different sample requests there are.
int sampleRequestCount();

/// The sample request number `index` (0 and up; after the last the list starts over), made at `nowMs`,
/// milliseconds since the epoch. Ids are UUIDs that follow from both, so that no two announcements
/// share one. The commands are for reading only; nothing runs them.
ApprovalItem sampleRequest(int index, qint64 nowMs);

} // namespace bram
