// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/ArmingWatch.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QWidget>
#include <QWindow>

namespace bram
{

namespace
{
bool isTyping(const QKeyEvent &event)
{
    switch (event.key()) {
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
    case Qt::Key_Space: // on a button that was given the focus these two are an answer
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Escape:
        return false;
    case Qt::Key_Backspace:
    case Qt::Key_Delete:
        return true;
    default:
        return !(event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))
            && !event.text().isEmpty();
    }
}
} // namespace

ArmingWatch::ArmingWatch(QWidget &window)
    : m_window(window)
{
    m_elapsed.start();
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer); // a coarse one may come before its time
    connect(&m_timer, &QTimer::timeout, this, [this] {
        m_armedAtMs = -1;
        update(m_elapsed.elapsed());
    });
    window.installEventFilter(this);
}

template<typename Fact>
void ArmingWatch::tell(Fact fact)
{
    const qint64 nowMs = m_elapsed.elapsed();
    fact(m_guard, nowMs);
    update(nowMs);
}

void ArmingWatch::restart()
{
    tell([](ArmingGuard &guard, qint64 nowMs) { guard.restart(nowMs); });
}

void ArmingWatch::setReady(bool ready)
{
    m_ready = ready;
    lookAtSight();
}

bool ArmingWatch::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_native) {
        onWindowEvent(event);
        return false;
    }
    switch (event->type()) {
    case QEvent::Show:
        watchNativeWindow();
        lookAtSight();
        restart();
        break;
    case QEvent::Hide:
        endPress();
        lookAtSight();
        break;
    case QEvent::WindowActivate:
    case QEvent::WindowDeactivate:
        lookAtSight();
        break;
    default:
        break;
    }
    return false;
}

void ArmingWatch::watchNativeWindow()
{
    if (m_native != m_window.windowHandle()) {
        m_native = m_window.windowHandle();
        m_native->installEventFilter(this);
    }
}

void ArmingWatch::lookAtSight()
{
    const bool inSight = m_ready && m_window.isVisible() && m_window.isActiveWindow()
        && m_native != nullptr && m_native->isExposed();
    tell([inSight](ArmingGuard &guard, qint64 nowMs) { guard.setInSight(inSight, nowMs); });
}

void ArmingWatch::onWindowEvent(QEvent *event)
{
    switch (event->type()) {
    case QEvent::Expose:
        // Also comes when a part has been uncovered, where the system tells.
        lookAtSight();
        restart();
        break;
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        tell([](ArmingGuard &guard, qint64 nowMs) { guard.pressBegan(nowMs); });
        break;
    case QEvent::MouseButtonRelease:
    case QEvent::MouseMove:
        // A release may be lost to another program that takes the pointer.
        if (isPressed() && static_cast<QMouseEvent *>(event)->buttons() == Qt::NoButton) {
            endPress();
        }
        break;
    case QEvent::KeyPress:
        onKey(*static_cast<QKeyEvent *>(event));
        break;
    default:
        break;
    }
}

void ArmingWatch::onKey(const QKeyEvent &event)
{
    tell([typing = isTyping(event)](ArmingGuard &guard, qint64 nowMs) {
        typing ? guard.keyTyped(nowMs) : guard.keyPressed(nowMs);
    });
}

void ArmingWatch::endPress()
{
    if (!isPressed()) {
        return;
    }
    tell([](ArmingGuard &guard, qint64 nowMs) { guard.pressEnded(nowMs); });
    // After the widgets have seen the release.
    QMetaObject::invokeMethod(this, &ArmingWatch::released, Qt::QueuedConnection);
}

void ArmingWatch::update(qint64 nowMs)
{
    const auto left = m_guard.msUntilArmed(nowMs);
    const bool armed = left == 0;
    const qint64 armedAtMs = left && !armed ? nowMs + *left : -1;
    if (armed == m_armed && armedAtMs == m_armedAtMs) {
        return;
    }
    m_armed = armed;
    m_armedAtMs = armedAtMs;
    m_timer.stop();
    if (armedAtMs >= 0) {
        m_timer.start(int(*left));
    }
    Q_EMIT stateChanged();
}

} // namespace bram
