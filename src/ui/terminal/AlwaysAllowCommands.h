// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ui/terminal/CommandLine.h"

#include <QCoro/QCoroTask>
#include <QObject>
#include <QPointer>

namespace bram
{

class BackgroundTasks;
class TerminalPrompts;
class TerminalVoice;
struct AlwaysAllowEntry;

/// The commands about the always-allow list. Main thread.
class AlwaysAllowCommands final : public QObject
{
    Q_OBJECT

public:
    struct Collaborators {
        AlwaysAllowOperations &alwaysAllow;
        TerminalPrompts &prompts;
        BackgroundTasks &tasks;
        TerminalVoice &voice;
    };

    explicit AlwaysAllowCommands(const Collaborators &collaborators);

    void carryOut(const AlwaysAllowCommand &command);

private:
    void list();
    /// The one entry whose digest is or begins with the text; says so where there is not exactly one.
    const AlwaysAllowEntry *find(const QString &digest);
    static QCoro::Task<> change(QPointer<AlwaysAllowCommands> self, AlwaysAllowCommand command);
    static QCoro::Task<> useFile(QPointer<AlwaysAllowCommands> self, AlwaysAllowCommand::Kind kind,
                                 QString path);

    Collaborators m_collaborators;
};

} // namespace bram
