// SPDX-License-Identifier: Apache-2.0
#include "system/Clock.h"

#include <chrono>

namespace bram
{

qint64 SystemClock::nowMs() const
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

} // namespace bram
