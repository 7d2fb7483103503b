// SPDX-License-Identifier: Apache-2.0
#include "config/SharedPollingSetting.h"

#include "system/Preferences.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace bram;
using namespace Qt::StringLiterals;

TEST(SharedPollingSetting, tellsEachChangeOnceAndSurvivesARestart)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"preferences.ini"_s);
    QList<bool> told;
    {
        Preferences preferences(path);
        SharedPollingSetting setting(preferences);
        EXPECT_FALSE(setting.allowSharedBotPollingOverride());
        QObject::connect(&setting, &SharedPollingSetting::allowSharedBotPollingOverrideChanged,
                         &setting, [&](bool isAllowed) { told += isAllowed; });
        for (const bool wish : {false, true, true, false, true}) {
            EXPECT_TRUE(setting.setAllowSharedBotPollingOverride(wish));
        }
    }
    EXPECT_EQ(told, (QList<bool> {true, false, true}));
    Preferences preferences(path);
    EXPECT_EQ(preferences.text(u"telegram.allow-shared-bot-polling"_s), u"true"_s);
    EXPECT_TRUE(SharedPollingSetting(preferences).allowSharedBotPollingOverride());
    preferences.setText(u"telegram.allow-shared-bot-polling"_s, u"perhaps"_s);
    EXPECT_FALSE(SharedPollingSetting(preferences).allowSharedBotPollingOverride());
}

TEST(SharedPollingSetting, holdsForThisRunWhereItCannotBeRemembered)
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(u"file"_s)); // where a folder would have to be
    ASSERT_TRUE(file.open(QFile::WriteOnly));
    Preferences preferences(file.fileName() + u"/preferences.ini"_s);
    SharedPollingSetting setting(preferences);
    EXPECT_FALSE(setting.setAllowSharedBotPollingOverride(true));
    EXPECT_TRUE(setting.allowSharedBotPollingOverride());
}
