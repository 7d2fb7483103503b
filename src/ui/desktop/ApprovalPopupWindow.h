// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

namespace bram
{

/// The popup's window: of a size that only the program changes, in front of the others, with a title and nothing to do but close
/// it. It never closes by itself: it says that somebody wants it to.
class ApprovalPopupWindow final : public QWidget
{
    Q_OBJECT

public:
    explicit ApprovalPopupWindow();

    /// The window takes it.
    void setContent(QWidget *content);
    /// How much of the screen the content may take, where the window is or will be shown.
    QSize roomForContent() const;
    /// Shows the window on the screen where the pointer is, in the middle or as far to the left of it as keeps
    /// clear of the desktop's notifications, or, if it is on a screen already, where it is; in front and with
    /// the keyboard.
    void showInFront(QSize contentSize);
    /// A window that is shown moves only as far as it must to be seen whole.
    void setContentSize(QSize contentSize);

Q_SIGNALS:
    void closeRequested();
    void escapePressed();

protected:
    void closeEvent(QCloseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    QRect area() const;
};

} // namespace bram
