// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>

class QObject;

namespace bram
{

/// Runs `work` in the next turn of the event loop, in the order of the calls, unless `context` is gone by
/// then. Like a queued invocation, but all work that is put off in one turn shares one posted event: each
/// of those wakes the loop up with a system call, and a request on its way needs several. Main thread only.
void inNextTurn(QObject *context, std::function<void()> work);

} // namespace bram
