// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "audit/WeeklyAuditAggregation.h"
#include "model/Error.h"
#include "model/MenuLanguage.h"
#include "monitor/SurfaceFacts.h"
#include "system/Worker.h"

#include <QCoro/QCoroTask>
#include <QJsonObject>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace bram
{

class ApprovalMonitor;
class AuditLogStore;
class Clock;
class OperatorPrompts;
class SystemLog;

/// What the operator takes out of the program: the weekly report, the diagnostics bundle and the pending
/// requests as text. Asks where it is to go, writes it away from the main thread, and tells how that ended.
///
/// A task ends when the operation has, and gives whether something was written (or copied); it is to be kept by
/// `BackgroundTasks::spawn` or awaited. `prompts` lives until the task ends. Parameters are values because they
/// live on in a coroutine. Main thread.
class RecordOperations final : public QObject
{
    Q_OBJECT

public:
    struct Collaborators {
        ApprovalMonitor &monitor;
        AuditLogStore &audit;
        const Clock &clock;
        SystemLog &log;
        QString dataFolder {}; ///< the application-support folder
        /// What the snapshot says of the settings; called at each bundle.
        std::function<QJsonObject()> settings {};
        QString stateLog = QStringLiteral("/tmp/brackwen-approvals-menu-state.log");
    };

    explicit RecordOperations(Collaborators collaborators);
    ~RecordOperations() override;

    // The report over the last seven days, in the language given. The forms ending in "To" take an absolute
    // path instead of asking for one, and replace a file that is there.
    QCoro::Task<bool> exportWeeklyAuditReport(OperatorPrompts &prompts, MenuLanguage language);
    QCoro::Task<bool> exportWeeklyAuditReportTo(OperatorPrompts &prompts, QString path,
                                                MenuLanguage language);
    /// Writes it into the data folder and opens it.
    QCoro::Task<bool> previewWeeklyAuditReport(OperatorPrompts &prompts, MenuLanguage language);

    // A folder for somebody who is to help, inside the folder chosen.
    QCoro::Task<bool> exportDiagnosticsBundle(OperatorPrompts &prompts, SurfaceFacts surface,
                                              MenuLanguage language);
    QCoro::Task<bool> exportDiagnosticsBundleTo(OperatorPrompts &prompts, SurfaceFacts surface,
                                                QString folder, MenuLanguage language);
    QJsonObject diagnosticsSnapshotPayload(const SurfaceFacts &surface) const;

    // The requests that are displayed, with everything that is in them.
    using CopyText = std::function<void(const QString &text)>;
    /// `copy` puts a text on the clipboard.
    QCoro::Task<bool> copyOrSaveAllPendingApprovalDetails(OperatorPrompts &prompts, CopyText copy);
    QCoro::Task<bool> savePendingApprovalDetailsToFile(OperatorPrompts &prompts, QString text);
    QCoro::Task<bool> savePendingApprovalDetailsTo(OperatorPrompts &prompts, QString path);

    /// Whether a log is being gone through, for a report or a bundle.
    bool isWorking() const { return !m_work.empty(); }
    /// Ends reports and bundles under way: nothing of them is left, and nothing is said.
    void cancel();

Q_SIGNALS:
    /// Work on a report or a bundle begins when none was under way, goes on, and has ended.
    void workStarted();
    void workProgressed(int percent);
    void workEnded();

private:
    using Self = QPointer<RecordOperations>;
    using Progress = std::shared_ptr<AggregationProgress>;
    /// What a piece of work ended with: nothing when it was cancelled.
    using Written = std::optional<std::expected<QString, Error>>;

    static QCoro::Task<bool> choosingAndExportingReport(Self self, OperatorPrompts *prompts,
                                                        MenuLanguage language);
    static QCoro::Task<bool> exportingReport(Self self, OperatorPrompts *prompts, QString path,
                                             MenuLanguage language);
    static QCoro::Task<bool> previewingReport(Self self, OperatorPrompts *prompts,
                                              MenuLanguage language);
    static QCoro::Task<bool> choosingAndExportingBundle(Self self, OperatorPrompts *prompts,
                                                        SurfaceFacts surface,
                                                        MenuLanguage language);
    static QCoro::Task<bool> exportingBundle(Self self, OperatorPrompts *prompts,
                                             SurfaceFacts surface, QString folder,
                                             MenuLanguage language);
    static QCoro::Task<bool> copyingOrSavingPending(Self self, OperatorPrompts *prompts,
                                                    CopyText copy);
    static QCoro::Task<bool> choosingAndSavingPending(Self self, OperatorPrompts *prompts,
                                                      QString text);
    static QCoro::Task<bool> savingPending(Self self, OperatorPrompts *prompts, QString path,
                                           QString text);
    static QCoro::Task<Written> writingReport(Self self, QString path, MenuLanguage language);

    QString pendingText() const;
    Progress beginWork();
    void endWork(const Progress &progress);
    void publishProgress();

    const Collaborators m_collaborators;
    std::vector<Progress> m_work; ///< reports and bundles that are being made
    QTimer m_progressTimer;
    Worker m_worker; ///< goes first: its work refers to the others
};

} // namespace bram
