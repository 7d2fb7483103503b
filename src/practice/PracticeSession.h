// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>
#include <QTimer>

#include <optional>

namespace bram
{

class Clock;
class PracticeGateway;

struct PracticeSessionOptions {
    int firstDelayMs = 1000; ///< from the first client to the first request
    int intervalMs = 12'000; ///< between requests
    std::optional<int> count {}; ///< how many requests in all; absent: no end
    int maxPending = 4; ///< no new request while this many wait for a decision
};

/// Lets a practice gateway announce sample requests, at a pace in which a person can read and decide
/// them. Begins when the first client is let in. Main thread only.
class PracticeSession final : public QObject
{
    Q_OBJECT

public:
    /// Gateway and clock must outlive the session.
    PracticeSession(PracticeGateway &gateway, const Clock &clock, PracticeSessionOptions options,
                    QObject *parent = nullptr);

private:
    void begin();
    void announceNext();
    bool isOver() const;

    PracticeGateway &m_gateway;
    const Clock &m_clock;
    PracticeSessionOptions m_options;
    QTimer m_timer;
    bool m_begun = false;
    int m_announced = 0;
};

} // namespace bram
