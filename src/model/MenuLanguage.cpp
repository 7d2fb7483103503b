// SPDX-License-Identifier: Apache-2.0
#include "model/MenuLanguage.h"

#include "model/RawText.h"

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr std::array<RawTextRow<MenuLanguage>, 2> rawTexts {{
    {MenuLanguage::English, "eng"_L1},
    {MenuLanguage::Korean, "kor"_L1},
}};
} // namespace

QString rawText(MenuLanguage language)
{
    return toRawText(rawTexts, language);
}

std::optional<MenuLanguage> menuLanguageFromRawText(QStringView text)
{
    return fromRawText(rawTexts, text);
}

} // namespace bram
