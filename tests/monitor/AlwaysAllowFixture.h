// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "allowlist/CommandDigest.h"
#include "monitor/MonitorFixture.h"
#include "support/ScriptedPrompts.h"

#include <QDir>
#include <QFile>

namespace bram::test
{

using namespace Qt::StringLiterals;

/// The always-allow operations over the real core and the platform's real files.
class AlwaysAllowTest : public MonitorFixture
{
protected:
    AlwaysAllowTest() { EXPECT_TRUE(QDir(folder.path()).mkpath(u".brackwen"_s)); }

    AlwaysAllowOperations &operations() { return core->alwaysAllow(); }
    void platformAllows(const QByteArray &commands)
    {
        QFile file(platformFile);
        ASSERT_TRUE(file.open(QFile::WriteOnly));
        file.write(R"({"agents":{"main":{"allowlist":[)" + commands + "]}}}");
    }
    QByteArray platform() const
    {
        QFile file(platformFile);
        return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
    }
    AlwaysAllowEntry entry(const QString &command)
    {
        return *operations().list().find(*normalizedCommandDigest(command));
    }
    bool has(const QString &command)
    {
        return operations().list().find(*normalizedCommandDigest(command)) != nullptr;
    }
    /// The newest row of the activity feed.
    std::tuple<ActivityActor, ActivityAction, QString> latest()
    {
        const auto &row = board().activity().constFirst();
        return {row.actor, row.action, row.detail};
    }
    /// With the platform's "apt list" and "git push" and the own "git push" and "own one".
    void makeCoreWithLists()
    {
        platformAllows(R"("apt list","git push")");
        makeConnectedCore();
        core->start();
        request(item("a", "git push"));
        decide("a", ApprovalDecision::AllowAlways);
        request(item("b", "own one"));
        decide("b", ApprovalDecision::AllowAlways);
        ASSERT_TRUE(waitSettled(2));
        ASSERT_EQ(operations().list().entries().size(), 3);
    }

    QString lastAlert() const
    {
        const Alert alert = prompts.alerts.value(prompts.alerts.size() - 1);
        return alert.title + u'|' + alert.text;
    }
    QString lastQuestion() const
    {
        const Question question = prompts.questions.value(prompts.questions.size() - 1);
        return question.title + u'|' + question.text + u'|' + question.buttons.join(u'/');
    }

    const QString platformFile = folder.filePath(u".brackwen/exec-approvals.json"_s);
    ScriptedPrompts prompts;
};

} // namespace bram::test
