// SPDX-License-Identifier: Apache-2.0
#include "app/Application.h"

#include "app/DesktopSession.h"
#include "app/TerminalSession.h"

#include <chrono>
#include <cstdlib>

#include <unistd.h>

namespace bram
{

using namespace std::chrono_literals;

namespace
{
/// How long the end of the program waits for decisions and reports under way, and then for tasks to notice the end.
constexpr auto workLimit = 5s;
constexpr auto tasksLimit = 1s;

bool isPerson()
{
    return isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0;
}

/// Log lines stay off a terminal on which the front-end draws the line being typed; and practice leaves
/// the operator's system log alone.
SyslogLog::Targets logTargets(bool practice, SurfaceKind surface)
{
    const bool isDrawnOn
        = surface == SurfaceKind::Terminal && isPerson() && isatty(STDERR_FILENO) != 0;
    SyslogLog::Targets targets;
    targets.setFlag(SyslogLog::Syslog, !practice);
    targets.setFlag(SyslogLog::StandardError, !isDrawnOn);
    return targets;
}

std::unique_ptr<FrontEnd> makeFrontEnd(SurfaceKind surface, const LaunchOptions &options,
                                       const Clock &clock, SystemLog &log)
{
    if (surface == SurfaceKind::Desktop) {
        return std::make_unique<DesktopSession>(
            clock, log,
            options.simulationMenuEnabled ? SimulationEntry::Shown : SimulationEntry::Hidden);
    }
    return std::make_unique<TerminalSession>(clock);
}

} // namespace

Application::Application(Parts parts, const Clock &clock)
    : m_options(parts.options)
    , m_log(logTargets(parts.practice != nullptr, parts.surface))
    , m_practice(std::move(parts.practice))
    , m_keyring(m_log)
    , m_frontEnd(makeFrontEnd(parts.surface, m_options, clock, m_log))
    , m_core({.places = m_practice ? m_practice->places() : std::move(parts.places),
              .secrets = m_practice ? m_practice->secrets() : static_cast<SecretStore &>(m_keyring),
              .clock = clock,
              .log = m_log,
              .ports = m_frontEnd->ports(),
              .commandLine = m_practice ? CommandLineUse::Never : CommandLineUse::Allowed})
{
    connect(m_frontEnd.get(), &FrontEnd::quitRequested, this, &Application::onQuitRequested);
    connect(&m_signals, &TerminationSignals::requested, this, &Application::shutDown);
    connect(&m_core.monitor(), &ApprovalMonitor::started, this, &Application::runExercises);
    connect(&m_core.exercises(), &ReliabilityExercises::selfTestFinished, this,
            [this](bool success, const QString &verdict) {
                m_selfTestSucceeded = success;
                m_verdict = verdict;
                shutDown();
            });
    m_limit.setSingleShot(true);
    connect(&m_limit, &QTimer::timeout, this, [this] {
        if (m_phase == Phase::WaitingForWork) {
            stopCore();
        } else {
            finish();
        }
    });
    const auto goOnWhenIdle = [this] {
        if (m_phase == Phase::WaitingForWork && isIdle()) {
            stopCore();
        }
    };
    connect(&m_core.monitor().decisions(), &DecisionResolver::decisionSettled, this, goOnWhenIdle);
    connect(&m_core.record(), &RecordOperations::workEnded, this, goOnWhenIdle,
            Qt::QueuedConnection);
}

Application::~Application() = default;

void Application::start()
{
    m_frontEnd->start(m_core, m_practice ? &m_practice->chat() : nullptr);
    m_core.start();
}

int Application::exitStatus() const
{
    return m_options.selfTest && !m_selfTestSucceeded ? EXIT_FAILURE : EXIT_SUCCESS;
}

void Application::runExercises()
{
    if (m_options.selfTest) {
        m_core.exercises().runReliabilitySelfTest(
            m_options.selfTestOutput.value_or(ReliabilityExercises::defaultResultPath));
    }
    if (m_options.startupSimulation) {
        m_core.exercises().runProgramSimulation(nullptr);
    }
}

void Application::onQuitRequested()
{
    // A self-test ends by itself; a script gives it no input, and the end of that is not the end of the
    // test.
    if (!m_options.selfTest) {
        shutDown();
    }
}

void Application::shutDown()
{
    if (m_phase != Phase::Running) {
        return;
    }
    m_phase = Phase::WaitingForWork;
    if (isIdle()) {
        stopCore();
        return;
    }
    m_limit.start(workLimit);
}

bool Application::isIdle()
{
    return m_core.monitor().decisions().isIdle() && !m_core.record().isWorking();
}

void Application::stopCore()
{
    m_phase = Phase::Stopping;
    m_limit.start(tasksLimit);
    m_frontEnd->stopAsking();
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
    m_frontEnd->finish();
    Q_EMIT finished();
}

} // namespace bram
