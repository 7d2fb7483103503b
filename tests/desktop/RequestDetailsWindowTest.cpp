// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/RequestDetailsWindow.h"

#include "support/Doubles.h"
#include "support/Waiting.h"

#include "ui/desktop/CommandTextView.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>

#include <gmock/gmock.h>

#include <algorithm>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
QStringList wordsOf(const QWidget &window)
{
    QStringList texts;
    for (const auto *label : window.findChildren<QLabel *>()) {
        if (label->isVisible()) {
            texts.append(label->text());
        }
    }
    return texts;
}

void push(const QWidget &window, const QString &text)
{
    for (auto *button : window.findChildren<QPushButton *>()) {
        if (button->text() == text) {
            button->click();
            return;
        }
    }
    FAIL() << "no button " << text.toStdString();
}
} // namespace

TEST(RequestDetailsWindow, ShowsARequestOrARowOfTheHistoryWhole)
{
    test::ManualClock clock;
    RequestDetailsWindow window(clock);
    const ApprovalItem item {u"id-1"_s, u"sudo a\u202Eb\nc"_s, u"agent\n"_s, 1'718'000'000'000, 0};
    window.open(RequestDetails::of(item));
    EXPECT_THAT(wordsOf(window),
                testing::IsSupersetOf({u"id-1"_s, u"agent⟨U+000A⟩"_s, u"pending"_s}));
    EXPECT_THAT(wordsOf(window).last(),
                testing::Eq(u"HIGH RISK. Characters that could mislead are "
                            "shown as ⟨…⟩."_s));
    const auto &command = *window.findChild<CommandTextView *>();
    EXPECT_EQ(command.toPlainText(), u"sudo a⟨U+202E⟩b\nc");
    EXPECT_THAT(wordsOf(window), testing::Not(testing::Contains(u"Expires:"_s)))
        << "what is not known has no row";

    push(window, u"Copy details"_s);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), item.pretty());
    push(window, u"Copy ID"_s);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), u"id-1");

    ApprovalItem expiring = item;
    expiring.expiresAtMs = clock.current + 60'000;
    window.open(RequestDetails::of(expiring));
    EXPECT_TRUE(wordsOf(window).join(u'|').contains(u"(expires in 60 s)"_s));
    clock.current += 60'000;
    EXPECT_TRUE(
        test::waitUntil([&] { return wordsOf(window).join(u'|').contains(u"(expired)"_s); }));

    const ApprovalHistoryEntry unseen {u"id-2-1"_s,
                                       u"id-2"_s,
                                       {},
                                       ApprovalHistoryState::Resolved,
                                       QDateTime({2024, 6, 10}, {12, 0, 5})};
    window.open(RequestDetails::of(unseen));
    EXPECT_THAT(wordsOf(window),
                testing::IsSupersetOf({u"id-2"_s, u"decided elsewhere, 2024-06-10 12:00:05"_s,
                                       u"The command of this request was not seen."_s}));
    EXPECT_EQ(command.toPlainText(), QString());

    ApprovalHistoryEntry cut = unseen;
    cut.command = u"echo"_s;
    cut.isCut = true;
    window.open(RequestDetails::of(cut));
    EXPECT_EQ(wordsOf(window).last(), u"Only the beginning of the command is kept."_s);
    push(window, u"Copy details"_s);
    EXPECT_TRUE(QGuiApplication::clipboard()->text().endsWith(
        u"\ncmd: echo\n(Only the beginning of the command is kept.)"_s));

    QTest::keyClick(&window, Qt::Key_Escape);
    EXPECT_FALSE(window.isVisible());
    EXPECT_EQ(window.details(), RequestDetails()) << "it may have been megabytes";
}

TEST(RequestDetailsWindow, AllowsAPendingRequestOnceItsEndHasBeenInView)
{
    test::ManualClock clock;
    RequestDetailsWindow window(clock);
    QList<ApprovalDecision> chosen;
    qsizetype readCount = 0;
    QObject::connect(
        &window, &RequestDetailsWindow::decisionChosen, &window,
        [&](const ApprovalItem &, ApprovalDecision decision) { chosen.append(decision); });
    QObject::connect(&window, &RequestDetailsWindow::read, &window, [&] { ++readCount; });
    const auto button = [&window](const QString &text) {
        const auto buttons = window.findChildren<QPushButton *>();
        return *std::ranges::find(buttons, text, &QPushButton::text);
    };
    const auto open = [&window](const QString &command) {
        window.open(RequestDetails::of(ApprovalItem {u"id"_s, command, std::nullopt}));
    };
    const auto isAllowable = [&] { return button(u"Allow Once"_s)->isEnabled(); };

    open(u"ls"_s);
    EXPECT_FALSE(isAllowable()) << "not in the first moment";
    EXPECT_TRUE(button(u"Deny"_s)->isEnabled());
    ASSERT_TRUE(test::waitUntil(isAllowable));
    EXPECT_EQ(readCount, 1);

    open(u"make\n"_s.repeated(200) + u"find ~ -delete"_s);
    EXPECT_FALSE(test::waitUntil(isAllowable, 1500));
    EXPECT_THAT(wordsOf(window),
                testing::Contains(u"It can be allowed once its end has been in view."_s));
    auto &command = *window.findChild<CommandTextView *>();
    command.verticalScrollBar()->setValue(command.verticalScrollBar()->maximum());
    ASSERT_TRUE(test::waitUntil(isAllowable));
    command.verticalScrollBar()->setValue(0);
    push(window, u"Always Allow"_s);
    EXPECT_EQ(chosen, QList {ApprovalDecision::AllowAlways});
    EXPECT_EQ(readCount, 2);
    window.setOver();
    EXPECT_FALSE(isAllowable() || button(u"Deny"_s)->isEnabled());

    window.open(RequestDetails::of(
        ApprovalHistoryEntry {u"id"_s, u"id"_s, u"ls"_s, ApprovalHistoryState::Deny, {}}));
    EXPECT_FALSE(button(u"Deny"_s)->isVisible()) << "what has ended cannot be decided";
}

} // namespace bram
