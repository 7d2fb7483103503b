// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/IndicatorState.h"

#include <QIcon>

namespace bram
{

/// The coloured dot before a status line. Colour is never the only sign: the line beside it says the
/// same in words.
QIcon statusDot(IndicatorState state);

} // namespace bram
