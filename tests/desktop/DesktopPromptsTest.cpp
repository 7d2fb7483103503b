// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/DesktopPrompts.h"
#include "support/Waiting.h"
#include "system/FileOpener.h"
#include "system/Preferences.h"

#include <QApplication>
#include <QCheckBox>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

namespace bram
{
namespace
{

using namespace Qt::StringLiterals;
using test::waitUntil;

template<typename T>
QCoro::Task<> keep(QCoro::Task<T> task, std::optional<T> *answer)
{
    answer->emplace(co_await task);
}

/// A desktop that has no program for a file.
class NoProgram final : public FileOpener
{
public:
    Reply<FileOpened> open(const QString &) override
    {
        const ReplySource<FileOpened> source(std::unexpected(Error {u"no program"_s}));
        return source.reply();
    }
};

class DesktopPromptsTest : public testing::Test
{
protected:
    /// The dialog that is on the screen.
    template<typename Dialog>
    static Dialog *shown()
    {
        Dialog *found = nullptr;
        EXPECT_TRUE(waitUntil([&] {
            for (QWidget *window : QApplication::topLevelWidgets()) {
                if (window->isVisible() && qobject_cast<Dialog *>(window) != nullptr) {
                    found = qobject_cast<Dialog *>(window);
                }
            }
            return found != nullptr;
        }));
        return found;
    }

    /// Any but the harmless one comes alive a moment later.
    static void press(const QMessageBox &box, const QString &text)
    {
        for (QAbstractButton *button : box.buttons()) {
            if (button->text() == text) {
                ASSERT_TRUE(waitUntil([&] { return button->isEnabled(); }));
                button->click();
                return;
            }
        }
        FAIL() << qPrintable(text);
    }

    static Question question()
    {
        return {.title = u"Clear?"_s,
                .text = u"<b>no markup</b>"_s,
                .buttons = {u"Both"_s, u"App only"_s, u"Cancel"_s},
                .harmless = 2};
    }

