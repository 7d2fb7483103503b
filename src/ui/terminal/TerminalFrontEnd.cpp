// SPDX-License-Identifier: Apache-2.0
#include "ui/terminal/TerminalFrontEnd.h"

#include "monitor/ApprovalMonitor.h"
#include "monitor/ReliabilityExercises.h"
#include "ui/language/Words.h"
#include "ui/terminal/LineSource.h"
#include "ui/terminal/TerminalOutput.h"
#include "ui/terminal/TerminalText.h"
#include "ui/terminal/TerminalTr.h"

#include <utility>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
template<typename... Handlers>
struct Overloaded : Handlers... {
    using Handlers::operator()...;
};
} // namespace

TerminalFrontEnd::TerminalFrontEnd(const Collaborators &collaborators)
    : m_collaborators(collaborators)
    , m_voice(collaborators.input, collaborators.output)
    , m_prompts(m_voice)
    , m_gatewayNews(collaborators.monitor.gatewayStatus(), m_voice)
    , m_auditNews(collaborators.monitor.auditHealth(), m_voice)
    , m_requests({.monitor = collaborators.monitor,
                  .bulkAllow = collaborators.bulkAllow,
                  .prompts = m_prompts,
                  .tasks = collaborators.tasks,
                  .voice = m_voice,
                  .allowPartlyShown = collaborators.allowPartlyShown,
                  .clock = collaborators.clock})
    , m_settings({.agents = collaborators.monitor.agents(),
                  .language = collaborators.language,
                  .sharedPolling = collaborators.sharedPolling,
                  .allowPartlyShown = collaborators.allowPartlyShown,
                  .unencryptedGateway = collaborators.unencryptedGateway,
                  .prompts = m_prompts,
                  .tasks = collaborators.tasks,
                  .voice = m_voice})
    , m_record({.record = collaborators.record,
                .language = collaborators.language,
                .prompts = m_prompts,
                .tasks = collaborators.tasks,
                .voice = m_voice})
    , m_alwaysAllow({.alwaysAllow = collaborators.alwaysAllow,
                     .prompts = m_prompts,
                     .tasks = collaborators.tasks,
                     .voice = m_voice})
    , m_telegram({.telegram = collaborators.telegram,
                  .prompts = m_prompts,
                  .tasks = collaborators.tasks,
                  .voice = m_voice})
    , m_chat(collaborators.practiceChat, m_voice)
{
    LineSource &input = collaborators.input;
    input.setMomentSource([&output = collaborators.output] { return output.written(); });
    connect(&input, &LineSource::lineEntered, this, &TerminalFrontEnd::onLine);
    connect(&input, &LineSource::lineRefused, this, [this](const QString &reason) {
        m_voice.say(reason, LineStyle::Warning);
        m_prompts.takeSecret({});
    });
    connect(&input, &LineSource::endOfInput, this, &TerminalFrontEnd::quit);
    connect(&collaborators.output, &TerminalOutput::closed, this, &TerminalFrontEnd::quit);
    connect(&collaborators.output, &TerminalOutput::caughtUp, &m_requests,
            &RequestDialogue::goOnAfterGap);
}

void TerminalFrontEnd::start()
{
    const QString greeting
        = TerminalTr::tr("Requests for approval appear here. `help` lists the commands.");
    m_voice.say(isPractice() ? practiceMark() + u": "_s + greeting : greeting, LineStyle::Quiet);
    m_gatewayNews.start();
    m_auditNews.start();
    m_requests.start();
    m_collaborators.input.start();
    m_requests.announce();
}

void TerminalFrontEnd::onLine(const QString &text, DialogueMoment begunAt)
{
    if (m_quitting) {
        return;
    }
    if (m_prompts.isAskingForSecret()) {
        m_prompts.takeSecret(text); // whatever it says, it is not to be repeated in a message
        return;
    }
    const auto command = parseCommandLine(text);
    const bool isForQuestion
        = m_prompts.isAsking() && (!command || *command == TerminalCommand(PlainCommand::Nothing));
    if (isForQuestion) {
        m_prompts.takeLine(text, begunAt,
                           command || command.error().isUnknownWord ? QString()
                                                                    : command.error().message);
    } else if (command) {
        carryOut(*command, begunAt);
    } else {
        m_voice.say(command.error().message, LineStyle::Warning);
    }
}

