// SPDX-License-Identifier: Apache-2.0
#include "system/Memory.h"

#include <malloc.h>

namespace bram
{

void returnFreeMemory()
{
#ifdef __GLIBC__
    malloc_trim(0);
#endif
}

} // namespace bram
