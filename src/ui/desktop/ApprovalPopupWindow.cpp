// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/ApprovalPopupWindow.h"

#include <QCloseEvent>
#include <QCursor>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QScreen>
#include <QVBoxLayout>
#include <QWindow>

#include <algorithm>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr qreal mostOfScreen = 0.6;
/// Desktops show notifications in a corner, one below the other, most of them at the right. So wide a column
/// there is left to them, where the screen has room enough beside it.
constexpr int notificationColumn = 480;

int clearWidth(const QRect &area)
{
    return area.width() - notificationColumn;
}
} // namespace

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
    if (isVisible()) {
        setContentSize(contentSize);
    } else {
        setFixedSize(contentSize);
        // A window that is hidden and soon shown again is never told that it has the keyboard; and its old
        // place and desktop are no good any more.
        if (windowHandle() != nullptr) {
            windowHandle()->destroy();
        }
        const QRect area = this->area();
        const QPoint middle = area.center() - rect().center();
        const int mostLeft = std::max(area.left(), area.left() + clearWidth(area) - width());
        move(std::min(middle.x(), mostLeft), middle.y());
        show();
    }
    raise();
    activateWindow();
}

void ApprovalPopupWindow::setContentSize(QSize contentSize)
{
    if (contentSize == size()) {
        return;
    }
    const QRect area = this->area();
    const bool wasClear = geometry().right() <= area.left() + clearWidth(area);
    setFixedSize(contentSize);
    const QSize whole = frameGeometry().size();
    const QSize room(wasClear ? clearWidth(area) : area.width(), area.height());
    const auto kept = [](int at, int length, int first, int extent) {
        return std::max(first, std::min(at, first + extent - length));
    };
    const QPoint place(kept(x(), whole.width(), area.left(), room.width()),
                       kept(y(), whole.height(), area.top(), room.height()));
    if (isVisible() && place != pos()) {
        move(place);
    }
}

QSize ApprovalPopupWindow::roomForContent() const
{
    const QRect area = this->area();
    const QSize share = area.size() * mostOfScreen;
    return {std::min(share.width(), clearWidth(area)), share.height()};
}

/// The part of a screen that windows may take.
QRect ApprovalPopupWindow::area() const
{
    const QScreen *screen
        = isVisible() ? this->screen() : QGuiApplication::screenAt(QCursor::pos());
    if (screen == nullptr) {
        screen = QGuiApplication::primaryScreen();
    }
    return screen != nullptr ? screen->availableGeometry() : rect();
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
