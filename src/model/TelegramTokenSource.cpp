// SPDX-License-Identifier: Apache-2.0
#include "model/TelegramTokenSource.h"

#include "model/RawText.h"

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr std::array rows {
    RawTextRow {TelegramTokenSource::Missing, "missing"_L1},
    RawTextRow {TelegramTokenSource::Environment, "environment"_L1},
    RawTextRow {TelegramTokenSource::Keychain, "keychain"_L1},
    RawTextRow {TelegramTokenSource::BrackwenConfig, "brackwenConfig"_L1},
};
} // namespace

QString rawText(TelegramTokenSource source)
{
    return toRawText(rows, source);
}

std::optional<TelegramTokenSource> telegramTokenSourceFromRawText(QStringView text)
{
    return fromRawText(rows, text);
}

} // namespace bram
