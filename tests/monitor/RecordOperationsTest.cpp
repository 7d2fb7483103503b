// SPDX-License-Identifier: Apache-2.0
#include "monitor/MonitorFixture.h"

#include "monitor/RecordOperations.h"
#include "support/FullDisk.h"
#include "support/ScriptedPrompts.h"

#include <QDir>
#include <QDirIterator>
#include <QJsonDocument>

#include <latch>
#include <sys/stat.h>
#include <unistd.h>

namespace bram::test
{

using namespace Qt::StringLiterals;

namespace
{
mode_t modeOf(const QString &path)
{
    struct stat status = {};
    return ::lstat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_mode & 07777 : 0;
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeFile(const QString &path, const QByteArray &content)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
}

/// Keeps the audit store's thread in its first line until it is let go: work on the log waits for it.
class StuckLog final : public SystemLog
{
public:
    void write(QStringView) override { letGo.wait(); }
    std::latch letGo {1};
};

class RecordOperationsTest : public MonitorFixture
{
protected:
    RecordOperations &record() { return core->record(); }

    QString out(const QString &name) const { return outside.filePath(name); }

    /// The bundle's folder, which is alone in the folder that was chosen.
    QString bundle() const
    {
        const auto entries = QDir(outside.path()).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        EXPECT_EQ(entries.size(), 1);
        return outside.filePath(entries.value(0));
    }

