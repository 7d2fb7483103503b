// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ui/terminal/LineSource.h"

#include <memory>

namespace bram
{

class TerminalOutput;

/// The line source that fits: line editing where both ends are a terminal that can move its cursor, else
/// plain lines. `output` outlives the result.
std::unique_ptr<LineSource> makeLineSource(int inputDescriptor, TerminalOutput &output);

} // namespace bram
