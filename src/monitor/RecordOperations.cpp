// SPDX-License-Identifier: Apache-2.0
#include "monitor/RecordOperations.h"

#include "audit/AuditLogStore.h"
#include "audit/DiagnosticsBundle.h"
#include "audit/WeeklyAuditReport.h"
#include "monitor/ApprovalMonitor.h"
#include "monitor/DiagnosticsSnapshot.h"
#include "monitor/OperatorPrompts.h"
#include "monitor/PendingExport.h"
#include "system/Clock.h"
#include "system/Files.h"

#include <QDateTime>
#include <QJsonDocument>

#include <algorithm>
#include <utility>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr int progressIntervalMs = 100;

/// For the name of a file: "20260131-235959", local time.
QString fileTimestamp(qint64 nowMs)
{
    return QDateTime::fromMSecsSinceEpoch(nowMs).toString(u"yyyyMMdd-HHmmss");
}

/// Not made within a coroutine: g++ 12 cannot make a list of braces there.
Question copyOrSaveQuestion()
{
    return {.title = u"전체 승인 내역"_s,
            .text = u"클립보드로 복사하거나 텍스트 파일로 저장할 수 있습니다."_s,
            .buttons = {u"클립보드 복사"_s, u"텍스트 파일 저장"_s},
            .harmless = Question::noButton};
}
} // namespace

RecordOperations::RecordOperations(Collaborators collaborators)
    : m_collaborators(std::move(collaborators))
{
    m_progressTimer.setInterval(progressIntervalMs);
    connect(&m_progressTimer, &QTimer::timeout, this, &RecordOperations::publishProgress);
}

RecordOperations::~RecordOperations()
{
    cancel();
}

QCoro::Task<bool> RecordOperations::exportWeeklyAuditReport(OperatorPrompts &prompts,
                                                            MenuLanguage language)
{
    return choosingAndExportingReport(this, &prompts, language);
}

QCoro::Task<bool> RecordOperations::exportWeeklyAuditReportTo(OperatorPrompts &prompts,
                                                              QString path, MenuLanguage language)
{
    return exportingReport(this, &prompts, std::move(path), language);
}

QCoro::Task<bool> RecordOperations::previewWeeklyAuditReport(OperatorPrompts &prompts,
                                                             MenuLanguage language)
{
    return previewingReport(this, &prompts, language);
}

QCoro::Task<bool> RecordOperations::exportDiagnosticsBundle(OperatorPrompts &prompts,
                                                            SurfaceFacts surface,
                                                            MenuLanguage language)
{
    return choosingAndExportingBundle(this, &prompts, std::move(surface), language);
}

QCoro::Task<bool> RecordOperations::exportDiagnosticsBundleTo(OperatorPrompts &prompts,
                                                              SurfaceFacts surface, QString folder,
                                                              MenuLanguage language)
{
    return exportingBundle(this, &prompts, std::move(surface), std::move(folder), language);
}

QJsonObject RecordOperations::diagnosticsSnapshotPayload(const SurfaceFacts &surface) const
{
    const auto &settings = m_collaborators.settings;
    return diagnosticsSnapshot(m_collaborators.monitor, surface,
                               settings ? settings() : QJsonObject(),
                               m_collaborators.clock.nowMs());
}

QCoro::Task<bool> RecordOperations::copyOrSaveAllPendingApprovalDetails(OperatorPrompts &prompts,
                                                                        CopyText copy)
{
    return copyingOrSavingPending(this, &prompts, std::move(copy));
}

QCoro::Task<bool> RecordOperations::savePendingApprovalDetailsToFile(OperatorPrompts &prompts,
                                                                     QString text)
{
    return choosingAndSavingPending(this, &prompts, std::move(text));
}

QCoro::Task<bool> RecordOperations::savePendingApprovalDetailsTo(OperatorPrompts &prompts,
                                                                 QString path)
{
    return savingPending(this, &prompts, std::move(path), pendingText());
}

void RecordOperations::cancel()
{
    for (const Progress &progress : m_work) {
        progress->isCancelled = true;
    }
}