    QTemporaryDir outside;
    ScriptedPrompts prompts;
};
} // namespace

TEST_F(RecordOperationsTest, savesTheReportWhereTheOperatorWantsIt)
{
    makeCore();
    AuditEventRecord event {.timestampMs = clock.nowMs() - 6 * 86'400'000LL, .kind = u"old"_s};
    core->audit().append(event);
    event.timestampMs -= 2 * 86'400'000LL; // too old
    core->audit().append(event);
    prompts.files = {out(u"report.md"_s)};
    EXPECT_TRUE(test::waitFor(record().exportWeeklyAuditReport(prompts, MenuLanguage::English)));
    ASSERT_EQ(prompts.fileQuestions.size(), 1);
    EXPECT_EQ(prompts.fileQuestions[0].title, u"Save last 7 days audit data"_s);
    ASSERT_EQ(prompts.alerts.size(), 1);
    EXPECT_EQ(prompts.alerts[0].title, u"Saved"_s);
    EXPECT_EQ(prompts.alerts[0].text,
              QString(u"Saved last 7 days audit data.\n"_s + out(u"report.md"_s)));
    EXPECT_EQ(modeOf(out(u"report.md"_s)), 0600u);
    EXPECT_TRUE(contentOf(out(u"report.md"_s)).contains("Total events: 1\n"));

    EXPECT_FALSE(test::waitFor(record().exportWeeklyAuditReport(prompts, MenuLanguage::English)));
    EXPECT_EQ(prompts.alerts.size(), 1) << "who turns away is not told so";

    const QString nowhere = out(u"missing/report.md"_s);
    EXPECT_FALSE(
        test::waitFor(record().exportWeeklyAuditReportTo(prompts, nowhere, MenuLanguage::Korean)));
    ASSERT_EQ(prompts.alerts.size(), 2);
    EXPECT_TRUE(prompts.alerts[1].text.contains(nowhere));
}

TEST_F(RecordOperationsTest, opensThePreviewFromTheDataFolder)
{
    makeCore();
    EXPECT_TRUE(test::waitFor(record().previewWeeklyAuditReport(prompts, MenuLanguage::Korean)));
    const QString path = folder.filePath(u"reports/weekly-audit-preview-1718000000.md"_s);
    EXPECT_EQ(prompts.opened, QStringList {path});
    EXPECT_TRUE(contentOf(path).startsWith("# BRAM 주간 감사 리포트\n"));
    EXPECT_EQ(modeOf(folder.filePath(u"reports"_s)), 0700u);
    EXPECT_TRUE(prompts.alerts.isEmpty());

    prompts.canOpen = false;
    EXPECT_FALSE(test::waitFor(record().previewWeeklyAuditReport(prompts, MenuLanguage::Korean)));
    ASSERT_EQ(prompts.alerts.size(), 1);
    EXPECT_TRUE(prompts.alerts[0].text.startsWith(u"Preview failed: "_s));
}

TEST_F(RecordOperationsTest, theBundleHoldsNoSecret)
{
    Places places = Places::ofPractice(folder.path(), gateway.url().toString());
    QProcessEnvironment variables;
    for (const auto &[name, value] : std::initializer_list<std::pair<QString, QString>> {
             {u"BRACKWEN_GATEWAY_URL"_s,
              u"ws://me:PLANTED-a@127.0.0.1:9/PLANTED-b?token=PLANTED-c#PLANTED-d"_s},
             {u"BRACKWEN_GATEWAY_TOKEN"_s, u"PLANTED-e"_s},
             {u"BRACKWEN_GATEWAY_PASSWORD"_s, u"PLANTED-f"_s},
             {u"BRACKWEN_TELEGRAM_BOT_TOKEN"_s, u"123456789:PLANTED-gPLANTED-gPLANTED-g"_s}}) {
        variables.insert(name, value);
    }
    places.environment = Environment(variables);
    writeFile(places.preferencesFile,
              "[General]\ngatewayToken=PLANTED-h\nbrackwen.gateway.token=PLANTED-i\n");
    writeFile(folder.filePath(u".brackwen/brackwen.json"_s),
              R"({"gateway":{"auth":{"token":"PLANTED-j","password":"PLANTED-k"}},)"
              R"("channels":{"telegram":{"botToken":"123456789:PLANTED-lPLANTED-lPLANTED-l"}}})");
    core = std::make_unique<Core>(Core::World {.places = places,
                                               .secrets = secrets,
                                               .clock = clock,
                                               .log = log,
                                               .ports = ports,
                                               .commandLine = commandLine});
    core->agents().refreshAvailableAgentIdsFromConfig();
    core->status().setConnection(u"refused: token=PLANTED-m"_s, IndicatorState::Red);
    core->status().lockRemoteApproval(u"authorization: Bearer PLANTED-n"_s);
    monitor().handleGatewayEvent(ApprovalRequested {
        item("r1",
             "curl -H 'Authorization: Bearer PLANTED-o' https://x/123456789:PLANTED-pPLANTED-p"
             "PLANTED-p?password=PLANTED-q")});
    monitor().handleGatewayEvent(
        ApprovalRequested {item("r2", "BRACKWEN_X_TOKEN=PLANTED-r ./PLANTED --api-key=PLANTED-t")});
    GatewayDisconnected lost {};
    lost.reason = u"unauthorized: token: PLANTED-u"_s;
    monitor().handleConnectionState(lost);

    EXPECT_TRUE(test::waitFor(record().exportDiagnosticsBundleTo(
        prompts, {.surface = u"desktop"_s, .desktopEnvironment = u"secret=PLANTED-v"_s},
        outside.path(), MenuLanguage::English)));
    int files = 0;
    for (QDirIterator each(bundle(), QDir::Files, QDirIterator::Subdirectories); each.hasNext();) {
        const QString path = each.next();
        const QByteArray content = contentOf(path);
        EXPECT_FALSE(content.contains("PLANTED-")) << qPrintable(path) << "\n"
                                                   << content.constData();
        EXPECT_EQ(modeOf(path), 0600u) << qPrintable(path);
        ++files;
    }
    EXPECT_EQ(files, 5);
    EXPECT_EQ(modeOf(bundle()), 0700u);
    EXPECT_EQ(modeOf(bundle() + u"/logs"_s), 0700u);
}

TEST_F(RecordOperationsTest, theBundleSaysWhatAHelperNeeds)
{
    makeCore();
    prompts.files = {outside.path()};
    writeFile(folder.filePath(u".brackwen/exec-approvals.json"_s),
              R"({"agents":{"main":{"allowlist":["sudo ls","apt list","rm a\nls"]}}})");
    auto &always = core->alwaysAllow();
    test::waitFor(always.reload(prompts, AlwaysAllowScope::IncludeRegistered));
    ASSERT_EQ(always.list().entries().size(), 3);
    always.addToAppList({always.list().entries().at(1)});
    monitor().handleGatewayEvent(ApprovalRequested {item("r1")});
    const SurfaceFacts surface {.surface = u"desktop"_s,
                                .displayServer = u"xcb"_s,
                                .trayHost = u"none"_s,
                                .notificationService = u"dunst 1.9"_s,
                                .screens = {u"1920x1080 at 2"_s}};
    EXPECT_TRUE(
        test::waitFor(record().exportDiagnosticsBundle(prompts, surface, MenuLanguage::Korean)));
    EXPECT_EQ(prompts.fileQuestions.value(0).title, u"Select destination for diagnostics bundle"_s);
    EXPECT_EQ(prompts.fileQuestions.value(0).acceptLabel, u"Save"_s);
    EXPECT_EQ(prompts.alerts.value(0).title, u"Diagnostics bundle saved"_s);
    EXPECT_EQ(prompts.alerts.value(0).text, u"Saved to:\n"_s + bundle());
    EXPECT_EQ(QFileInfo(bundle()).fileName(), u"bram-diagnostics-2024-06-10T06-13-20Z"_s);

    const auto snapshot
        = QJsonDocument::fromJson(contentOf(bundle() + u"/snapshot.json"_s)).object();
    EXPECT_EQ(snapshot[u"version"_s].toString(), u"" BRAM_VERSION ""_s);
    EXPECT_EQ(snapshot[u"qt"_s].toString(), QString::fromLatin1(qVersion()));
    EXPECT_FALSE(snapshot[u"machine"_s][u"kernel"_s].toString().isEmpty());
    EXPECT_EQ(snapshot[u"surface"_s][u"trayHost"_s].toString(), u"none"_s);
    EXPECT_EQ(snapshot[u"surface"_s][u"screens"_s][0].toString(), u"1920x1080 at 2"_s);
    EXPECT_EQ(snapshot[u"counters"_s][u"requested"_s].toInt(), 1);
    EXPECT_EQ(snapshot[u"approvals"_s][u"displayed"_s].toInt(), 1);
    EXPECT_EQ(snapshot[u"gateway"_s][u"indicator"_s].toString(), u"gray"_s);
    EXPECT_EQ(snapshot[u"settings"_s][u"language"_s].toString(), u"eng"_s);
    const auto allowed = snapshot[u"settings"_s][u"alwaysAllow"_s].toObject();
    for (const auto &[key, count] :
         {std::pair(u"app"_s, 0), std::pair(u"brackwen"_s, 2), std::pair(u"both"_s, 1),
          std::pair(u"sensitive"_s, 1), std::pair(u"askedOnceMore"_s, 0),
          std::pair(u"platformFiles"_s, 1)}) {
        EXPECT_EQ(allowed[key].toInt(-1), count) << qPrintable(key);
    }
    EXPECT_TRUE(contentOf(bundle() + u"/README.txt"_s).startsWith("BRAM 진단 번들\n- snapshot"));
    EXPECT_TRUE(contentOf(bundle() + u"/weekly-audit.md"_s).contains("전체 이벤트: 1\n"));
    EXPECT_TRUE(contentOf(bundle() + u"/pending-approvals.txt"_s).contains("ID: r1\n"));
    EXPECT_EQ(contentOf(bundle() + u"/logs/audit-events.jsonl"_s),
              contentOf(folder.filePath(u"audit-events.jsonl"_s)));
}

TEST_F(RecordOperationsTest, theStateLogIsCopiedOnlyWhenItIsOne)
{
    makeCore();
    const QString stateLog = folder.filePath(u"state.log"_s);
    RecordOperations operations({.monitor = monitor(),
                                 .audit = core->audit(),
                                 .clock = clock,
                                 .log = log,
                                 .dataFolder = folder.path(),
                                 .stateLog = stateLog});
    const auto logsOfNextBundle = [&] {
        QDir(outside.path()).removeRecursively();
        EXPECT_TRUE(test::waitFor(operations.exportDiagnosticsBundleTo(prompts, {}, outside.path(),
                                                                       MenuLanguage::English)));
        return QDir(bundle() + u"/logs"_s).entryList(QDir::Files | QDir::Hidden);
    };
    EXPECT_EQ(logsOfNextBundle(), QStringList());

    const QString privateFile = folder.filePath(u"id_ed25519"_s);
    writeFile(privateFile, "a private key");
    ASSERT_TRUE(QFile::link(privateFile, stateLog));
    EXPECT_EQ(logsOfNextBundle(), QStringList()) << "a link leads to what nobody meant to share";

    ASSERT_TRUE(QFile::remove(stateLog));
    ASSERT_EQ(::mkfifo(QFile::encodeName(stateLog).constData(), 0600), 0);
    EXPECT_EQ(logsOfNextBundle(), QStringList());

    ASSERT_TRUE(QFile::remove(stateLog));
    writeFile(stateLog, "states\n");
    EXPECT_EQ(logsOfNextBundle(), QStringList {u"state.log"_s});
    EXPECT_EQ(contentOf(bundle() + u"/logs/state.log"_s), "states\n");
}

TEST_F(RecordOperationsTest, aBundleThatCannotBeWrittenIsSaid)
{
    makeCore();
    writeFile(out(u"file"_s), {});
    EXPECT_FALSE(test::waitFor(record().exportDiagnosticsBundleTo(prompts, {}, out(u"file/below"_s),
                                                                  MenuLanguage::English)));
    ASSERT_EQ(prompts.alerts.size(), 1);
    EXPECT_TRUE(prompts.alerts[0].text.contains(out(u"file"_s)));

    const FullDisk full;
    EXPECT_FALSE(test::waitFor(
        record().exportDiagnosticsBundleTo(prompts, {}, outside.path(), MenuLanguage::English)));
    ASSERT_EQ(prompts.alerts.size(), 2);
    EXPECT_TRUE(prompts.alerts[1].text.contains(u"snapshot.json"_s));
}

TEST_F(RecordOperationsTest, cancelledWorkLeavesNothing)
{
    makeCore();
    StuckLog stuck;
    writeFile(out(u"file"_s), {});
    AuditLogStore store(out(u"file/cannot-be"_s), {}, stuck);
    RecordOperations operations({.monitor = monitor(),
                                 .audit = store,
                                 .clock = clock,
                                 .log = log,
                                 .dataFolder = folder.path()});
    QStringList news;
    QObject::connect(&operations, &RecordOperations::workStarted, &operations,
                     [&] { news.append(u"started"_s); });
    QObject::connect(&operations, &RecordOperations::workEnded, &operations,
                     [&] { news.append(u"ended"_s); });
    store.append({.timestampMs = 1, .kind = u"stuck"_s}); // its failure gets stuck in the log
    auto report
        = operations.exportWeeklyAuditReportTo(prompts, out(u"r.md"_s), MenuLanguage::English);
    auto bundleTask
        = operations.exportDiagnosticsBundleTo(prompts, {}, outside.path(), MenuLanguage::English);
    EXPECT_TRUE(operations.isWorking());
    operations.cancel();
    stuck.letGo.count_down();
    EXPECT_FALSE(test::waitFor(std::move(report)));
    EXPECT_FALSE(test::waitFor(std::move(bundleTask)));
    EXPECT_FALSE(operations.isWorking());
    EXPECT_EQ(news, QStringList({u"started"_s, u"ended"_s}));
    EXPECT_TRUE(prompts.alerts.isEmpty());
    EXPECT_EQ(QDir(outside.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
              QStringList {u"file"_s});
}

TEST_F(RecordOperationsTest, pendingRequestsGoToTheClipboardOrAFile)
{
    makeCore();
    monitor().handleGatewayEvent(ApprovalRequested {item("r1", "login --token=abc")});
    monitor().handleGatewayEvent(ApprovalRequested {item("r2", "echo \x1b[2K")});
    QStringList copied;
    const auto copy = [&copied](const QString &text) { copied.append(text); };

    EXPECT_FALSE(test::waitFor(record().copyOrSaveAllPendingApprovalDetails(prompts, copy)));
    ASSERT_EQ(prompts.questions.size(), 1);
    EXPECT_EQ(prompts.questions[0].title, u"전체 승인 내역"_s);
    EXPECT_EQ(prompts.questions[0].buttons,
              QStringList({u"클립보드 복사"_s, u"텍스트 파일 저장"_s}));
    EXPECT_TRUE(copied.isEmpty());

    prompts.answers = {0, 1, 1};
    EXPECT_TRUE(test::waitFor(record().copyOrSaveAllPendingApprovalDetails(prompts, copy)));
    ASSERT_EQ(copied.size(), 1);
    EXPECT_TRUE(copied[0].contains(u"Command: login --token=abc\n"_s));
    EXPECT_TRUE(copied[0].contains(u"Command: echo ⟨U+001B⟩[2K\n"_s));
    EXPECT_TRUE(copied[0].contains(u"not as they would run"_s));

    prompts.files = {out(u"pending.txt"_s), out(u"missing/pending.txt"_s)};
    EXPECT_TRUE(test::waitFor(record().copyOrSaveAllPendingApprovalDetails(prompts, copy)));
    EXPECT_EQ(contentOf(out(u"pending.txt"_s)), copied[0].toUtf8() + '\n');
    EXPECT_EQ(prompts.fileQuestions[0].title, u"승인 내역 저장"_s);
    EXPECT_TRUE(prompts.fileQuestions[0].suggestedName.startsWith(u"pending-approvals-"_s));
    EXPECT_TRUE(prompts.fileQuestions[0].suggestedName.endsWith(u".txt"_s));
    EXPECT_TRUE(prompts.alerts.isEmpty());

    EXPECT_FALSE(test::waitFor(record().copyOrSaveAllPendingApprovalDetails(prompts, copy)));
    ASSERT_EQ(prompts.alerts.size(), 1);
    EXPECT_TRUE(prompts.alerts[0].text.startsWith(u"Save failed: "_s));
}

} // namespace bram::test
