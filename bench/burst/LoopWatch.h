// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace bram::bench::loopwatch
{

/// How long the main thread's event loop was held at most since the last call, in milliseconds: from
/// one return of poll(2) to the next call of it, whatever ran in between. The first call starts the watch.
/// Preemption by other programs counts.
double takeLongestMs();

/// The processor time of the main thread within that stretch which used most of it.
double takeLongestProcessorMs();

} // namespace bram::bench::loopwatch
