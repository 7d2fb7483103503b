// SPDX-License-Identifier: Apache-2.0
#include "monitor/ReliabilityExercises.h"

#include "audit/AuditLogStore.h"
#include "gateway/GatewayStatus.h"
#include "model/UtcTime.h"
#include "monitor/ApprovalMonitor.h"
#include "monitor/OperatorPrompts.h"
#include "system/BackgroundTasks.h"
#include "system/Clock.h"
#include "system/RandomUuid.h"
#include "system/SystemLog.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryFile>
#include <QTimer>

#include <algorithm>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace bram
{

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{
constexpr auto pauseBeforeDisconnect = 450ms;
constexpr auto pauseBeforeMeasuring = 1600ms;
const QString lowRiskId = u"sim-low-"_s;
const QString highRiskId = u"sim-high-"_s;
const QString simulatedRefusal = u"unauthorized (simulation): token revoked"_s;
const QString testedRefusal = u"unauthorized (self-test): token revoked"_s;
const QString unnamedAgent = u"main"_s; ///< who asks when no agent is selected

Alert simulationAlert()
{
    return {.title = ReliabilityExercises::tr("Simulation Executed"),
            .text = ReliabilityExercises::tr(
                "Generated 2 synthetic approvals (low/high risk) and a token-revocation disconnect "
                "event. In Telegram dry-run mode, check payload logs for button rendering.")};
}

Alert selfTestAlert(bool success, const QString &resultPath)
{
    return {.title = success ? ReliabilityExercises::tr("Self-Test Passed")
                             : ReliabilityExercises::tr("Self-Test Failed"),
            .text = success ? ReliabilityExercises::tr(
                                  "2 synthetic approvals and a token-revocation disconnect were "
                                  "counted and put on record.\nResult: %1")
                                  .arg(resultPath)
                            : ReliabilityExercises::tr(
                                  "Not everything was counted and put on record, or the result "
                                  "could not be written.\nResult, if there is one: %1")
                                  .arg(resultPath)};
}

/// Whether the result is written into what is there, which is no file and stays: "/dev/null", "/dev/stdout",
/// a pipe that somebody reads from.
bool isStream(const QString &path)
{
    const QString place = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    struct stat status = {};
    if (::lstat(QFile::encodeName(place).constData(), &status) != 0) {
        return false;
    }
    if (S_ISLNK(status.st_mode)) {
        // Elsewhere a link could have been put there by anybody.
        return QFileInfo(place).absolutePath() == u"/dev"_s || place.startsWith("/dev/fd/"_L1)
            || place.startsWith("/proc/"_L1);
    }
    return !S_ISREG(status.st_mode);
}

bool writeToStream(const QString &path, const QByteArray &content)
{
    const int descriptor = ::open(QFile::encodeName(path).constData(),
                                  O_WRONLY | O_APPEND | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (descriptor < 0) {
        return false;
    }
    const ssize_t written
        = ::write(descriptor, content.constData(), static_cast<std::size_t>(content.size()));
    ::close(descriptor);
    return written == content.size();
}

/// Another file in the place of one that is there, also of a symbolic link: in a folder that everybody may
/// write to, that could lead to a file of the operator's.
bool writeResult(const QString &path, const QByteArray &content)
{
    if (isStream(path)) {
        return writeToStream(path, content);
    }
    QTemporaryFile file(path + u".XXXXXX"_s);
    if (!file.open() || file.write(content) != content.size() || !file.flush()
        || ::fsync(file.handle()) != 0) {
        return false;
    }
    if (std::rename(QFile::encodeName(file.fileName()).constData(),
                    QFile::encodeName(path).constData())
        != 0) {
        return false;
    }
    file.setAutoRemove(false);
    return true;
}
} // namespace

const QString ReliabilityExercises::defaultResultPath = u"/tmp/bram-self-test-result.json"_s;

ReliabilityExercises::ReliabilityExercises(const Collaborators &collaborators)
    : m_collaborators(collaborators)
    , m_running(std::make_unique<QObject>())
{
}

void ReliabilityExercises::stop()
{
    m_running.reset();
}

void ReliabilityExercises::runProgramSimulation(OperatorPrompts *prompts)
{
    m_collaborators.tasks.spawn(simulateForOperator(this, prompts), u"simulation"_s);
}

void ReliabilityExercises::runReliabilitySelfTest(const QString &resultPath)
{
    m_collaborators.tasks.spawn(testSelf(this, resultPath), u"self-test"_s);
}

void ReliabilityExercises::runSelfTestForOperator(OperatorPrompts &prompts,
                                                  const QString &resultPath)
{
    m_collaborators.tasks.spawn(testSelfForOperator(this, &prompts, resultPath), u"self-test"_s);
}

QCoro::Task<> ReliabilityExercises::simulateForOperator(QPointer<ReliabilityExercises> self,
                                                        OperatorPrompts *prompts)
{
    const QStringList ids = co_await simulate(self);
    if (ids.isEmpty() || !self) {
        co_return;
    }
    self->m_collaborators.tasks.spawn(recover(self), u"simulation"_s);
    if (prompts != nullptr) {
        const Alert alert = simulationAlert();
        co_await prompts->inform(alert);
    }
}

QCoro::Task<> ReliabilityExercises::recover(QPointer<ReliabilityExercises> self)
{
    const bool goesOn = co_await self->pause(pauseBeforeMeasuring);
    if (goesOn && self) {
        self->m_collaborators.monitor.recoverFromSimulation();
    }
}

bool ReliabilityExercises::isMadeUp(const QString &approvalId)
{
    return approvalId.startsWith(lowRiskId) || approvalId.startsWith(highRiskId);
}

QCoro::Task<QStringList> ReliabilityExercises::simulate(QPointer<ReliabilityExercises> self)
{
    const QStringList ids {
        self->simulateRequest(lowRiskId, u"ls -la ~/Downloads"_s),
        self->simulateRequest(highRiskId, u"sudo rm -rf ~/Library/Caches/brackwen-sim"_s)};
    const bool goesOn = co_await self->pause(pauseBeforeDisconnect);
    if (!goesOn || !self) {
        co_return QStringList();
    }
    self->m_collaborators.monitor.handleConnectionState(
        GatewayDisconnected {.reason = simulatedRefusal, .isExercise = true});
    self->m_collaborators.log.write(
        u"[Brackwen] startup simulation executed (approval x2 + token-revocation disconnect)"_s);
    co_return ids;
}

QString ReliabilityExercises::simulateRequest(const QString &idBeginning, const QString &command)
{
    const AgentSelection &agents = m_collaborators.monitor.agents();
    const ApprovalItem item {.approvalId = idBeginning + randomUuid(),
                             .command = command,
                             .agentId
                             = agents.isUnrestricted() ? unnamedAgent : agents.selectedAgentId(),
                             .createdAtMs = m_collaborators.clock.nowMs(),
                             .expiresAtMs = 0};
    m_collaborators.monitor.handleExercise(item);
    return item.approvalId;
}

QCoro::Task<> ReliabilityExercises::testSelf(QPointer<ReliabilityExercises> self,
                                             QString resultPath)
{
    const Verdict verdict = co_await measure(self, resultPath);
    if (self) {
        Q_EMIT self->selfTestFinished(verdict.isSuccess(), verdict.text(resultPath));
    }
}

QCoro::Task<> ReliabilityExercises::testSelfForOperator(QPointer<ReliabilityExercises> self,
                                                        OperatorPrompts *prompts,
                                                        QString resultPath)
{
    const Verdict verdict = co_await measure(self, resultPath);
    if (!self || !self->m_running) {
        co_return;
    }
    self->m_collaborators.monitor.recoverFromSimulation();
    const Alert alert = selfTestAlert(verdict.isSuccess(), resultPath);
    co_await prompts->inform(alert);
}

QCoro::Task<ReliabilityExercises::Verdict>
ReliabilityExercises::measure(QPointer<ReliabilityExercises> self, QString resultPath)
{
    if (!isStream(resultPath)) {
        QFile::remove(resultPath);
    }
    ApprovalMonitor &monitor = self->m_collaborators.monitor;
    const qint64 startMs = self->m_collaborators.clock.nowMs();
    const qint64 requestedBefore = monitor.metrics().requestedCount;
    const QStringList ids = co_await simulate(self);
    if (ids.isEmpty() || !self) {
        co_return Verdict();
    }
    monitor.handleConnectionState(
        GatewayDisconnected {.reason = testedRefusal, .isExercise = true});
    const bool goesOn = co_await self->pause(pauseBeforeMeasuring);
    if (!goesOn || !self) {
        co_return Verdict();
    }
    const AuditFindings findings = co_await self->lookIntoAudit(startMs, ids);
    if (!self) {
        co_return Verdict();
    }
    Verdict verdict;
    verdict.check(monitor.metrics().requestedCount - requestedBefore >= ids.size(),
                  u"both requests counted"_s);
    verdict.check(findings.hasLowRisk, u"the harmless request on record"_s);
    verdict.check(findings.hasHighRisk, u"the high-risk request on record"_s);
    verdict.check(findings.hasAuthFailure, u"the refusal by the gateway on record"_s);
    const QByteArray result = self->resultJson(findings, verdict.isSuccess());
    std::function<bool()> work = [resultPath, result] { return writeResult(resultPath, result); };
    const bool isWritten = co_await self->m_worker.run<bool>(false, std::move(work));
    verdict.check(isWritten, u"the result written"_s);
    if (self && !isWritten) {
        self->m_collaborators.log.write(
            QString(u"[Brackwen] self-test: the result could not be written to "_s + resultPath));
    }
    co_return verdict;
}

void ReliabilityExercises::Verdict::check(bool isRight, const QString &what)
{
    ++checkCount;
    if (!isRight) {
        failed.append(what);
    }
}

QString ReliabilityExercises::Verdict::text(const QString &resultPath) const
{
    return isSuccess()
        ? u"Self-test passed: %1 checks (result: %2)"_s.arg(QString::number(checkCount), resultPath)
        : checkCount == 0
        ? u"Self-test failed: it was interrupted"_s
        : u"Self-test failed: not as it should be: %1 (%2 checks; result: %3)"_s.arg(
              failed.join(u", "_s), QString::number(checkCount), resultPath);
}

QByteArray ReliabilityExercises::resultJson(const AuditFindings &findings, bool success) const
{
    const ApprovalMonitor &monitor = m_collaborators.monitor;
    const GatewayStatus::Lines &status = monitor.gatewayStatus().lines();
    return QJsonDocument(QJsonObject {
                             {u"generatedAt"_s,
                              utcTime(m_collaborators.clock.nowMs()).toString(Qt::ISODateWithMs)},
                             {u"requestedCount"_s, monitor.metrics().requestedCount},
                             {u"resolvedCount"_s, monitor.metrics().resolvedCount},
                             {u"pendingCount"_s, monitor.board().displayItems().size()},
                             {u"connectionStatus"_s, status.connectionStatus},
                             {u"tokenStatus"_s, tokenStatusText(status.tokenState)},
                             {u"unauthorizedDisconnectCount"_s,
                              monitor.supervision().unauthorizedDisconnectCount()},
                             {u"hadUnauthorizedDisconnect"_s, findings.hasAuthFailure},
                             {u"success"_s, success},
                         })
        .toJson();
}

Reply<bool> ReliabilityExercises::pause(std::chrono::milliseconds duration)
{
    const ReplySource<bool> source(false);
    if (m_running) {
        auto *timer = new QTimer(m_running.get());
        timer->setSingleShot(true);
        connect(timer, &QTimer::timeout, timer, [timer, source] {
            source.answer(true);
            timer->deleteLater();
        });
        timer->start(duration);
    }
    return source.reply();
}

Reply<ReliabilityExercises::AuditFindings>
ReliabilityExercises::lookIntoAudit(qint64 sinceMs, const QStringList &approvalIds)
{
    return m_worker.run<AuditFindings>({}, [&audit = m_collaborators.audit, sinceMs, approvalIds] {
        const QList<AuditEventRecord> records = audit.records(sinceMs);
        const auto has = [&records](QLatin1StringView kind, std::optional<QString> id) {
            return std::ranges::any_of(records, [&](const AuditEventRecord &record) {
                return record.kind == kind && (!id || record.approvalId == id);
            });
        };
        return AuditFindings {.hasAuthFailure = has(AuditKind::gatewayAuthFailure, std::nullopt),
                              .hasLowRisk = has(AuditKind::approvalRequested, approvalIds.value(0)),
                              .hasHighRisk
                              = has(AuditKind::approvalRequested, approvalIds.value(1))};
    });
}

} // namespace bram
