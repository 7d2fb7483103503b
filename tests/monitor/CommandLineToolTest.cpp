// SPDX-License-Identifier: Apache-2.0
#include "monitor/CommandLineTool.h"
#include "monitor/MonitorFixture.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <csignal>

#include <fcntl.h>
#include <unistd.h>

using namespace bram;
using namespace bram::test;

namespace
{

/// A "brackwen" of the test's own, first on the PATH.
class DecisionByTool : public MonitorFixture
{
protected:
    DecisionByTool()
        : m_path(qgetenv("PATH"))
    {
        commandLine = CommandLineUse::Allowed;
    }
    ~DecisionByTool() override { qputenv("PATH", m_path); }

    void installTool(const QByteArray &script)
    {
        QFile tool(folder.filePath(QStringLiteral("brackwen")));
        ASSERT_TRUE(tool.open(QFile::WriteOnly));
        tool.write("#!/bin/sh\n" + script);
        tool.close();
        tool.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        qputenv("PATH", folder.path().toUtf8() + ':' + m_path);
    }
    QByteArray written(const char *name)
    {
        QFile file(folder.filePath(QString::fromUtf8(name)));
        return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
    }

private:
    QByteArray m_path;
};

} // namespace

TEST(CommandLineParams, PlainForOrdinaryIdsAndEscapedForOthers)
{
    EXPECT_EQ(commandLineParams(QStringLiteral("8c1f-42"), ApprovalDecision::AllowOnce),
              QStringLiteral(R"({"id":"8c1f-42","decision":"allow-once"})"));
    for (const QString &id :
         {QStringLiteral("a\",\"decision\":\"deny"), QStringLiteral("back\\slash"),
          QStringLiteral("line\nfeed"), QStringLiteral("\ufeffa"), QStringLiteral("승인")}) {
        const auto object
            = QJsonDocument::fromJson(commandLineParams(id, ApprovalDecision::Deny).toUtf8())
                  .object();
        EXPECT_EQ(object.value(QStringLiteral("id")).toString(), id);
        EXPECT_EQ(object.value(QStringLiteral("decision")).toString(), QStringLiteral("deny"));
        EXPECT_EQ(object.size(), 2);
    }
}

TEST_F(DecisionByTool, TakesTheDecisionWhenTheGatewayDoesNot)
{
    installTool("printf '%s\\n' \"$@\" > \"$(dirname \"$0\")/arguments\"\n"
                "ls /proc/self/fd > \"$(dirname \"$0\")/descriptors\"\n"
                "env | grep -E 'TOKEN|PASSWORD' | sort > \"$(dirname \"$0\")/secrets\"\n"
                "cat > \"$(dirname \"$0\")/input\"\n");
    makeConnectedCore();
    request(item("a"));
    gateway.setDecisionBehaviour(
        {.fault = DecisionFault::AnswerError, .text = QStringLiteral("internal error")});
    // Deliberately without close-on-exec, as a careless library would open it.
    const int stray = open("/dev/null", O_RDONLY);
    qputenv("BRACKWEN_GATEWAY_TOKEN", "gateway's");
    qputenv("BRACKWEN_TELEGRAM_BOT_TOKEN", "bot's");
    qputenv("TELEGRAM_BOT_TOKEN", "bot's");
    decide("a", ApprovalDecision::AllowOnce);
    ASSERT_TRUE(waitSettled(1));
    close(stray);
    for (const char *name :
         {"BRACKWEN_GATEWAY_TOKEN", "BRACKWEN_TELEGRAM_BOT_TOKEN", "TELEGRAM_BOT_TOKEN"}) {
        qunsetenv(name);
    }

    EXPECT_EQ(written("secrets"), "BRACKWEN_GATEWAY_TOKEN=gateway's\n");
    EXPECT_EQ(settled.first().outcome.kind, DecisionOutcome::Kind::Confirmed);
    EXPECT_EQ(written("arguments"),
              "gateway\ncall\nexec.approval.resolve\n--json\n--params\n"
              "{\"id\":\"a\",\"decision\":\"allow-once\"}\n");
    // Standard streams, and the one that ls itself opens.
    EXPECT_EQ(written("descriptors"), "0\n1\n2\n3\n");
    EXPECT_EQ(written("input"), "");
    EXPECT_FALSE(log.lines().filter(QStringLiteral("reason=resolved.cli.allow-once")).isEmpty());
}

