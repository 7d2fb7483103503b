// SPDX-License-Identifier: Apache-2.0
// What keys and clicks do to the popup, and what they must not.
#include "PopupFixture.h"

namespace bram
{

using namespace Qt::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;
using Popup = test::PopupFixture;

TEST_F(Popup, ReturnAndSpaceDecideOnlyOnAButtonThatWasGivenTheFocus)
{
    presentArmed(u"a"_s);
    key(Qt::Key_Return);
    key(Qt::Key_Enter);
    key(Qt::Key_Space);
    EXPECT_THAT(answers, IsEmpty());
    EXPECT_TRUE(isArmed());

    key(Qt::Key_Tab);
    EXPECT_TRUE(button(ApprovalDecision::Deny).hasFocus()) << "what does no harm comes first";
    EXPECT_TRUE(button(ApprovalDecision::Deny).isResting()) << "looks as it behaves";
    EXPECT_TRUE(test::waitUntil([&] { return !button(ApprovalDecision::Deny).isResting(); }));
    key(Qt::Key_X);
    EXPECT_FALSE(isArmed()) << "somebody is writing";
    key(Qt::Key_Space);
    key(Qt::Key_Tab);
    key(Qt::Key_Return);
    EXPECT_THAT(answers, IsEmpty());
    ASSERT_TRUE(becomesArmed());
    EXPECT_TRUE(view().commandView().hasFocus());

    key(Qt::Key_Tab);
    key(Qt::Key_Tab);
    ASSERT_TRUE(handsRest());
    key(Qt::Key_Return);
    presentArmed(u"b"_s);
    EXPECT_TRUE(view().commandView().hasFocus()) << "the focus does not stay for the next one";
    key(Qt::Key_Backtab);
    ASSERT_TRUE(handsRest());
    key(Qt::Key_Space);
    EXPECT_THAT(answers, ElementsAre(u"a allow-once"_s, u"b allow-always"_s));
}

TEST_F(Popup, WhatIsTypedThroughItDecidesNothing)
{
    presentArmed(u"a"_s);
    for (const auto &[move, answer] :
         {std::pair(u"Tab"_s, u"Return"_s), {u"Tab"_s, u"space"_s}, {u"Right"_s, u"KP_Enter"_s}}) {
        ASSERT_TRUE(isArmed());
        ASSERT_TRUE(xdotool({u"key"_s, u"--delay"_s, u"40"_s, move, answer, answer}));
        EXPECT_THAT(answers, IsEmpty());
    }
    // Hammering on it does not help either, only a rest does.
    ASSERT_TRUE(xdotool({u"key"_s, u"--delay"_s, u"500"_s, u"Return"_s, u"Return"_s}));
    EXPECT_THAT(answers, IsEmpty());
    button(ApprovalDecision::Deny).setFocus();
    ASSERT_TRUE(handsRest());
    ASSERT_TRUE(xdotool({u"key"_s, u"Return"_s}));
    EXPECT_TRUE(test::waitUntil([&] { return !answers.isEmpty(); }));
    EXPECT_THAT(answers, ElementsAre(u"a deny"_s));
}

TEST_F(Popup, IsNotClosedUnseen)
{
    present(u"a"_s);
    ASSERT_TRUE(isActive());
    ASSERT_TRUE(xdotool({u"key"_s, u"alt+F4"_s}));
    ASSERT_TRUE(becomesArmed());
    ASSERT_TRUE(xdotool({u"key"_s, u"alt+F4"_s}));
    ASSERT_TRUE(test::waitUntil([&] { return !window().isVisible(); }));
    EXPECT_THAT(answers, ElementsAre(u"a nothing"_s));

    // The second click on the title's close button falls on the next one.
    const auto presentNext = [this](std::optional<ApprovalDecision>) {
        answers.append(u"b nothing"_s);
        popup.present(item(u"c"_s), record(u"c"_s));
    };
    popup.present(item(u"b"_s), presentNext);
    ASSERT_TRUE(becomesArmed());
    const QPoint at = window().frameGeometry().topRight() + QPoint(-10, 8);
    const QStringList toClose {u"mousemove"_s, QString::number(at.x()), QString::number(at.y())};
    ASSERT_TRUE(xdotool(
        toClose + QStringList {u"click"_s, u"--repeat"_s, u"2"_s, u"--delay"_s, u"80"_s, u"1"_s}));
    ASSERT_TRUE(test::waitUntil([&] { return shownId() == u"c"; }));
    ASSERT_TRUE(becomesArmed());
    EXPECT_THAT(answers, ElementsAre(u"a nothing"_s, u"b nothing"_s));

    // One that has been in sight without the keyboard is closed by the first click.
    QWidget other;
    other.setGeometry(0, 0, 200, 100);
    other.show();
    other.activateWindow();
    ASSERT_TRUE(test::waitUntil([&] { return other.isActiveWindow(); }));
    ASSERT_TRUE(xdotool(toClose + QStringList {u"click"_s, u"1"_s}));
    ASSERT_TRUE(test::waitUntil([&] { return !window().isVisible(); }));
    EXPECT_EQ(answers.last(), u"c nothing");
}

TEST_F(Popup, IsClosedAtOnceOnceItHasBeenOnTheScreenForAMoment)
{
    popup.present(item(u"a"_s), [this](std::optional<ApprovalDecision> decision) {
        answers.append(decision ? u"decided"_s : u"a nothing"_s);
        present(u"b"_s);
    });
    ASSERT_TRUE(isActive());
    for (int i = 0; i < 3; ++i) {
        key(Qt::Key_Escape);
        key(Qt::Key_X);
        EXPECT_EQ(shownId(), u"a");
        QTest::qWait(240);
    }
    EXPECT_FALSE(isArmed());
    key(Qt::Key_Escape);
    key(Qt::Key_Escape);
    EXPECT_EQ(shownId(), u"b") << "the second one comes too early for the next request";
    EXPECT_THAT(answers, ElementsAre(u"a nothing"_s));

    QWidget other;
    other.setGeometry(0, 0, 200, 100);
    other.show();
    other.activateWindow();
    ASSERT_TRUE(test::waitUntil([&] { return other.isActiveWindow(); }));
    ASSERT_TRUE(handsRest());
    window().close(); // as a panel does it
    EXPECT_FALSE(window().isVisible());
    EXPECT_THAT(answers, ElementsAre(u"a nothing"_s, u"b nothing"_s));
}

TEST_F(Popup, RealInputOnARealScreen)
{
    presentArmed(u"warm"_s); // the window has its place
    click(button(ApprovalDecision::Deny));
    answers.clear();
    const auto &allow = button(ApprovalDecision::AllowOnce);

    present(u"a"_s);
    ASSERT_TRUE(isActive());
    const QStringList click {u"click"_s, u"1"_s};
    ASSERT_TRUE(xdotool(moveTo(allow) + click));
    ASSERT_TRUE(xdotool({u"key"_s, u"space"_s, u"Return"_s, u"ctrl+alt+shift+o"_s}));
    EXPECT_THAT(answers, IsEmpty()) << "too early";
    ASSERT_TRUE(xdotool({u"mousedown"_s, u"1"_s, u"sleep"_s, u"1"_s, u"mouseup"_s, u"1"_s}));
    ASSERT_TRUE(becomesArmed());
    EXPECT_THAT(answers, IsEmpty()) << "pressed too early, though released late enough";

    ASSERT_TRUE(xdotool(moveTo(allow) + click));
    EXPECT_TRUE(test::waitUntil([&] { return !answers.isEmpty(); }));
    EXPECT_THAT(answers, ElementsAre(u"a allow-once"_s));

    presentArmed(u"b"_s);
    ASSERT_TRUE(xdotool({u"key"_s, u"ctrl+alt+shift+d"_s}));
    EXPECT_TRUE(test::waitUntil([&] { return answers.size() == 2; }));
    EXPECT_THAT(answers, ElementsAre(u"a allow-once"_s, u"b deny"_s));
}

} // namespace bram
