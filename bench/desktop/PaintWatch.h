// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QApplication>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QEvent>
#include <QEventLoop>
#include <QTimer>
#include <QWidget>

#include <cstdio>
#include <cstdlib>
#include <functional>

namespace bram::bench
{

constexpr int patienceMs = 20'000;

[[noreturn]] inline void fail(const char *what)
{
    std::printf("%s\n", what);
    std::exit(2);
}

/// Turns the event loop until `condition` holds, which is looked at after each signal of `poke`.
template<typename Condition>
void waitUntil(Condition condition)
{
    const QDeadlineTimer deadline(patienceMs);
    while (!condition()) {
        if (deadline.hasExpired()) {
            fail("what was waited for did not happen");
        }
        QTimer tick;
        tick.start(2);
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    }
}

/// Notices when a widget of a kind has painted itself, and when.
class PaintWatch final : public QObject
{
public:
    explicit PaintWatch(std::function<bool(const QWidget &)> isWanted)
        : m_isWanted(std::move(isWanted))
    {
        qApp->installEventFilter(this);
    }

    void restart()
    {
        m_painted = nullptr;
        m_timer.start();
    }
    bool hasPainted() const { return m_painted != nullptr; }
    QWidget *painted() const { return m_painted; }
    double elapsedMs() const { return m_elapsedMs; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && watched->isWidgetType() && m_painted == nullptr) {
            auto *window = static_cast<QWidget *>(watched)->window();
            if (m_isWanted(*window)) {
                m_painted = window;
                // The whole window has painted when this turn of the loop is over.
                QMetaObject::invokeMethod(
                    this,
                    [this] { m_elapsedMs = static_cast<double>(m_timer.nsecsElapsed()) / 1e6; },
                    Qt::QueuedConnection);
                m_elapsedMs = 0;
            }
        }
        return false;
    }

private:
    std::function<bool(const QWidget &)> m_isWanted;
    QElapsedTimer m_timer;
    QWidget *m_painted = nullptr;
    double m_elapsedMs = 0;
};

} // namespace bram::bench
