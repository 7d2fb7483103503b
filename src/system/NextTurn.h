// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>

class QObject;

namespace bram
{

/// Runs `work` when control is back with the event loop, before that sleeps, in the order of the calls,
/// unless `context` is gone by then. Like a queued invocation, but without its system calls, of which a
/// request on its way would need several; and what such work puts off in its turn need not wait for the
/// events that have come meanwhile, unless all of it takes longer than a millisecond. Main thread only, and
/// only while an event loop of Qt turns: inside the loop of another library (a dialog of that library's that
/// waits by itself) the work stands still, and without an application object it is dropped.
void inNextTurn(QObject *context, std::function<void()> work);

} // namespace bram
