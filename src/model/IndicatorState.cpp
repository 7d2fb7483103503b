// SPDX-License-Identifier: Apache-2.0
#include "model/IndicatorState.h"

#include "model/RawText.h"

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr std::array rows {
    RawTextRow {IndicatorState::Green, "green"_L1},
    RawTextRow {IndicatorState::Yellow, "yellow"_L1},
    RawTextRow {IndicatorState::Red, "red"_L1},
    RawTextRow {IndicatorState::Gray, "gray"_L1},
};
} // namespace

QString rawText(IndicatorState state)
{
    return toRawText(rows, state);
}

} // namespace bram
