// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/MenuLanguage.h"
#include "ui/language/ToolkitTranslator.h"

#include <QObject>
#include <QTranslator>

namespace bram
{

class Preferences;

/// The language in which the program speaks: remembered in the preferences, English where nothing usable
/// is stored. While this object lives, `tr()` answers in that language; windows are told of a change by
/// QEvent::LanguageChange, everything else by the signal. Main thread.
class LanguageChoice final : public QObject
{
    Q_OBJECT

public:
    explicit LanguageChoice(Preferences &preferences);

    MenuLanguage current() const { return m_current; }

    /// Takes effect at once and is remembered. False when it could not be written to the disk; it holds
    /// for this run then.
    bool choose(MenuLanguage language);

Q_SIGNALS:
    void languageChanged(bram::MenuLanguage language);

private:
    void install();

    Preferences &m_preferences;
    MenuLanguage m_current = MenuLanguage::English;
    QTranslator m_korean;
    ToolkitTranslator
        m_toolkitKorean; ///< the toolkit's own texts, where its catalogue is installed
};

} // namespace bram
