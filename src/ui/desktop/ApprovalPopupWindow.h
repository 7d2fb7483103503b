// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

namespace bram
{

/// The popup's window: of a fixed size, in front of the others, with a title and nothing to do but close
/// it. It never closes by itself: it says that somebody wants it to.
class ApprovalPopupWindow final : public QWidget
{
    Q_OBJECT

public:
    explicit ApprovalPopupWindow();

    /// The window takes it.
    void setContent(QWidget *content);
    /// Shows the window in the middle of the screen where the pointer is, or, if it is on the screen
    /// already, where it is; in front and with the keyboard.
    void showInFront(QSize contentSize);

    /// Whether the pointer is on the title or the border that the window manager has put around it.
    bool isPointerOnFrame() const;

Q_SIGNALS:
    void closeRequested();
    void escapePressed();

protected:
    void closeEvent(QCloseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
};

} // namespace bram
