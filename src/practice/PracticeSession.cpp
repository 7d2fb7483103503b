// SPDX-License-Identifier: Apache-2.0
#include "practice/PracticeSession.h"

#include "practice/PracticeGateway.h"
#include "practice/SampleRequests.h"
#include "system/Clock.h"

namespace bram
{

PracticeSession::PracticeSession(PracticeGateway &gateway, const Clock &clock,
                                 PracticeSessionOptions options, QObject *parent)
    : QObject(parent)
    , m_gateway(gateway)
    , m_clock(clock)
    , m_options(options)
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &PracticeSession::announceNext);
    connect(&m_gateway, &PracticeGateway::clientAuthenticated, this, &PracticeSession::begin);
}

void PracticeSession::begin()
{
    if (m_begun) {
        return;
    }
    m_begun = true;
    m_timer.start(m_options.firstDelayMs);
}

void PracticeSession::announceNext()
{
    if (isOver()) {
        return;
    }
    if (m_gateway.pendingItems().size() < m_options.maxPending) {
        m_gateway.announce(sampleRequest(m_announced++, m_clock.nowMs()));
    }
    m_timer.start(m_options.intervalMs);
}

bool PracticeSession::isOver() const
{
    return m_options.count && m_announced >= *m_options.count;
}

} // namespace bram
