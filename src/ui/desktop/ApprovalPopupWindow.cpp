// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/ApprovalPopupWindow.h"

#include <QCloseEvent>
#include <QCursor>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QScreen>
#include <QVBoxLayout>
#include <QWindow>

namespace bram
{

using namespace Qt::StringLiterals;

ApprovalPopupWindow::ApprovalPopupWindow()
    : QWidget(nullptr,
              Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint
                  | Qt::WindowStaysOnTopHint)
{
    setWindowTitle(u"승인 요청"_s);
    setAttribute(Qt::WA_QuitOnClose, false);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins({});
}

void ApprovalPopupWindow::setContent(QWidget *content)
{
    layout()->addWidget(content);
}

void ApprovalPopupWindow::showInFront(QSize contentSize)
{
    setFixedSize(contentSize);
    if (!isVisible()) {
        // A window that is hidden and soon shown again is never told that it has the keyboard; and its old
        // place and desktop are no good any more.
        if (windowHandle() != nullptr) {
            windowHandle()->destroy();
        }
        const QScreen *screen = QGuiApplication::screenAt(QCursor::pos());
        if (screen == nullptr) {
            screen = QGuiApplication::primaryScreen();
        }
        if (screen != nullptr) {
            move(screen->availableGeometry().center() - rect().center());
        }
        show();
    }
    raise();
    activateWindow();
}

bool ApprovalPopupWindow::isPointerOnFrame() const
{
    const QPoint at = QCursor::pos();
    return frameGeometry().contains(at) && !geometry().contains(at);
}

void ApprovalPopupWindow::closeEvent(QCloseEvent *event)
{
    event->ignore();
    Q_EMIT closeRequested();
}

void ApprovalPopupWindow::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape && !event->isAutoRepeat()) {
        Q_EMIT escapePressed();
        return;
    }
    QWidget::keyPressEvent(event);
}

} // namespace bram
