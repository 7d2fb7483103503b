// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "app/Core.h"
#include "app/FrontEnd.h"
#include "app/LaunchOptions.h"
#include "app/PracticeWorld.h"
#include "app/SurfaceKind.h"
#include "system/KeyringSecretStore.h"
#include "system/linux/SyslogLog.h"
#include "system/linux/TerminationSignals.h"

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
    struct Parts {
        Places places;
        std::unique_ptr<PracticeWorld> practice; ///< in place of the operator's world; may be null
        SurfaceKind surface = SurfaceKind::Terminal;
        LaunchOptions options {};
    };

    Application(Parts parts, const Clock &clock);
    ~Application() override;

    void start();

    /// How a self-test ended, in one line; empty when none was made.
    const QString &verdict() const { return m_verdict; }
    /// For the process: success, unless a self-test was asked for and did not succeed.
    int exitStatus() const;

Q_SIGNALS:
    /// Everything is at rest and the process may end.
    void finished();

private:
    void onQuitRequested();
    void runExercises();
    /// Nothing that the operator has asked for is under way.
    bool isIdle();
    /// Lets decisions and reports under way end, for a short while, then stops everything.
    void shutDown();
    void stopCore();
    void finish();

    const LaunchOptions m_options;
    SyslogLog m_log;
    std::unique_ptr<PracticeWorld> m_practice;
    KeyringSecretStore m_keyring;
    std::unique_ptr<FrontEnd> m_frontEnd;
    Core m_core;
    TerminationSignals m_signals;
    QTimer m_limit; ///< of the phase of the end that is under way

    enum class Phase {
        Running,
        WaitingForWork,
        Stopping,
        Finished,
    };
    Phase m_phase = Phase::Running;
    bool m_selfTestSucceeded = false;
    QString m_verdict;
};

} // namespace bram
