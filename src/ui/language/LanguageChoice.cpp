// SPDX-License-Identifier: Apache-2.0
#include "ui/language/LanguageChoice.h"

#include "system/Preferences.h"

#include <QCoreApplication>
#include <QLibraryInfo>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
/// Of version two, because an earlier release stored other values under the name without it.
const QString languageKey = u"menu.language.v2"_s;
} // namespace

LanguageChoice::LanguageChoice(Preferences &preferences)
    : m_preferences(preferences)
{
    const QString stored = preferences.text(languageKey).value_or(QString());
    m_current = menuLanguageFromRawText(stored).value_or(MenuLanguage::English);
    install();
}

bool LanguageChoice::choose(MenuLanguage language)
{
    if (language == m_current) {
        return true;
    }
    m_current = language;
    install();
    Q_EMIT languageChanged(language);
    m_preferences.setText(languageKey, rawText(language));
    return m_preferences.save();
}

void LanguageChoice::install()
{
    if (m_current == MenuLanguage::English) {
        QCoreApplication::removeTranslator(&m_toolkitKorean);
        QCoreApplication::removeTranslator(&m_korean);
        return;
    }
    // Read when first wanted: most runs do not need the catalogue.
    if (m_korean.isEmpty() && !m_korean.load(u":/i18n/bram_ko.qm"_s)) {
        return;
    }
    if (m_toolkitKorean.isEmpty()) {
        [[maybe_unused]] const bool isInstalled = m_toolkitKorean.load(
            u"qtbase_ko"_s, QLibraryInfo::path(QLibraryInfo::TranslationsPath));
    }
    QCoreApplication::installTranslator(&m_toolkitKorean);
    QCoreApplication::installTranslator(&m_korean);
}

} // namespace bram
