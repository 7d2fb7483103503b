// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtGlobal>

#include <optional>

namespace bram
{

/// When the buttons of a prompt may answer: once it has been in plain sight, and the hands of the person
/// before it still, for 0.7 s. So neither a click nor a key that was meant for something else decides.
///
/// The rule alone: it is told what happens and when, in milliseconds of a clock that never jumps.
class ArmingGuard
{
public:
    static constexpr qint64 stillnessMs = 700;

    /// Whether the prompt can be read as a whole and has the keyboard.
    void setInSight(bool inSight, qint64 nowMs);
    /// What is asked has changed, or has been uncovered: begins anew.
    void restart(qint64 nowMs);

    /// A mouse button goes down or comes up. What is pressed too early does not count when it is released
    /// later, and nothing is armed under a finger that is down.
    void pressBegan(qint64 nowMs);
    void pressEnded(qint64 nowMs);
    /// A key that moves the focus, scrolls or is a shortcut: counts only as a hand that moves.
    void keyPressed(qint64 nowMs);
    /// A key that writes: whoever is writing means another window, so it begins anew even when armed.
    void keyTyped(qint64 nowMs) { restart(nowMs); }
    /// The focus has come to something else: keys may answer there only after another 0.7 s.
    void focusMoved(qint64 nowMs) { m_focusStillSinceMs = nowMs; }
    /// A key that answers where the focus is. False when it comes too early, which begins anew: no
    /// hammering on it answers.
    [[nodiscard]] bool answerKeyPressed(qint64 nowMs);

    bool isPressed() const { return m_pressed; }
    bool isArmed(qint64 nowMs) const;
    /// When it will be armed if nothing happens; absent while it waits for something to happen.
    std::optional<qint64> msUntilArmed(qint64 nowMs) const;

private:
    bool waitsForRelease() const { return m_pressed && !m_pressCounts; }

    bool m_inSight = false;
    bool m_pressed = false;
    bool m_pressCounts
        = false; ///< the press that is going on began when armed, and nothing changed since
    qint64 m_stillSinceMs = 0;
    qint64 m_focusStillSinceMs = 0;
};

} // namespace bram
