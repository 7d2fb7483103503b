// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "practice/PracticeScript.h"

#include <QObject>
#include <QSet>
#include <QTimer>

#include <optional>
#include <vector>

namespace bram
{

class Clock;
class PracticeGateway;

/// Plays a script on a practice gateway, step after step. Ends after the last step; the gateway goes on
/// as the script left it. Main thread only.
class PracticeScriptRunner final : public QObject
{
    Q_OBJECT

public:
    /// Gateway and clock must outlive the runner.
    PracticeScriptRunner(PracticeGateway &gateway, const Clock &clock,
                         std::vector<ScriptStep> steps, QObject *parent = nullptr);

    /// Begins, in a later turn of the event loop. Once.
    void start();

Q_SIGNALS:
    void finished();
    void quitRequested();
    /// A step could not be done (the port is taken); the script has ended there.
    void failed(const QString &message);

private:
    enum class Progress {
        Done,
        Waiting,
        Ended,
    };

    void run();
    Progress runStep(const ScriptStep &step);
    Progress runWait(const ScriptStep &step);
    void runFault(const ScriptStep &step);
    void request(const ScriptStep &step);
    void resumeIfWaitingFor(ScriptVerb verb);

    PracticeGateway &m_gateway;
    const Clock &m_clock;
    std::vector<ScriptStep> m_steps;
    std::size_t m_next = 0;
    std::optional<ScriptVerb> m_waitingFor; ///< a client or a decision
    QSet<QString> m_decidedIds;
    QTimer m_timer;
    int m_nextSample = 0;
};

} // namespace bram
