// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/ArmingGuard.h"

#include <gtest/gtest.h>

#include <functional>

namespace bram
{

namespace
{
constexpr qint64 start = 1000;
constexpr qint64 still = ArmingGuard::stillnessMs;

ArmingGuard inSightSince(qint64 nowMs)
{
    ArmingGuard guard;
    guard.setInSight(true, nowMs);
    return guard;
}
} // namespace

TEST(ArmingGuard, IsArmedAfterBeingInSightForLongEnough)
{
    ArmingGuard guard;
    EXPECT_FALSE(guard.isArmed(start + 100 * still)) << "never shown";
    EXPECT_FALSE(guard.msUntilArmed(start).has_value());

    guard.setInSight(true, start);
    EXPECT_EQ(guard.msUntilArmed(start), still);
    EXPECT_FALSE(guard.isArmed(start + still - 1));
    EXPECT_TRUE(guard.isArmed(start + still));

    guard.setInSight(true, start + still + 1);
    EXPECT_TRUE(guard.isArmed(start + still + 1)) << "nothing has changed";
    guard.setInSight(false, start + 2 * still);
    EXPECT_FALSE(guard.isArmed(start + 9 * still));
    guard.setInSight(true, start + 9 * still);
    EXPECT_FALSE(guard.isArmed(start + 10 * still - 1));
    EXPECT_TRUE(guard.isArmed(start + 10 * still));
}

TEST(ArmingGuard, WhatHappensBeforeItIsArmedPutsItOff)
{
    const struct {
        const char *name;
        std::function<void(ArmingGuard &, qint64)> happens;
        bool disarms; ///< once it is armed
    } rows[] {
        {"content", [](auto &guard, qint64 now) { guard.restart(now); }, true},
        {"typing", [](auto &guard, qint64 now) { guard.keyTyped(now); }, true},
        {"key", [](auto &guard, qint64 now) { guard.keyPressed(now); }, false},
        {"click",
         [](auto &guard, qint64 now) {
             guard.pressBegan(now);
             guard.pressEnded(now);
         },
         false},
    };
    for (const auto &row : rows) {
        ArmingGuard guard = inSightSince(start);
        const qint64 last = start + still - 1;
        row.happens(guard, last);
        EXPECT_FALSE(guard.isArmed(last + still - 1)) << row.name;
        EXPECT_TRUE(guard.isArmed(last + still)) << row.name;

        row.happens(guard, last + still);
        EXPECT_EQ(guard.isArmed(last + still), !row.disarms) << row.name;
    }
}

TEST(ArmingGuard, AKeyAnswersOnlyAfterARestSinceTheFocusCame)
{
    ArmingGuard guard = inSightSince(start);
    EXPECT_FALSE(guard.answerKeyPressed(start + still - 1));
    const qint64 moved = start + 3 * still;
    ASSERT_TRUE(guard.isArmed(moved));
    guard.focusMoved(moved);
    EXPECT_TRUE(guard.isArmed(moved)) << "for the mouse and the shortcuts";
    EXPECT_FALSE(guard.answerKeyPressed(moved + still - 1));
    EXPECT_FALSE(guard.answerKeyPressed(moved + 2 * still - 2)) << "pressed again too soon";
    EXPECT_TRUE(guard.answerKeyPressed(moved + 3 * still - 2));
    guard.restart(moved + 4 * still);
    EXPECT_FALSE(guard.answerKeyPressed(moved + 5 * still - 1));
}

TEST(ArmingGuard, APressCountsOnlyWhenItBeganArmedAndNothingChangedUnderIt)
{
    ArmingGuard early = inSightSince(start);
    early.pressBegan(start + still - 1);
    EXPECT_FALSE(early.isArmed(start + 50 * still)) << "held down since before it was armed";
    EXPECT_FALSE(early.msUntilArmed(start + 50 * still).has_value());
    early.pressEnded(start + 50 * still);
    EXPECT_FALSE(early.isArmed(start + 50 * still));
    EXPECT_TRUE(early.isArmed(start + 51 * still));

    ArmingGuard armed = inSightSince(start);
    armed.pressBegan(start + still);
    EXPECT_TRUE(armed.isPressed());
    EXPECT_TRUE(armed.isArmed(start + 3 * still));
    armed.pressEnded(start + 3 * still);
    EXPECT_TRUE(armed.isArmed(start + 3 * still));

    ArmingGuard changed = inSightSince(start);
    changed.pressBegan(start + still);
    changed.restart(start + still + 1);
    EXPECT_FALSE(changed.isArmed(start + 9 * still)) << "another question under the finger";
    changed.pressEnded(start + 9 * still);
    EXPECT_FALSE(changed.isArmed(start + 10 * still - 1));
    EXPECT_TRUE(changed.isArmed(start + 10 * still));
}

} // namespace bram
