// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ui/desktop/ArmingGuard.h"

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QWindow>

class QKeyEvent;
class QWidget;

namespace bram
{

/// Applies the arming rule to a top-level window: sees what is delivered to it before its widgets do, and
/// when it is shown, covered, uncovered, activated and left. Main thread.
class ArmingWatch final : public QObject
{
    Q_OBJECT

public:
    /// Watches a window that is not created yet. `window` outlives the watch.
    explicit ArmingWatch(QWidget &window);

    /// What is asked has changed. It can be answered only once it is ready to be read.
    void restart();
    void setReady(bool ready);

    bool isArmed() const { return m_armed; }
    /// Whether it will be armed by itself.
    bool isArming() const { return m_timer.isActive(); }
    /// Whether a key would answer on the button that has the focus, once armed: not soon after the focus has
    /// come there.
    bool keysAnswer() const { return !m_focusTimer.isActive(); }
    /// Whether a mouse button is held down that went down in the window.
    bool isPressed() const { return m_guard.isPressed(); }

Q_SIGNALS:
    /// Armed or no longer, or the 0.7 s begin anew.
    void stateChanged();
    void keysAnswerChanged();
    /// The mouse button is up, and the window's widgets have seen it.
    void released();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void watchNativeWindow();
    void lookAtSight();
    /// False when the widgets are not to see it.
    bool onWindowEvent(QEvent *event);
    /// False when the widgets are not to see it.
    bool onKey(const QKeyEvent &event);
    void endPress();
    void restKeys();
    template<typename Fact>
    void tell(Fact fact);
    void update(qint64 nowMs);

    QWidget &m_window;
    QPointer<QWindow> m_native; ///< the one that is watched
    ArmingGuard m_guard;
    QElapsedTimer m_elapsed;
    QTimer m_timer;
    QTimer m_focusTimer; ///< runs while the focus is new where it is
    bool m_ready = false;
    bool m_armed = false;
    qint64 m_armedAtMs = -1; ///< the time for which the timer runs
};

} // namespace bram
