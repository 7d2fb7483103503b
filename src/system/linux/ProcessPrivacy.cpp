// SPDX-License-Identifier: Apache-2.0
#include "system/ProcessPrivacy.h"

#include <sys/prctl.h>
#include <sys/resource.h>

namespace bram
{

void keepProcessPrivate()
{
    rlimit limit = {};
    if (getrlimit(RLIMIT_CORE, &limit) == 0) {
        limit.rlim_cur = 0; // programs that are started from here may raise it again
        setrlimit(RLIMIT_CORE, &limit);
    }
#ifndef __SANITIZE_ADDRESS__ // whose search for leaks traces the process
    prctl(PR_SET_DUMPABLE, 0);
#endif
}

} // namespace bram
