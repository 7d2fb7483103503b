// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "monitor/SurfaceFacts.h"

#include <QCoro/QCoroTask>
#include <QObject>
#include <QPointer>
#include <QSet>

#include <functional>

namespace bram
{

class BackgroundTasks;
class LanguageChoice;
class OperatorPrompts;
class RecordOperations;

/// What the operator can take out of the program from any menu or window, with the dialogs of this desktop.
/// Each returns at once; wanted again before it has ended, it only shows its dialog again. Main thread.
class RecordActions final : public QObject
{
    Q_OBJECT

public:
    struct Collaborators {
        RecordOperations &record;
        OperatorPrompts &prompts;
        BackgroundTasks &tasks;
        const LanguageChoice &language;
        std::function<SurfaceFacts()> surface; ///< called for each bundle
    };

    explicit RecordActions(const Collaborators &collaborators);

    void exportWeeklyAuditReport();
    void previewWeeklyAuditReport();
    void exportDiagnosticsBundle();
    /// The requests that are displayed, as text.
    void copyOrSaveAllPending();

    /// Ends reports and bundles that are being made: nothing of them is left.
    void cancel();

    /// A report or a bundle is being made.
    bool isWorking() const;
    /// How much of it is done; meaningful while working.
    int percentDone() const { return m_percentDone; }

Q_SIGNALS:
    /// `isWorking` or `percentDone` has changed.
    void workChanged();

private:
    using Self = QPointer<RecordActions>;
    enum class Wish { Report, Bundle, Pending };

    template<typename Begin>
    void carryOut(Wish wish, const QString &name, Begin begin);
    static QCoro::Task<> ending(Self self, Wish wish, QCoro::Task<bool> operation);

    Collaborators m_collaborators;
    QSet<Wish> m_underWay;
    int m_percentDone = 0;
};

} // namespace bram
