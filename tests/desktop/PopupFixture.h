// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/Doubles.h"
#include "support/Waiting.h"

#include "ui/desktop/ApprovalPopupPresenter.h"
#include "ui/desktop/ApprovalPopupView.h"
#include "ui/desktop/ApprovalPopupWindow.h"
#include "ui/desktop/CommandTextView.h"
#include "ui/desktop/DecisionButton.h"

#include <QApplication>
#include <QLabel>
#include <QProcess>
#include <QTest>
#include <QWindow>

#include <gmock/gmock.h>

namespace bram::test
{

using namespace Qt::StringLiterals;

/// The popup on a real screen, and what it calls back.
class PopupFixture : public testing::Test
{
protected:
    ManualClock clock;
    ApprovalPopupPresenter popup {clock};
    QStringList answers; ///< such as "a allow-once" or "a nothing", in order

    ApprovalItem item(const QString &id, const QString &command = u"ls -l"_s) const
    {
        return {id, command, u"main"_s, clock.nowMs(), 0};
    }

    ApprovalPopup::Completion record(const QString &id)
    {
        return [this, id](std::optional<ApprovalDecision> decision) {
            answers.append(id + u' ' + (decision ? rawText(*decision) : u"nothing"_s));
        };
    }

    void present(const QString &id, const QString &command = u"ls -l"_s)
    {
        popup.present(item(id, command), record(id));
    }

    void presentArmed(const QString &id, const QString &command = u"ls -l"_s)
    {
        present(id, command);
        ASSERT_TRUE(becomesArmed());
    }

    ApprovalPopupWindow &window() const
    {
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            if (auto *found = qobject_cast<ApprovalPopupWindow *>(widget)) {
                return *found;
            }
        }
        qFatal("there is no popup window");
    }
    ApprovalPopupView &view() const { return *window().findChild<ApprovalPopupView *>(); }
    QString shownId() const { return window().isVisible() ? view().item().approvalId : QString(); }

    DecisionButton &button(ApprovalDecision decision) const
    {
        return *window().findChildren<DecisionButton *>().at(int(decision));
    }
    bool isArmed() const { return button(ApprovalDecision::Deny).isEnabled(); }
    [[nodiscard]] bool becomesArmed() const
    {
        return waitUntil([this] { return isArmed(); });
    }
    [[nodiscard]] bool isActive() const
    {
        return waitUntil([this] { return window().isActiveWindow(); });
    }
    /// All that can be read in the window beside the command.
    QString words() const
    {
        QStringList texts;
        for (const auto *label : window().findChildren<QLabel *>()) {
            if (label->isVisible()) {
                texts.append(label->text());
            }
        }
        return texts.join(u'|');
    }

    QPoint centreOf(const QWidget &widget) const
    {
        return widget.mapTo(&window(), widget.rect().center());
    }
    void press(const QWidget &widget)
    {
        QTest::mousePress(window().windowHandle(), Qt::LeftButton, {}, centreOf(widget));
    }
    void release(const QWidget &widget)
    {
        QTest::mouseRelease(window().windowHandle(), Qt::LeftButton, {}, centreOf(widget));
    }
    void click(const QWidget &widget)
    {
        press(widget);
        release(widget);
    }
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(window().windowHandle(), key, modifiers);
    }

    /// Real input, through the X server.
    [[nodiscard]] bool xdotool(const QStringList &arguments)
    {
        QProcess process;
        process.start(u"xdotool"_s, arguments);
        return waitUntil([&] { return process.state() == QProcess::NotRunning; })
            && process.exitCode() == 0;
    }
    /// Longer than it takes to be armed.
    [[nodiscard]] bool handsRest() { return xdotool({u"sleep"_s, u"0.9"_s}); }
    QStringList moveTo(const QWidget &widget) const
    {
        const QPoint at = widget.mapToGlobal(widget.rect().center()) * window().devicePixelRatioF();
        return {u"mousemove"_s, QString::number(at.x()), QString::number(at.y())};
    }
};

} // namespace bram::test
