// SPDX-License-Identifier: Apache-2.0
#include "model/ActivityEntry.h"

namespace bram
{

size_t qHash(const ActivityEntry &entry, size_t seed) noexcept
{
    return qHashMulti(seed, entry.id, qToUnderlying(entry.actor), qToUnderlying(entry.action),
                      entry.detail, entry.createdAt);
}

} // namespace bram
