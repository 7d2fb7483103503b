// SPDX-License-Identifier: Apache-2.0
#include "ui/language/LanguageChoice.h"
#include "system/Preferences.h"
#include "ui/language/Words.h"

#include <QCoreApplication>
#include <QFile>
#include <QLibraryInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace bram
{
namespace
{

using namespace Qt::StringLiterals;

class LanguageChoiceTest : public testing::Test
{
protected:
    QString file() const { return m_folder.filePath(u"preferences.ini"_s); }

    void store(const QString &value) const
    {
        Preferences preferences(file());
        preferences.setText(u"menu.language.v2"_s, value);
        ASSERT_TRUE(preferences.save());
    }

    MenuLanguage languageAfterStart() const
    {
        Preferences preferences(file());
        return LanguageChoice(preferences).current();
    }

private:
    QTemporaryDir m_folder;
};

TEST_F(LanguageChoiceTest, startsWithWhatIsStoredAndEnglishForAnythingElse)
{
    EXPECT_EQ(languageAfterStart(), MenuLanguage::English);
    store(u"kor"_s);
    EXPECT_EQ(languageAfterStart(), MenuLanguage::Korean);
    store(u"KOR"_s);
    EXPECT_EQ(languageAfterStart(), MenuLanguage::English);
}

TEST_F(LanguageChoiceTest, speaksTheChosenLanguageAtOnceAndRemembersIt)
{
    Preferences preferences(file());
    LanguageChoice choice(preferences);
    int changes = 0;
    QObject::connect(&choice, &LanguageChoice::languageChanged, &choice, [&] { ++changes; });
    const QString english = historyStateWord(ApprovalHistoryState::Deny);

    EXPECT_TRUE(choice.choose(MenuLanguage::Korean));
    EXPECT_EQ(historyStateWord(ApprovalHistoryState::Deny), u"거부됨"_s);
    EXPECT_EQ(languageAfterStart(), MenuLanguage::Korean);
    EXPECT_TRUE(choice.choose(MenuLanguage::Korean));
    EXPECT_EQ(changes, 1) << "choosing what holds is no change";

    // The toolkit's errors go into logs and records.
    EXPECT_EQ(QCoreApplication::translate("QNativeSocketEngine", "Connection refused"),
              u"Connection refused"_s);
    if (QFile::exists(QLibraryInfo::path(QLibraryInfo::TranslationsPath) + u"/qtbase_ko.qm"_s)) {
        EXPECT_NE(QCoreApplication::translate("QPlatformTheme", "Cancel"), u"Cancel"_s);
    }

    EXPECT_TRUE(choice.choose(MenuLanguage::English));
    EXPECT_EQ(historyStateWord(ApprovalHistoryState::Deny), english);
    EXPECT_EQ(languageAfterStart(), MenuLanguage::English);
}

} // namespace
} // namespace bram
