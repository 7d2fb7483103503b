// SPDX-License-Identifier: Apache-2.0
#include "app/PracticeOperatorChat.h"
#include "monitor/TelegramFixture.h"
#include "monitor/TelegramTokens.h"
#include "ui/desktop/PracticeChatWindow.h"
#include "ui/desktop/TelegramSettingsPage.h"

#include <QApplication>
#include <QTest>

namespace bram
{
namespace
{

using namespace Qt::StringLiterals;
using test::waitUntil;

/// What Telegram shows on the desktop, over the real core and the practice Bot API.
class TelegramWindows : public test::TelegramFixture
{
protected:
    static QString texts(const QWidget &window)
    {
        QStringList all;
        for (const QLabel *label : window.findChildren<QLabel *>()) {
            all.append(label->isVisibleTo(&window) ? label->text() : QString());
        }
        return all.join(u'\n');
    }
    [[nodiscard]] static bool shows(const QWidget &window, const QString &text)
    {
        const bool isShown = waitUntil([&] { return texts(window).contains(text); }, 3000);
        EXPECT_TRUE(isShown) << qPrintable(text) << " is missing in\n" << qPrintable(texts(window));
        return isShown;
    }
    [[nodiscard]] static bool click(const QWidget &window, const QString &beginning)
    {
        return waitUntil([&] {
            for (QPushButton *button : window.findChildren<QPushButton *>()) {
                if (button->text().startsWith(beginning) && button->isVisibleTo(&window)) {
                    button->click();
                    return true;
                }
            }
            return false;
        });
    }
};

TEST_F(TelegramWindows, ATokenGoesInAndIsNotSeenAgain)
{
    writeConfiguration(boundConfiguration());
    makeConnectedCore();
    TelegramSettingsPage page({.sharedPolling = core->sharedPolling(),
                               .telegram = core->telegram(),
                               .tasks = core->tasks()});
    page.show();
    ASSERT_TRUE(shows(page, u"off, there is no bot token"_s));
    auto *field = page.findChild<QLineEdit *>();
    EXPECT_EQ(field->echoMode(), QLineEdit::Password);
    QTest::keyClicks(field, u"not a token"_s);
    QTest::keyClick(field, Qt::Key_Return);
    ASSERT_TRUE(shows(page, u"This is no bot token"_s));
    EXPECT_TRUE(field->text().isEmpty());

    QTest::keyClicks(field, token);
    EXPECT_FALSE(field->displayText().contains(u"Token"_s));
    ASSERT_TRUE(click(page, u"St&ore"_s));
    EXPECT_TRUE(field->text().isEmpty() && !field->isUndoAvailable());
    ASSERT_TRUE(shows(page, u"The bot token is in the keyring and in use."_s));
    ASSERT_TRUE(shows(page, u"takes buttons and commands; chats: 1"_s));
    ASSERT_TRUE(shows(page, u"from the keyring"_s));
    EXPECT_FALSE(texts(page).contains(token.section(u':', 1)));

    ASSERT_TRUE(click(page, u"&Remove"_s));
    ASSERT_TRUE(shows(page, u"off, there is no bot token"_s));
}

TEST_F(TelegramWindows, ThePracticeChatIsThePhone)
{
    writeConfiguration(boundConfiguration());
    environmentExtras.insert(u"TELEGRAM_BOT_TOKEN"_s, token);
    makeConnectedCore();
    PracticeOperatorChat phone(bot, chat);
    PracticeChatWindow window(phone);
    window.show();
    ASSERT_TRUE(shows(window, u"No message yet."_s));
    request(item("a", "printf '\u202E<b>&amp;'"));
    ASSERT_TRUE(shows(window, u"[main] a printf '⟨U+202E⟩<b>&amp;'"_s));
    auto *line = window.findChild<QLineEdit *>();
    QTest::keyClicks(line, u"/approve x deny"_s);
    QTest::keyClick(line, Qt::Key_Return);
    ASSERT_TRUE(shows(window, u"/approve x deny"_s));
    ASSERT_TRUE(shows(window, u"BRAM: 대기 중이 아니거나 이미 처리됨"_s));
    ASSERT_TRUE(click(window, u"거부 a"_s));
    ASSERT_TRUE(waitSettled(1));
    EXPECT_EQ(received.constLast().decision, ApprovalDecision::Deny);
    ASSERT_TRUE(shows(window, u"거부 요청 전송됨"_s));
    ASSERT_TRUE(shows(window, u"BRAM pending approvals: none"_s));
}

} // namespace
} // namespace bram