TEST_F(DecisionByTool, ItsFailuresAreToldApart)
{
    struct Case {
        QByteArray script;
        DecisionOutcome::Kind kind;
        QString message;
    };
    using Kind = DecisionOutcome::Kind;
    const std::vector<Case> cases {
        {"echo '  no route to gateway  '; echo >&2; exit 3", Kind::Failed,
         QStringLiteral("internal error (command-line tool: no route to gateway)")},
        {"echo 'Approval Not Found' >&2; exit 1", Kind::ResolvedElsewhere, {}},
        {"head -c 70000 /dev/zero | tr '\\0' w; echo ' Already Resolved'; exit 1",
         Kind::ResolvedElsewhere,
         {}},
        {"printf '\\377\\376'; exit 1", Kind::Failed,
         QStringLiteral("internal error (command-line tool: unknown error)")},
        {"exit 7", Kind::Failed,
         QStringLiteral("internal error (command-line tool: it ended with status 7)")},
        {"kill -9 $$", Kind::Failed,
         QStringLiteral("internal error (command-line tool: it crashed)")},
    };
    makeConnectedCore();
    gateway.setDecisionBehaviour(
        {.fault = DecisionFault::AnswerError, .text = QStringLiteral("internal error")});
    int serial = 0;
    for (const auto &[script, kind, message] : cases) {
        installTool(script);
        const QByteArray id = "id" + QByteArray::number(++serial);
        request(item(id.constData()));
        decide(id.constData(), ApprovalDecision::Deny);
        ASSERT_TRUE(waitSettled(serial));
        EXPECT_EQ(settled.last().outcome.kind, kind) << script.constData();
        EXPECT_EQ(settled.last().outcome.message, message) << script.constData();
    }
}

TEST_F(DecisionByTool, OneUnderWayEndsWithTheProgramAndOneThatHangsByItself)
{
    installTool("echo $$ > \"$(dirname \"$0\")/pid\"; exec sleep 1000");
    makeConnectedCore();
    request(item("a"));
    gateway.setDecisionBehaviour(
        {.fault = DecisionFault::AnswerError, .text = QStringLiteral("token=hunter2")});
    decide("a", ApprovalDecision::AllowOnce);
    ASSERT_TRUE(waitUntil([this] { return !written("pid").isEmpty(); }));
    const auto process = static_cast<pid_t>(written("pid").trimmed().toInt());
    monitor().stop();
    ASSERT_TRUE(waitSettled(1));
    EXPECT_EQ(settled.first().outcome.message,
              QStringLiteral(
                  "token=[REDACTED] (command-line tool: it was ended together with this program)"));
    ASSERT_TRUE(waitUntil([process] { return kill(process, 0) != 0; }));
    EXPECT_EQ(auditKinds().back(), "approval_resolve_failed");

    CommandLineTool impatient(std::chrono::milliseconds(30));
    const auto call = [](CommandLineTool *tool) -> QCoro::Task<CommandLineTool::Result> {
        co_return co_await tool->resolve(QStringLiteral("a"), ApprovalDecision::Deny);
    };
    const auto result = bram::test::waitFor(call(&impatient));
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().message, QStringLiteral("it did not end within 0.03 s"));
}

TEST_F(DecisionByTool, IsNeverUsedWherePracticeForbidsIt)
{
    commandLine = CommandLineUse::Never;
    installTool("touch \"$(dirname \"$0\")/arguments\"\n");
    makeConnectedCore();
    request(item("a"));
    gateway.setDecisionBehaviour(
        {.fault = DecisionFault::AnswerError, .text = QStringLiteral("internal error")});
    decide("a", ApprovalDecision::AllowOnce);
    ASSERT_TRUE(waitSettled(1));
    EXPECT_EQ(settled.first().outcome.kind, DecisionOutcome::Kind::Failed);
    EXPECT_FALSE(QFile::exists(folder.filePath(QStringLiteral("arguments"))));
}
