// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/ArmingWatch.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWidget>
#include <QWindow>

namespace bram
{

namespace
{
/// On a button that was given the focus.
bool isAnswer(const QKeyEvent &event)
{
    return event.key() == Qt::Key_Space || event.key() == Qt::Key_Return
        || event.key() == Qt::Key_Enter;
}

bool isTyping(const QKeyEvent &event)
{
    switch (event.key()) {
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
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
    m_focusTimer.setSingleShot(true);
    m_focusTimer.setTimerType(Qt::PreciseTimer);
    m_focusTimer.setInterval(int(ArmingGuard::stillnessMs));
    connect(&m_focusTimer, &QTimer::timeout, this, &ArmingWatch::keysAnswerChanged);
    window.installEventFilter(this);
    connect(qApp, &QApplication::focusChanged, this, [this](const QWidget *, const QWidget *now) {
        if (now != nullptr && now->window() == &m_window) {
            m_guard.focusMoved(m_elapsed.elapsed());
            restKeys();
        }
    });
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
        return !onWindowEvent(event);
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

bool ArmingWatch::onWindowEvent(QEvent *event)
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
        return onKey(*static_cast<QKeyEvent *>(event));
    default:
        break;
    }
    return true;
}

bool ArmingWatch::onKey(const QKeyEvent &event)
{
    bool passes = true;
    tell([&](ArmingGuard &guard, qint64 nowMs) {
        if (isAnswer(event)) {
            passes = guard.answerKeyPressed(nowMs);
        } else {
            isTyping(event) ? guard.keyTyped(nowMs) : guard.keyPressed(nowMs);
        }
    });
    if (!passes) {
        restKeys();
    }
    return passes;
}

void ArmingWatch::restKeys()
{
    m_focusTimer.start();
    Q_EMIT keysAnswerChanged();
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
