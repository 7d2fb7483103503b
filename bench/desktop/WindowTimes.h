// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

namespace bram
{
class Clock;
class Core;
class OperatorPrompts;
class SystemLog;
} // namespace bram

namespace bram::bench
{

/// Puts 10,000 commands into an exec-approvals file below `homeFolder` and half of them on the own list; ends when
/// they are listed.
void fillAlwaysAllowList(Core &core, const QString &homeFolder);

/// Opens each window from nothing, `count` times, until it is painted, and prints how long that took; false when one
/// takes too long. The time of an empty window of that size is printed beside it.
bool measureWindows(Core &core, OperatorPrompts &prompts, const Clock &clock, SystemLog &log,
                    int count);

} // namespace bram::bench
