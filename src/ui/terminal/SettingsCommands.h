// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/MenuLanguage.h"

#include <QCoro/QCoroTask>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>

namespace bram
{

class AgentSelection;
class BackgroundTasks;
class LanguageChoice;
class OperatorPrompts;
class SharedPollingSetting;
class StoredSwitch;
class TerminalVoice;

/// The commands that set for whom and in which language the program works. Main thread.
class SettingsCommands final : public QObject
{
    Q_OBJECT

public:
    struct Collaborators {
        AgentSelection &agents;
        LanguageChoice &language;
        SharedPollingSetting &sharedPolling;
        StoredSwitch &allowPartlyShown;
        StoredSwitch &unencryptedGateway;
        OperatorPrompts &prompts;
        BackgroundTasks &tasks;
        TerminalVoice &voice;
    };

    explicit SettingsCommands(const Collaborators &collaborators);

    void listAgents();
    void chooseAgent(const QString &agentId);
    void chooseLanguage(MenuLanguage language);
    void setSharedPolling(bool isAllowed);
    /// The settings that are on or off, and what each means.
    void list();
    void set(const QString &name, bool isOn);

private:
    static QCoro::Task<> choose(QPointer<SettingsCommands> self, QString agentId);
    struct NamedSwitch {
        QString name;
        StoredSwitch &setting;
        QString meaning;
    };
    QList<NamedSwitch> switches() const;
    void sayAgent();
    void sayUnlessKept(bool isKept);

    Collaborators m_collaborators;
};

} // namespace bram