QCoro::Task<bool> RecordOperations::choosingAndExportingReport(Self self, OperatorPrompts *prompts,
                                                               MenuLanguage language)
{
    const QString time = fileTimestamp(self->m_collaborators.clock.nowMs());
    const FileQuestion question {
        .kind = FileQuestion::Kind::SaveFile,
        .title = tr("Save last 7 days audit data"),
        .suggestedName = u"weekly-audit-%1.md"_s.arg(time),
        .acceptLabel = {},
        .rememberedAs = u"weeklyAuditReport"_s,
    };
    const auto path = co_await prompts->askForFile(question);
    if (!self || !path) {
        co_return false;
    }
    const bool written = co_await exportingReport(self, prompts, *path, language);
    co_return written;
}

QCoro::Task<bool> RecordOperations::exportingReport(Self self, OperatorPrompts *prompts,
                                                    QString path, MenuLanguage language)
{
    const Written written = co_await writingReport(self, path, language);
    if (!self || !written) {
        co_return false;
    }
    if (!*written) {
        const Alert alert {tr("The audit data could not be saved"), written->error().message};
        co_await prompts->inform(alert);
        co_return false;
    }
    const Alert alert {tr("Saved"), tr("Saved last 7 days audit data.") + u'\n' + path};
    co_await prompts->inform(alert);
    co_return true;
}

QCoro::Task<bool> RecordOperations::previewingReport(Self self, OperatorPrompts *prompts,
                                                     MenuLanguage language)
{
    constexpr qint64 msPerSecond = 1000;
    const qint64 seconds = self->m_collaborators.clock.nowMs() / msPerSecond;
    const QString path = self->m_collaborators.dataFolder + u"/reports/weekly-audit-preview-"_s
        + QString::number(seconds) + u".md"_s;
    const Written written = co_await writingReport(self, path, language);
    if (!self || !written) {
        co_return false;
    }
    QString problem;
    if (!*written) {
        problem = written->error().message;
    } else {
        const bool opened = co_await prompts->openFile(path);
        if (opened) {
            co_return true;
        }
        problem = tr("no program opened %1").arg(path);
    }
    const Alert alert {tr("Weekly audit report"), tr("Preview failed: %1").arg(problem)};
    co_await prompts->inform(alert);
    co_return false;
}

QCoro::Task<RecordOperations::Written> RecordOperations::writingReport(Self self, QString path,
                                                                       MenuLanguage language)
{
    const Progress progress = self->beginWork();
    const Collaborators &collaborators = self->m_collaborators;
    std::function<Written()> work
        = [&audit = collaborators.audit, &log = collaborators.log,
           nowMs = collaborators.clock.nowMs(), reports = collaborators.dataFolder + u"/reports/"_s,
           path, language, progress]() -> Written {
        const auto report
            = weeklyAuditReport(audit.openLogFiles(), nowMs, language, *progress, log);
        if (!report) {
            return std::nullopt;
        }
        if (path.startsWith(reports)) {
            if (const auto made = makePrivateFolder(reports); !made) {
                return std::unexpected(made.error());
            }
        }
        if (const auto written = writeWholeFile(path, report->toUtf8()); !written) {
            return std::unexpected(written.error());
        }
        return path;
    };
    const Written written = co_await self->m_worker.run<Written>(std::nullopt, std::move(work));
    if (self) {
        self->endWork(progress);
    }
    co_return written;
}

QCoro::Task<bool> RecordOperations::choosingAndExportingBundle(Self self, OperatorPrompts *prompts,
                                                               SurfaceFacts surface,
                                                               MenuLanguage language)
{
    const FileQuestion question {
        .kind = FileQuestion::Kind::Folder,
        .title = tr("Select destination for diagnostics bundle"),
        .suggestedName = {},
        .acceptLabel = tr("Save"),
        .rememberedAs = u"diagnosticsBundle"_s,
    };
    const auto folder = co_await prompts->askForFile(question);
    if (!self || !folder) {
        co_return false;
    }
    const bool written
        = co_await exportingBundle(self, prompts, std::move(surface), *folder, language);
    co_return written;
}

