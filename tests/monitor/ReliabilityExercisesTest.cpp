// SPDX-License-Identifier: Apache-2.0
#include "monitor/ReliabilityExercises.h"
#include "monitor/MonitorFixture.h"
#include "support/ScriptedPrompts.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <fcntl.h>
#include <sys/stat.h>

using namespace bram;
using namespace bram::test;
using namespace Qt::StringLiterals;

namespace
{

class Exercises : public MonitorFixture
{
protected:
    /// Runs the self-test to its end; whether it said that it succeeded.
    bool testSelf()
    {
        std::optional<bool> said;
        QObject::connect(&core->exercises(), &ReliabilityExercises::selfTestFinished,
                         &core->exercises(), [&](bool success, const QString &line) {
                             said = success;
                             verdict = line;
                         });
        core->exercises().runReliabilitySelfTest(resultPath);
        EXPECT_TRUE(waitUntil([&] { return said.has_value(); }));
        QObject::disconnect(&core->exercises(), nullptr, &core->exercises(), nullptr);
        return said.value_or(false);
    }
    QJsonObject result() const
    {
        QFile file(resultPath);
        return file.open(QFile::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object()
                                          : QJsonObject();
    }
    QString verdict;
    QString resultPath = folder.filePath(u"result.json"_s);
    ScriptedPrompts prompts;
};

} // namespace

TEST_F(Exercises, ASimulationTakesTheRoadOfRealRequests)
{
    makeConnectedCore();
    const GatewayStatus::Lines before = core->status().lines();
    core->exercises().runProgramSimulation(&prompts);
    core->exercises().runProgramSimulation(nullptr);
    ASSERT_TRUE(waitUntil([&] { return core->tasks().running().isEmpty(); }));
    ASSERT_EQ(prompts.alerts.size(), 1);
    EXPECT_EQ(prompts.alerts.first().title, u"Simulation Executed"_s);
    ASSERT_EQ(board().items().size(), 4); // ids of their own each time
    const ApprovalItem &high = board().items().first();
    EXPECT_TRUE(high.approvalId.startsWith(u"sim-high-"_s));
    EXPECT_EQ(high.command, u"sudo rm -rf ~/Library/Caches/brackwen-sim"_s);
    EXPECT_EQ(high.agentId, u"main"_s);
    EXPECT_EQ(high.createdAtMs, clock.current);
    EXPECT_EQ(board().items().last().command, u"ls -la ~/Downloads"_s);
    EXPECT_TRUE(log.lines().contains(u"[Brackwen] unauthorized disconnect count=1"_s));
    // And all is as before.
    EXPECT_TRUE(waitUntil(
        [&] { return core->status().lines().connectionStatus == before.connectionStatus; }));
    EXPECT_EQ(core->status().lines(), before);
    decide(high.approvalId.toUtf8().constData(), ApprovalDecision::Deny);
    ASSERT_TRUE(waitUntil([&] { return !settled.isEmpty(); }));
    for (const AuditEventRecord &record : core->audit().records(0)) {
        EXPECT_EQ(record.source, exerciseSource) << qPrintable(record.kind);
    }
    EXPECT_EQ(log.lines().count(u"[Brackwen] startup simulation executed (approval x2 + "
                                "token-revocation disconnect)"_s),
              2);
}

TEST_F(Exercises, ChatsStayLockedWhereTheGatewayItselfHasRefusedUs)
{
    gateway.close();
    makeCore();
    monitor().start();
    for (const bool wasLocked : {false, true}) {
        if (wasLocked) {
            monitor().handleConnectionState(GatewayDisconnected {.reason = u"unauthorized"_s});
        }
        core->exercises().runProgramSimulation(nullptr);
        core->exercises().runSelfTestForOperator(prompts, resultPath);
        ASSERT_TRUE(waitUntil([&] { return core->tasks().running().isEmpty(); }));
        EXPECT_EQ(core->status().lines().remoteApprovalLocked, wasLocked);
        EXPECT_EQ(core->status().lines().remoteApprovalLockReason.value_or(QString()),
                  wasLocked ? u"unauthorized"_s : QString());
    }
}

TEST_F(Exercises, WithAnAgentSelectedTheRequestsAreThatAgents)
{
    ASSERT_TRUE(QDir(folder.path()).mkpath(u".brackwen"_s));
    QFile config(folder.filePath(u".brackwen/brackwen.json"_s));
    ASSERT_TRUE(config.open(QFile::WriteOnly));
    config.write(R"({"agents":{"dev":{}}})");
    config.close();
    makeConnectedCore();
    core->exercises().runProgramSimulation(nullptr);
    EXPECT_EQ(board().displayItems().size(), 2);
    EXPECT_EQ(board().displayItems().first().agentId, u"dev"_s);
}

TEST_F(Exercises, TheSelfTestSaysWhatItHasFound)
{
    QFile stale(resultPath);
    ASSERT_TRUE(stale.open(QFile::WriteOnly));
    stale.write("old");
    stale.close();
    makeConnectedCore();
    request(item("real"));
    EXPECT_TRUE(testSelf());
    EXPECT_EQ(verdict, QString(u"Self-test passed: 5 checks (result: "_s + resultPath + u')'));
    const QJsonObject found = result();
    EXPECT_EQ(found.keys(),
              (QStringList {u"connectionStatus"_s, u"generatedAt"_s, u"hadUnauthorizedDisconnect"_s,
                            u"pendingCount"_s, u"requestedCount"_s, u"resolvedCount"_s,
                            u"success"_s, u"tokenStatus"_s, u"unauthorizedDisconnectCount"_s}));
    EXPECT_TRUE(found.value("success"_L1).toBool());
    EXPECT_TRUE(found.value("hadUnauthorizedDisconnect"_L1).toBool());
    EXPECT_EQ(found.value("requestedCount"_L1).toInt(), 3);
    EXPECT_EQ(found.value("pendingCount"_L1).toInt(), 3);
    EXPECT_EQ(found.value("unauthorizedDisconnectCount"_L1).toInt(), 1);
    EXPECT_EQ(found.value("generatedAt"_L1).toString(), u"2024-06-10T06:13:20.000Z"_s);
}

TEST_F(Exercises, AnOperatorIsToldAndTheProgramGoesOn)
{
    makeConnectedCore();
    int ends = 0;
    QObject::connect(&core->exercises(), &ReliabilityExercises::selfTestFinished,
                     &core->exercises(), [&] { ++ends; });
    for (const QString &path : {resultPath, u"/nowhere/result.json"_s}) {
        core->exercises().runSelfTestForOperator(prompts, path);
        ASSERT_TRUE(waitUntil([&] { return core->tasks().running().isEmpty(); }));
        EXPECT_EQ(prompts.alerts.constLast().title,
                  path == resultPath ? u"Self-Test Passed"_s : u"Self-Test Failed"_s);
        EXPECT_TRUE(prompts.alerts.constLast().text.endsWith(path));
    }
    EXPECT_EQ(result().value(u"success"_s), true);
    EXPECT_EQ(ends, 0);
}

TEST_F(Exercises, TheSelfTestNeedsNoGatewayButARecordAndAPlaceForItsResult)
{
    gateway.close();
    makeCore();
    monitor().start();
    EXPECT_TRUE(testSelf());
    EXPECT_EQ(result().value("pendingCount"_L1).toInt(), 2);

    // A link in the result's place does not lead it elsewhere.
    const QString precious = folder.filePath(u"precious"_s);
    QFile other(precious);
    ASSERT_TRUE(other.open(QFile::WriteOnly));
    other.close();
    ASSERT_TRUE(QFile::remove(resultPath) && QFile::link(precious, resultPath));
    testSelf();
    EXPECT_EQ(QFileInfo(precious).size(), 0);
    EXPECT_FALSE(QFileInfo(resultPath).isSymLink());

    resultPath = folder.filePath(u"no/such/folder/result.json"_s);
    EXPECT_FALSE(testSelf());
    EXPECT_TRUE(verdict.startsWith(
        u"Self-test failed: not as it should be: the result written (5 checks"_s));
}

TEST_F(Exercises, TheResultNeverTakesThePlaceOfADeviceOrAPipe)
{
    makeConnectedCore();
    // As /dev/null and /dev/stdout are for a script; a pipe, so that it can be tried in a folder of one's own.
    resultPath = folder.filePath(u"pipe"_s);
    const QByteArray name = QFile::encodeName(resultPath);
    ASSERT_EQ(::mkfifo(name.constData(), 0600), 0);
    EXPECT_FALSE(testSelf()) << "nobody reads";
    const int reader = ::open(name.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_GE(reader, 0);
    EXPECT_TRUE(testSelf());
    QFile pipe;
    ASSERT_TRUE(pipe.open(reader, QFile::ReadOnly | QFile::Unbuffered, QFile::AutoCloseHandle));
    EXPECT_TRUE(QJsonDocument::fromJson(pipe.read(4096)).object().value("success"_L1).toBool());
    struct stat status = {};
    ASSERT_EQ(::lstat(name.constData(), &status), 0);
    EXPECT_TRUE(S_ISFIFO(status.st_mode));
}

TEST_F(Exercises, WithoutARecordTheSelfTestFails)
{
    ASSERT_TRUE(QDir(folder.path()).mkpath(u"audit-events.jsonl"_s)); // a folder in its place
    makeConnectedCore();
    EXPECT_FALSE(testSelf());
    EXPECT_FALSE(result().value("success"_L1).toBool(true));
    EXPECT_FALSE(result().value("hadUnauthorizedDisconnect"_L1).toBool(true));
    EXPECT_EQ(result().value("requestedCount"_L1).toInt(), 2);
}

TEST_F(Exercises, EndWithTheProgram)
{
    makeConnectedCore();
    bool isSuccess = true;
    QObject::connect(&core->exercises(), &ReliabilityExercises::selfTestFinished,
                     &core->exercises(), [&](bool success) { isSuccess = success; });
    core->exercises().runReliabilitySelfTest(resultPath);
    core->exercises().runProgramSimulation(&prompts);
    core->stop();
    ASSERT_TRUE(waitUntil([&] { return core->tasks().running().isEmpty(); }, 400));
    EXPECT_FALSE(isSuccess);
    EXPECT_FALSE(QFile::exists(resultPath));
    EXPECT_TRUE(prompts.alerts.isEmpty());
}