void TerminalFrontEnd::carryOut(const TerminalCommand &command, DialogueMoment begunAt)
{
    std::visit(
        Overloaded {
            [&](PlainCommand plain) { run(plain); },
            [&](const ShowCommand &wish) { m_requests.show(wish.target, begunAt); },
            [&](const SaveCommand &wish) { m_requests.save(wish, begunAt); },
            [&](const DecideCommand &wish) { m_requests.decide(wish, begunAt); },
            [&](const DecideAllCommand &wish) { m_requests.decideAll(wish.decision, begunAt); },
            [&](const AgentCommand &wish) { m_settings.chooseAgent(wish.agentId); },
            [&](const LanguageCommand &wish) { m_settings.chooseLanguage(wish.language); },
            [&](const SharedPollingCommand &wish) { m_settings.setSharedPolling(wish.isAllowed); },
            [&](const SettingCommand &wish) { m_settings.set(wish.name, wish.isOn); },
            [&](const FileCommand &wish) { m_record.carryOut(wish); },
            [&](const AlwaysAllowCommand &wish) { m_alwaysAllow.carryOut(wish); },
            [&](TelegramCommand wish) { m_telegram.carryOut(wish); },
            [&](const ChatCommand &wish) { m_chat.carryOut(wish); },
        },
        command);
}

void TerminalFrontEnd::run(PlainCommand command)
{
    ApprovalMonitor &monitor = m_collaborators.monitor;
    const ApprovalBoard &board = monitor.board();
    const int columns = m_voice.columns();
    const qsizetype pendingCount = board.displayItems().size();
    switch (command) {
    case PlainCommand::Nothing:
        break;
    case PlainCommand::List:
        m_requests.list();
        break;
    case PlainCommand::History:
        m_voice.print(historyLines(board.history(), columns));
        break;
    case PlainCommand::Activity:
        m_voice.print(activityLines(board.activity(), columns));
        break;
    case PlainCommand::Status:
        if (isPractice()) {
            m_voice.say(practiceSentence(), LineStyle::Warning);
        }
        m_voice.print(statusLines(monitor.gatewayStatus().lines(), pendingCount,
                                  m_requests.notShown().size(), columns));
        m_voice.print(m_auditNews.lines(columns));
        m_telegram.sayStatus();
        break;
    case PlainCommand::Metrics:
        m_voice.print(metricsLines(monitor.metrics(), pendingCount));
        break;
    case PlainCommand::Agents:
        m_settings.listAgents();
        break;
    case PlainCommand::Simulate:
        m_collaborators.exercises.runProgramSimulation(&m_prompts);
        break;
    case PlainCommand::Reconnect:
        m_voice.say(TerminalTr::tr("Reconnecting to the gateway."));
        m_gatewayNews.expectAnswer();
        monitor.reconnectGateway();
        break;
    case PlainCommand::ReloadToken:
        m_voice.say(TerminalTr::tr("Reading the gateway token again."));
        m_gatewayNews.expectAnswer();
        monitor.reloadGatewayToken();
        m_gatewayNews.tell();
        break;
    case PlainCommand::ClearPending:
        m_requests.clearPending();
        break;
    case PlainCommand::ClearHistory:
        monitor.clearHistory();
        m_voice.say(TerminalTr::tr("The history is empty now; the audit log is not."));
        break;
    case PlainCommand::CancelReport:
        m_record.cancel();
        break;
    case PlainCommand::Undo:
        m_requests.undo();
        break;
    case PlainCommand::Settings:
        m_settings.list();
        break;
    case PlainCommand::Help:
        m_voice.print(helpLines(columns));
        break;
    case PlainCommand::Quit:
        quit();
        break;
    }
}

void TerminalFrontEnd::quit()
{
    if (!std::exchange(m_quitting, true)) {
        m_requests.end();
        m_prompts.stop();
        Q_EMIT quitRequested();
    }
}

} // namespace bram
