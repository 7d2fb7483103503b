// SPDX-License-Identifier: Apache-2.0
#include "monitor/AlwaysAllowFixture.h"

using namespace bram;
using namespace bram::test;
using namespace Qt::StringLiterals;
using Target = AlwaysAllowOperations::Target;

TEST_F(AlwaysAllowTest, WhatCannotBeChangedAtThePlatformIsToldAndRecorded)
{
    makeCoreWithLists();
    const QList<AlwaysAllowEntry> pushed {entry(u"git push"_s)};
    const auto operation = [&](Target target, bool clears) {
        prompts.answers = {0};
        return test::waitFor(clears ? operations().clear(prompts, target)
                                    : operations().remove(prompts, pushed, target));
    };
    const auto registering = [&] {
        prompts.answers = {0};
        return test::waitFor(operations().registerCurrentAlwaysAllowEntriesToBrackwen(prompts));
    };
    const QString protectedDetail = u" (not changed: exec-approvals.json)"_s;
    const auto expectNotDone
        = [&](const QString &title, const QString &reason, const QString &detail) {
              EXPECT_TRUE(lastAlert().startsWith(title + u'|')) << qPrintable(lastAlert());
              EXPECT_TRUE(lastAlert().contains(reason)) << qPrintable(lastAlert());
              EXPECT_EQ(std::get<2>(latest()), detail);
              prompts.alerts.clear();
          };
    const QString notChanged = u"Brackwen's list was not changed"_s;

    ASSERT_TRUE(QFile::setPermissions(platformFile, QFile::ReadOwner | QFile::ReadUser));
    const QByteArray before = platform();
    const QString reason = platformFile + u": it is write-protected"_s;
    EXPECT_TRUE(operation(Target::Brackwen, false)) << "the own list has its text now";
    expectNotDone(notChanged, reason, u"git …"_s + protectedDetail);
    EXPECT_FALSE(operation(Target::Brackwen, true));
    expectNotDone(notChanged, reason, u"count=0"_s + protectedDetail);
    EXPECT_TRUE(operation(Target::Both, false));
    expectNotDone(notChanged, reason, u"git …"_s + protectedDetail);
    EXPECT_TRUE(operation(Target::Both, true));
    expectNotDone(notChanged, reason, u"count=1"_s + protectedDetail);
    EXPECT_EQ(platform(), before);
    EXPECT_FALSE(registering());
    EXPECT_EQ(lastAlert(),
              u"Registration completed|No new items were added because they were already "
              "registered."_s)
        << "true, whatever the file's mode is";
    EXPECT_EQ(std::get<2>(latest()), u"count=2"_s);

    ASSERT_TRUE(QFile::remove(platformFile));
    platformAllows("");
    const QString backup = folder.filePath(u"backup.txt"_s);
    QFile file(backup);
    ASSERT_TRUE(file.open(QFile::WriteOnly));
    file.write("ID: " + normalizedCommandDigest(u"ls -la")->toUtf8() + "\nCommand: ls -la\n");
    file.close();
    const auto restoring = [&] {
        prompts.answers = {0};
        EXPECT_TRUE(test::waitFor(operations().restoreFrom(prompts, backup)));
    };
    ASSERT_TRUE(QFile::setPermissions(platformFile, QFile::ReadOwner | QFile::ReadUser));
    restoring();
    expectNotDone(notChanged, reason, u"count=0"_s + protectedDetail);
    EXPECT_FALSE(registering());
    expectNotDone(u"Registration failed"_s, reason, u"count=0"_s + protectedDetail);

    ASSERT_TRUE(QFile::remove(platformFile));
    const QString noFile = u"no exec-approvals file in "_s + folder.filePath(u".brackwen"_s);
    const QString noFileDetail = u"count=0 (not changed: no exec-approvals file)"_s;
    restoring();
    expectNotDone(notChanged, noFile, noFileDetail);
    EXPECT_FALSE(registering());
    expectNotDone(u"Registration failed"_s, noFile, noFileDetail);
    EXPECT_FALSE(operation(Target::Brackwen, true));
    expectNotDone(notChanged, noFile, noFileDetail);
}
