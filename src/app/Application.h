// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "app/Core.h"
#include "app/PracticeWorld.h"
#include "system/KeyringSecretStore.h"
#include "system/linux/SyslogLog.h"
#include "system/linux/TerminationSignals.h"
#include "ui/terminal/LineSource.h"
#include "ui/terminal/TerminalFrontEnd.h"
#include "ui/terminal/TerminalOutput.h"

#include <QObject>
#include <QTimer>

#include <memory>

namespace bram
{

/// The running program: the core, the world it lives in and the front-end that asks. Made once, in main.
class Application final : public QObject
{
    Q_OBJECT

public:
    /// With a practice world, that takes the place of the operator's; it is null otherwise.
    Application(Places places, std::unique_ptr<PracticeWorld> practice, const Clock &clock);
    ~Application() override;

    void start();

Q_SIGNALS:
    /// Everything is at rest and the process may end.
    void finished();

private:
    /// Lets decisions under way end, for a short while, then stops everything.
    void shutDown();
    void stopCore();
    void finish();

    SyslogLog m_log;
    std::unique_ptr<PracticeWorld> m_practice;
    KeyringSecretStore m_keyring;
    Core m_core;
    TerminalOutput m_output;
    std::unique_ptr<LineSource> m_input;
    TerminalFrontEnd m_frontEnd;
    TerminationSignals m_signals;
    QTimer m_limit; ///< of the phase of the end that is under way

    enum class Phase {
        Running,
        WaitingForDecisions,
        Stopping,
        Finished,
    };
    Phase m_phase = Phase::Running;
};

} // namespace bram
