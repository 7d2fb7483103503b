// SPDX-License-Identifier: Apache-2.0
#include "model/DecisionInputSource.h"

#include "model/RawText.h"

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr std::array rows {
    RawTextRow {DecisionInputSource::CallbackButton, "telegram-callback"_L1},
    RawTextRow {DecisionInputSource::CommandMessage, "telegram-command"_L1},
};
} // namespace

QString rawText(DecisionInputSource source)
{
    return toRawText(rows, source);
}

} // namespace bram
