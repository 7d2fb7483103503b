// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ui/terminal/CommandLine.h"

#include <QCoro/QCoroTask>
#include <QObject>
#include <QPointer>

namespace bram
{

class BackgroundTasks;
class TelegramBridgeSupervisor;
class TerminalPrompts;
class TerminalVoice;

/// The commands about the Telegram bridge and its token. Main thread.
class TelegramCommands final : public QObject
{
    Q_OBJECT

public:
    struct Collaborators {
        TelegramBridgeSupervisor &telegram;
        TerminalPrompts &prompts;
        BackgroundTasks &tasks;
        TerminalVoice &voice;
    };

    explicit TelegramCommands(const Collaborators &collaborators);

    void carryOut(TelegramCommand command);
    void sayStatus();

private:
    static QCoro::Task<> setToken(QPointer<TelegramCommands> self);
    static QCoro::Task<> clearToken(QPointer<TelegramCommands> self);
    void useEnvironment();
    void saySource();

    Collaborators m_collaborators;
};

} // namespace bram
