// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

#include <optional>

namespace bram
{

/// The language of menus, windows and the terminal's own texts. Log lines are English.
enum class MenuLanguage {
    English,
    Korean,
};

/// "eng" or "kor", as the preferences store it.
QString rawText(MenuLanguage language);
std::optional<MenuLanguage> menuLanguageFromRawText(QStringView text);

} // namespace bram
