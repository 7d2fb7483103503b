// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "monitor/SurfaceFacts.h"

#include <QObject>

#include <functional>

namespace bram
{

class BackgroundTasks;
class LanguageChoice;
class OperatorPrompts;
class RecordOperations;

/// What the operator can take out of the program from any menu or window, with the dialogs of this desktop.
/// Each returns at once. Main thread.
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
    Collaborators m_collaborators;
    int m_percentDone = 0;
};

} // namespace bram
