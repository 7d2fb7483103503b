// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QMap>
#include <QString>

namespace bram::bench
{

/// The process's proportional share of the memory it uses, in MiB; 0 when it is gone.
double proportionalMebibytes(qint64 pid);

/// The context switches of each thread of the process so far, wanted or not, by the thread's id.
using ThreadSwitches = QMap<QString, qint64>;
ThreadSwitches threadSwitches(qint64 pid);

/// How many there were between two looks. A thread that is new counts from its start, one that has ended
/// counts as one switch.
qint64 switchesBetween(const ThreadSwitches &before, const ThreadSwitches &after);

} // namespace bram::bench
