// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ui/terminal/CommandLine.h"

#include <QCoro/QCoroTask>
#include <QObject>
#include <QPointer>
#include <QString>

namespace bram
{

class BackgroundTasks;
class LanguageChoice;
class RecordOperations;
class TerminalPrompts;
class TerminalVoice;

/// The commands that take something out of the program into a file: the pending requests, the weekly report,
/// the diagnostics bundle. A file that is there is replaced only after the operator has agreed. Main thread.
class RecordCommands final : public QObject
{
    Q_OBJECT

public:
    struct Collaborators {
        RecordOperations &record;
        const LanguageChoice &language;
        TerminalPrompts &prompts;
        BackgroundTasks &tasks;
        TerminalVoice &voice;
    };

    explicit RecordCommands(const Collaborators &collaborators);

    void carryOut(const FileCommand &command);
    /// Ends the reports and bundles that are being made.
    void cancel();

private:
    static QCoro::Task<> write(QPointer<RecordCommands> self, FileCommand::Purpose purpose,
                               QString path);
    void onProgress(int percent);

    Collaborators m_collaborators;
    int m_percentSaid = 0;
};

} // namespace bram
