// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>

class QObject;

namespace bram
{

/// Runs `work` when control is back with the event loop, before that sleeps, in the order of the calls,
/// unless `context` is gone by then. Like a queued invocation, but without its system calls, of which a
/// request on its way would need several; and what such work puts off in its turn need not wait for the
/// events that have come meanwhile, unless it takes long. Main thread only, and only with an event loop of
/// Qt, which is what every dispatcher of Qt provides.
void inNextTurn(QObject *context, std::function<void()> work);

} // namespace bram
