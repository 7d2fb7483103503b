// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/ArmingGuard.h"

#include <algorithm>

namespace bram
{

void ArmingGuard::setInSight(bool inSight, qint64 nowMs)
{
    if (inSight != m_inSight) {
        m_inSight = inSight;
        restart(nowMs);
    }
}

void ArmingGuard::restart(qint64 nowMs)
{
    m_stillSinceMs = nowMs;
    m_pressCounts = false;
}

void ArmingGuard::pressBegan(qint64 nowMs)
{
    m_pressCounts = isArmed(nowMs);
    m_pressed = true;
    if (!m_pressCounts) {
        m_stillSinceMs = nowMs;
    }
}

void ArmingGuard::pressEnded(qint64 nowMs)
{
    if (waitsForRelease()) {
        m_stillSinceMs = nowMs;
    }
    m_pressed = false;
    m_pressCounts = false;
}

void ArmingGuard::keyPressed(qint64 nowMs)
{
    if (!isArmed(nowMs)) {
        m_stillSinceMs = nowMs;
    }
}

bool ArmingGuard::answerKeyPressed(qint64 nowMs)
{
    const bool counts = isArmed(nowMs) && nowMs - m_focusStillSinceMs >= stillnessMs;
    if (!counts) {
        keyPressed(nowMs);
        focusMoved(nowMs);
    }
    return counts;
}

bool ArmingGuard::isArmed(qint64 nowMs) const
{
    return msUntilArmed(nowMs) == 0;
}

std::optional<qint64> ArmingGuard::msUntilArmed(qint64 nowMs) const
{
    if (!m_inSight || waitsForRelease()) {
        return std::nullopt;
    }
    return std::max<qint64>(0, m_stillSinceMs + stillnessMs - nowMs);
}

} // namespace bram
