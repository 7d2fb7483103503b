// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

namespace bram
{

/// Colour of a status dot.
enum class IndicatorState {
    Green,
    Yellow,
    Red,
    Gray,
};

/// "green", "yellow", "red" or "gray", as log lines spell it.
QString rawText(IndicatorState state);

} // namespace bram
