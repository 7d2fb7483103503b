// SPDX-License-Identifier: Apache-2.0
#include "app/Application.h"

#include "ui/terminal/TerminalInput.h"

#include <chrono>

#include <unistd.h>

namespace bram
{

using namespace std::chrono_literals;

namespace
{
/// How long the end of the program waits for decisions under way, and then for tasks to notice the end.
constexpr auto decisionsLimit = 5s;
constexpr auto tasksLimit = 1s;
constexpr int outputLimitMs = 500;

bool isPerson()
{
    return isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0;
}

/// Log lines stay off a terminal on which the front-end draws the line being typed; and practice leaves
/// the operator's system log alone.
SyslogLog::Targets logTargets(bool practice)
{
    SyslogLog::Targets targets;
    targets.setFlag(SyslogLog::Syslog, !practice);
    targets.setFlag(SyslogLog::StandardError, !(isPerson() && isatty(STDERR_FILENO) != 0));
    return targets;
}

} // namespace

Application::Application(Places places, std::unique_ptr<PracticeWorld> practice, const Clock &clock)
    : m_log(logTargets(practice != nullptr))
    , m_practice(std::move(practice))
    , m_keyring(m_log)
    , m_core({.places = m_practice ? m_practice->places() : std::move(places),
              .secrets = m_practice ? m_practice->secrets() : static_cast<SecretStore &>(m_keyring),
              .clock = clock,
              .log = m_log,
              .commandLine = m_practice ? CommandLineUse::Never : CommandLineUse::Allowed})
    , m_output(STDOUT_FILENO)
    , m_input(makeLineSource(STDIN_FILENO, m_output))
    , m_frontEnd(m_core.monitor(), *m_input, m_output, clock)
{
    connect(&m_frontEnd, &TerminalFrontEnd::quitRequested, this, &Application::shutDown);
    connect(&m_signals, &TerminationSignals::requested, this, &Application::shutDown);
    m_limit.setSingleShot(true);
    connect(&m_limit, &QTimer::timeout, this, [this] {
        if (m_phase == Phase::WaitingForDecisions) {
            stopCore();
        } else {
            finish();
        }
    });
    connect(&m_core.monitor().decisions(), &DecisionResolver::decisionSettled, this, [this] {
        if (m_phase == Phase::WaitingForDecisions && m_core.monitor().decisions().isIdle()) {
            stopCore();
        }
    });
}

Application::~Application() = default;

void Application::start()
{
    m_frontEnd.start();
    m_core.start();
}

void Application::shutDown()
{
    if (m_phase != Phase::Running) {
        return;
    }
    m_phase = Phase::WaitingForDecisions;
    if (m_core.monitor().decisions().isIdle()) {
        stopCore();
        return;
    }
    m_limit.start(decisionsLimit);
}

void Application::stopCore()
{
    m_phase = Phase::Stopping;
    m_limit.start(tasksLimit);
    m_core.stop();
    m_keyring.stop();
    m_core.tasks().whenIdle([this] { finish(); });
}

void Application::finish()
{
    if (m_phase == Phase::Finished) {
        return;
    }
    m_phase = Phase::Finished;
    m_limit.stop();
    m_output.flush(outputLimitMs);
    Q_EMIT finished();
}

} // namespace bram