    QTemporaryDir folder;
    Preferences preferences {folder.filePath(u"preferences.ini"_s)};
    NoProgram opener;
    DesktopPrompts prompts {preferences, opener};
};

TEST_F(DesktopPromptsTest, everyButtonIsItsAnswerAndTurningAwayIsTheHarmlessOne)
{
    for (qsizetype wanted = 0; wanted < 3; ++wanted) {
        std::optional<qsizetype> answer;
        const auto task = keep(prompts.ask(question()), &answer);
        auto *box = shown<QMessageBox>();
        ASSERT_EQ(box->informativeText(), u"<b>no markup</b>"_s);
        ASSERT_EQ(box->textFormat(), Qt::PlainText);
        for (const QLabel *label : box->findChildren<QLabel *>()) {
            ASSERT_EQ(label->textFormat(), Qt::PlainText) << qPrintable(label->objectName());
        }
        EXPECT_FALSE(box->isModal()) << "requests must stay decidable";
        press(*box, question().buttons.at(wanted));
        ASSERT_TRUE(waitUntil([&] { return answer.has_value(); }));
        EXPECT_EQ(*answer, wanted);
    }
    std::optional<qsizetype> answer;
    const auto task = keep(prompts.ask(question()), &answer);
    shown<QMessageBox>()->close();
    ASSERT_TRUE(waitUntil([&] { return answer.has_value(); }));
    EXPECT_EQ(*answer, 2);
}

TEST_F(DesktopPromptsTest, anAnswerThatNeedsATickTakesThePlaceOfTheOthers)
{
    auto asked = question();
    asked.tick = u"Both"_s;
    asked.needsTick = 0;
    std::optional<qsizetype> answer;
    const auto task = keep(prompts.ask(asked), &answer);
    const auto *box = shown<QMessageBox>();
    const auto isEnabled = [box](int button) { return box->buttons().at(button)->isEnabled(); };
    ASSERT_TRUE(waitUntil([&] { return isEnabled(1); }));
    EXPECT_FALSE(isEnabled(0));
    box->checkBox()->click();
    EXPECT_TRUE(isEnabled(0) && !isEnabled(1) && isEnabled(2));
    box->checkBox()->click();
    EXPECT_FALSE(isEnabled(0));
    box->checkBox()->click();
    press(*box, u"Both"_s);
    ASSERT_TRUE(waitUntil([&] { return answer.has_value(); }));
    EXPECT_EQ(*answer, 0);
}

TEST_F(DesktopPromptsTest, turningAwayCanBeNoneOfTheAnswers)
{
    for (const bool byKey : {true, false}) {
        std::optional<qsizetype> answer;
        const auto task = keep(prompts.ask({.title = u"Copy or save?"_s,
                                            .text = {},
                                            .buttons = {u"Copy"_s, u"Save"_s},
                                            .harmless = Question::noButton}),
                               &answer);
        auto *box = shown<QMessageBox>();
        const auto buttons = box->buttons();
        EXPECT_EQ(std::ranges::count_if(buttons, &QWidget::isVisible), 2);
        if (byKey) {
            QTest::keyClick(box, Qt::Key_Escape);
        } else {
            box->close();
        }
        ASSERT_TRUE(waitUntil([&] { return answer.has_value(); }));
        EXPECT_EQ(*answer, Question::noButton);
    }
}

TEST_F(DesktopPromptsTest, oneComesAfterTheOtherAndTheEndAnswersAll)
{
    std::optional<qsizetype> first;
    std::optional<qsizetype> second;
    std::optional<std::optional<QString>> third;
    const auto taskOne = keep(prompts.ask(question()), &first);
    const auto taskTwo = keep(prompts.ask(question()), &second);
    const auto taskThree = keep(prompts.askForFile({}), &third);
    auto *box = shown<QMessageBox>();
    const auto boxes = std::ranges::count_if(QApplication::topLevelWidgets(), [](QWidget *window) {
        return window->isVisible() && qobject_cast<QMessageBox *>(window) != nullptr;
    });
    EXPECT_EQ(boxes, 1);
    press(*box, u"Both"_s);
    ASSERT_TRUE(waitUntil([&] { return first.has_value(); }));
    // The second click of a double click.
    for (QAbstractButton *button : shown<QMessageBox>()->buttons()) {
        if (button->text() != u"Cancel"_s) {
            QTest::mouseClick(button, Qt::LeftButton);
        }
    }
    EXPECT_FALSE(second.has_value());

    prompts.stop();
    ASSERT_TRUE(waitUntil([&] { return second.has_value() && third.has_value(); }));
    EXPECT_EQ(*second, 2);
    EXPECT_EQ(*third, std::nullopt);
    std::optional<qsizetype> late;
    const auto taskLate = keep(prompts.ask(question()), &late);
    EXPECT_TRUE(waitUntil([&] { return late.has_value(); }));
}

TEST_F(DesktopPromptsTest, eachOperationRemembersItsFolder)
{
    const QString chosen = folder.filePath(u"backup.txt"_s);
    QFile file(chosen);
    ASSERT_TRUE(file.open(QFile::WriteOnly));
    file.close();
    std::optional<std::optional<QString>> answer;
    const FileQuestion restore {.kind = FileQuestion::Kind::OpenFile,
                                .title = u"Restore"_s,
                                .suggestedName = {},
                                .acceptLabel = {},
                                .rememberedAs = u"restore"_s};
    const auto task = keep(prompts.askForFile(restore), &answer);
    auto *dialog = shown<QFileDialog>();
    EXPECT_NE(dialog->directory().path(), folder.path());
    dialog->setDirectory(folder.path());
    dialog->selectFile(chosen);
    QMetaObject::invokeMethod(dialog, "accept");
    ASSERT_TRUE(waitUntil([&] { return answer.has_value(); }));
    EXPECT_EQ(*answer, std::optional(chosen));

    std::optional<std::optional<QString>> again;
    const auto taskAgain = keep(prompts.askForFile(restore), &again);
    EXPECT_EQ(shown<QFileDialog>()->directory().path(), folder.path());
    shown<QFileDialog>()->close();
    ASSERT_TRUE(waitUntil([&] { return again.has_value(); }));
    EXPECT_EQ(*again, std::nullopt);
}

TEST_F(DesktopPromptsTest, aFileThatIsThereIsReplacedOnlyWhenAgreed)
{
    const QString taken = folder.filePath(u"taken.txt"_s);
    QFile file(taken);
    ASSERT_TRUE(file.open(QFile::WriteOnly));
    file.close();
    std::optional<std::optional<QString>> answer;
    const auto task = keep(prompts.askForFile({.kind = FileQuestion::Kind::SaveFile,
                                               .title = u"Save"_s,
                                               .suggestedName = u"taken.txt"_s,
                                               .acceptLabel = {},
                                               .rememberedAs = u"save"_s}),
                           &answer);
    const auto choose = [this](const QString &name) {
        auto *dialog = shown<QFileDialog>();
        dialog->setDirectory(folder.path());
        dialog->selectFile(name);
        QMetaObject::invokeMethod(dialog, "accept");
    };
    choose(u"taken.txt"_s);
    auto *question = shown<QMessageBox>();
    EXPECT_EQ(question->informativeText(), u"There is a file already: "_s + taken);
    EXPECT_FALSE(question->isModal());
    QTest::keyClick(question, Qt::Key_Escape);

    choose(u"taken"_s); // which means the same
    press(*shown<QMessageBox>(), u"Replace"_s);
    ASSERT_TRUE(waitUntil([&] { return answer.has_value(); }));
    EXPECT_EQ(*answer, std::optional(taken));
}

TEST_F(DesktopPromptsTest, endsWhileAFileDialogWarns)
{
    std::optional<std::optional<QString>> answer;
    const auto task = keep(prompts.askForFile({.kind = FileQuestion::Kind::OpenFile,
                                               .title = u"Restore"_s,
                                               .suggestedName = {},
                                               .acceptLabel = {},
                                               .rememberedAs = u"restore"_s}),
                           &answer);
    auto *dialog = shown<QFileDialog>();
    dialog->selectFile(u"not-there.txt"_s);
    bool hasWarned = false;
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, &watch, [&] {
        if (QApplication::activeModalWidget() != nullptr) {
            hasWarned = true;
            watch.stop();
            prompts.stop();
        }
    });
    watch.start(1);
    QMetaObject::invokeMethod(dialog, "accept");
    EXPECT_TRUE(hasWarned);
    ASSERT_TRUE(waitUntil([&] { return answer.has_value(); }));
    EXPECT_EQ(*answer, std::nullopt);
}

} // namespace
} // namespace bram