QCoro::Task<bool> RecordOperations::exportingBundle(Self self, OperatorPrompts *prompts,
                                                    SurfaceFacts surface, QString folder,
                                                    MenuLanguage language)
{
    const Collaborators &collaborators = self->m_collaborators;
    const qint64 nowMs = collaborators.clock.nowMs();
    const QJsonDocument snapshot(self->diagnosticsSnapshotPayload(surface));
    DiagnosticsBundle bundle {
        .parentFolder = folder,
        .nowMs = nowMs,
        .language = language,
        .snapshot = snapshot.toJson(QJsonDocument::Indented),
        .pendingText = pendingApprovalExportText(collaborators.monitor.board().displayItems(),
                                                 nowMs, SecretsInExport::Masked),
        .stateLog = collaborators.stateLog,
    };
    const Progress progress = self->beginWork();
    std::function<Written()> work
        = [bundle = std::move(bundle), &audit = collaborators.audit, &log = collaborators.log,
           progress] { return writeDiagnosticsBundle(bundle, audit, *progress, log); };
    const Written written = co_await self->m_worker.run<Written>(std::nullopt, std::move(work));
    if (self) {
        self->endWork(progress);
    }
    if (!self || !written) {
        co_return false;
    }
    if (!*written) {
        const Alert alert {tr("The diagnostics bundle could not be saved"),
                           written->error().message};
        co_await prompts->inform(alert);
        co_return false;
    }
    const Alert alert {tr("Diagnostics bundle saved"), tr("Saved to:\n%1").arg(written->value())};
    co_await prompts->inform(alert);
    co_return true;
}

QCoro::Task<bool> RecordOperations::copyingOrSavingPending(Self self, OperatorPrompts *prompts,
                                                           CopyText copy)
{
    const QString text = self->pendingText();
    const Question question = copyOrSaveQuestion();
    const qsizetype answer = co_await prompts->ask(question);
    if (!self) {
        co_return false;
    }
    if (answer == 0) {
        copy(text);
        co_return true;
    }
    if (answer != 1) {
        co_return false;
    }
    const bool written = co_await choosingAndSavingPending(self, prompts, text);
    co_return written;
}

QCoro::Task<bool> RecordOperations::choosingAndSavingPending(Self self, OperatorPrompts *prompts,
                                                             QString text)
{
    const QString time = fileTimestamp(self->m_collaborators.clock.nowMs());
    const FileQuestion question {
        .kind = FileQuestion::Kind::SaveFile,
        .title = u"승인 내역 저장"_s,
        .suggestedName = u"pending-approvals-%1.txt"_s.arg(time),
        .acceptLabel = {},
        .rememberedAs = u"pendingApprovals"_s,
    };
    const auto path = co_await prompts->askForFile(question);
    if (!self || !path) {
        co_return false;
    }
    const bool written = co_await savingPending(self, prompts, *path, std::move(text));
    co_return written;
}

QCoro::Task<bool> RecordOperations::savingPending(Self self, OperatorPrompts *prompts, QString path,
                                                  QString text)
{
    using Saved = std::expected<void, Error>;
    std::function<Saved()> work
        = [path, bytes = text.toUtf8() + '\n'] { return writeWholeFile(path, bytes); };
    const Saved abandoned = std::unexpected(Error {u"the program ends"_s});
    const Saved saved = co_await self->m_worker.run<Saved>(abandoned, std::move(work));
    if (!self) {
        co_return false;
    }
    if (!saved) {
        const Alert alert {u"승인 내역 저장"_s, u"Save failed: "_s + saved.error().message};
        co_await prompts->inform(alert);
    }
    co_return saved.has_value();
}

QString RecordOperations::pendingText() const
{
    return pendingApprovalExportText(m_collaborators.monitor.board().displayItems(),
                                     m_collaborators.clock.nowMs(), SecretsInExport::Shown);
}

RecordOperations::Progress RecordOperations::beginWork()
{
    auto progress = std::make_shared<AggregationProgress>();
    m_work.push_back(progress);
    if (m_work.size() == 1) {
        m_progressTimer.start();
        Q_EMIT workStarted();
    }
    return progress;
}

void RecordOperations::endWork(const Progress &progress)
{
    std::erase(m_work, progress);
    if (m_work.empty()) {
        m_progressTimer.stop();
        Q_EMIT workEnded();
    }
}

void RecordOperations::publishProgress()
{
    std::size_t done = 0;
    std::size_t total = 0;
    for (const Progress &progress : m_work) {
        done += progress->bytesDone;
        total += progress->bytesTotal;
    }
    constexpr std::size_t whole = 100;
    if (total > 0) {
        Q_EMIT workProgressed(static_cast<int>(std::min(done * whole / total, whole)));
    }
}

} // namespace bram
