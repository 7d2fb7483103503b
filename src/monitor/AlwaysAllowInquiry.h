// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "allowlist/ExecApprovalsFiles.h"
#include "audit/AutomaticAnswers.h"
#include "system/Worker.h"

#include <QCoro/QCoroTask>
#include <QObject>
#include <QPointer>

#include <atomic>
#include <memory>
#include <optional>

namespace bram
{

class AlwaysAllowList;
class ApprovalBoard;
class AuditLogStore;
class BackgroundTasks;
class Clock;
class SystemLog;

/// Finds out what there is to know of one entry of the always-allow list: where the platform has it, and when it last
/// answered a request. Reads files and the audit log away from the main thread; this object is on it.
class AlwaysAllowInquiry final : public QObject
{
    Q_OBJECT

public:
    struct Collaborators {
        const AlwaysAllowList &list;
        const ApprovalBoard &board;
        AuditLogStore &audit;
        BackgroundTasks &tasks;
        const Clock &clock;
        SystemLog &log;
    };

    explicit AlwaysAllowInquiry(const Collaborators &collaborators);
    ~AlwaysAllowInquiry() override;

    /// Which entry it is about from now on; empty for none. Asking again finds out what has changed since.
    void ask(const QString &digest);

    /// What is known so far.
    struct Facts {
        std::optional<QList<ExecApprovalsPlace>>
            places {}; ///< nothing while the files are being read
        bool isLogRead = false;
        std::optional<qint64> lastAnswerMs {};
        std::optional<qint64> logSinceMs {}; ///< how far the log reaches back
    };
    Facts facts() const;

Q_SIGNALS:
    void factsChanged();

private:
    using Self = QPointer<AlwaysAllowInquiry>;
    using Flag = std::shared_ptr<std::atomic<bool>>;

    static QCoro::Task<> findPlaces(Self self, QString digest);
    static QCoro::Task<> readLog(Self self);
    std::optional<qint64> lastAnswerInHistory() const;

    Collaborators m_collaborators;
    QString m_digest;
    std::optional<QList<ExecApprovalsPlace>> m_places;
    std::optional<AutomaticAnswers> m_answers;
    qint64 m_logReadAtMs = 0;
    bool m_isReadingLog = false;
    const Flag m_isCancelled;
    Worker m_worker; ///< goes first: its work refers to the others
};

} // namespace bram
