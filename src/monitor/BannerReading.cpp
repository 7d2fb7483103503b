// SPDX-License-Identifier: Apache-2.0
#include "monitor/BannerReading.h"

#include "system/Clock.h"

namespace bram
{

BannerReading::BannerReading(const Clock &clock)
    : m_clock(clock)
{
}

void BannerReading::came(const QString &tag, std::chrono::milliseconds readingTime)
{
    m_banners.insert(tag, {m_clock.nowMs(), readingTime});
    oneHasCome();
}

void BannerReading::forget(const QString &tag)
{
    m_banners.remove(tag);
}

void BannerReading::oneHasCome()
{
    m_lastCameMs = m_clock.nowMs();
}

void BannerReading::oneHasGone()
{
    m_lastWentMs = m_clock.nowMs();
}

bool BannerReading::isRead(const QString &tag) const
{
    const auto banner = m_banners.constFind(tag);
    return banner != m_banners.cend() && isOver(banner->cameAtMs, banner->readingTime)
        && isOver(m_lastCameMs, usualTime) && isOver(m_lastWentMs, timeAfterOneHasGone);
}

/// A clock that was set back tells nothing of the time that has passed, and would hold *allow* up for as long as
/// it was set back.
bool BannerReading::isOver(qint64 beginMs, std::chrono::milliseconds time) const
{
    const qint64 passedMs = m_clock.nowMs() - beginMs;
    return passedMs < 0 || passedMs >= time.count();
}

} // namespace bram
