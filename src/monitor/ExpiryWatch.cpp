// SPDX-License-Identifier: Apache-2.0
#include "monitor/ExpiryWatch.h"

#include "system/Clock.h"

#include <QElapsedTimer>

#include <algorithm>
#include <chrono>

namespace bram
{

namespace
{
/// A timer cannot wait for any length of time.
constexpr qint64 longestWaitMs = 24 * 60 * 60 * 1000;
/// How long a burst of expiries may hold the event loop before the rest waits for the next turn.
constexpr int turnMs = 8;
} // namespace

ExpiryWatch::ExpiryWatch(const Clock &clock)
    : m_clock(clock)
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &ExpiryWatch::reportExpired);
}

void ExpiryWatch::watch(const ApprovalItem &item)
{
    drop(item.approvalId);
    if (item.expiresAtMs >= 1) {
        m_expiresAtMs.insert(item.approvalId, item.expiresAtMs);
        m_inOrder.emplace(item.expiresAtMs, item.approvalId);
    }
    schedule();
}

void ExpiryWatch::forget(const QString &approvalId)
{
    drop(approvalId);
    schedule();
}

void ExpiryWatch::clear()
{
    m_expiresAtMs.clear();
    m_inOrder.clear();
    schedule();
}

void ExpiryWatch::drop(const QString &approvalId)
{
    const auto known = m_expiresAtMs.constFind(approvalId);
    if (known != m_expiresAtMs.cend()) {
        m_inOrder.erase({*known, approvalId});
        m_expiresAtMs.erase(known);
    }
}

void ExpiryWatch::schedule()
{
    if (m_inOrder.empty()) {
        m_timer.stop();
        m_timerIsForMs.reset();
        return;
    }
    const qint64 firstMs = m_inOrder.begin()->first;
    const qint64 nowMs = m_clock.nowMs();
    if (m_timerIsForMs != firstMs || firstMs <= nowMs) {
        m_timerIsForMs = firstMs;
        m_timer.start(std::chrono::milliseconds(
            firstMs <= nowMs ? 0 : std::min(firstMs - nowMs, longestWaitMs)));
    }
}

void ExpiryWatch::reportExpired()
{
    m_timerIsForMs.reset();
    QElapsedTimer turn;
    turn.start();
    const qint64 nowMs = m_clock.nowMs();
    while (!m_inOrder.empty() && m_inOrder.begin()->first <= nowMs && !turn.hasExpired(turnMs)) {
        const QString approvalId = m_inOrder.begin()->second;
        drop(approvalId);
        Q_EMIT expired(approvalId);
    }
    schedule();
}

} // namespace bram
