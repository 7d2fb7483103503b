// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ui/terminal/AlwaysAllowCommands.h"
#include "ui/terminal/AuditNews.h"
#include "ui/terminal/ChatCommands.h"
#include "ui/terminal/CommandLine.h"
#include "ui/terminal/GatewayNews.h"
#include "ui/terminal/RecordCommands.h"
#include "ui/terminal/RequestDialogue.h"
#include "ui/terminal/SettingsCommands.h"
#include "ui/terminal/TelegramCommands.h"
#include "ui/terminal/TerminalPrompts.h"
#include "ui/terminal/TerminalVoice.h"

#include <QObject>

namespace bram
{

class ReliabilityExercises;

/// The operator's dialogue in a terminal or over a pipe: shows requests as they arrive, carries out what is
/// typed, and asks what operations want to know. Main thread.
class TerminalFrontEnd final : public QObject
{
    Q_OBJECT

public:
    struct Collaborators {
        ApprovalMonitor &monitor;
        BulkAllow &bulkAllow;
        ReliabilityExercises &exercises;
        RecordOperations &record;
        AlwaysAllowOperations &alwaysAllow;
        TelegramBridgeSupervisor &telegram;
        OperatorChat *practiceChat = nullptr; ///< only in practice
        LanguageChoice &language;
        StoredSwitch &allowPartlyShown;
        StoredSwitch &unencryptedGateway;
        SharedPollingSetting &sharedPolling;
        BackgroundTasks &tasks;
        const Clock &clock;
        LineSource &input;
        TerminalOutput &output;
    };

    explicit TerminalFrontEnd(const Collaborators &collaborators);

    /// Greets and begins to read.
    void start();

    TerminalPrompts &prompts() { return m_prompts; }

Q_SIGNALS:
    /// By command, at the end of the input, or because nobody reads the output any more.
    void quitRequested();

private:
    void onLine(const QString &text, DialogueMoment begunAt);
    void carryOut(const TerminalCommand &command, DialogueMoment begunAt);
    bool isPractice() const { return m_collaborators.practiceChat != nullptr; }
    void run(PlainCommand command);
    void quit();

    Collaborators m_collaborators;
    TerminalVoice m_voice;
    TerminalPrompts m_prompts;
    GatewayNews m_gatewayNews;
    AuditNews m_auditNews;
    RequestDialogue m_requests;
    SettingsCommands m_settings;
    RecordCommands m_record;
    AlwaysAllowCommands m_alwaysAllow;
    TelegramCommands m_telegram;
    ChatCommands m_chat;
    bool m_quitting = false;
};

} // namespace bram
