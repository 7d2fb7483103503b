// SPDX-License-Identifier: Apache-2.0
#include "system/NextTurn.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QPointer>

#include <deque>
#include <utility>

namespace bram
{

namespace
{
/// Work that waits, and what it puts off in its turn, goes on as long as all of it together is quicker than
/// this: to ask the kernel for events in between would cost more than the work. After that the events come
/// first.
constexpr qint64 quickNs = 1'000'000;

/// Runs what waits between two turns of the loop. The loop tells of both ends of that time: of its beginning
/// always (`awake`), of its end when it is going to sleep (`aboutToBlock`), and before it sleeps nothing may
/// wait any more. Neither takes a posted event, which would wake up a loop that is awake by a system call.
class TurnQueue final : public QObject
{
public:
    explicit TurnQueue(QObject *parent)
        : QObject(parent)
    {
        const auto *dispatcher = QCoreApplication::eventDispatcher();
        connect(dispatcher, &QAbstractEventDispatcher::awake, this, &TurnQueue::betweenTurns);
        connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, this,
                &TurnQueue::betweenTurns);
    }

    void add(QObject *context, std::function<void()> work)
    {
        m_waiting.push_back({context, std::move(work)});
    }

private:
    struct Work {
        QPointer<QObject> context;
        std::function<void()> run;
    };

    void betweenTurns()
    {
        if (!m_eventsFirst) {
            run();
        }
    }

    void run()
    {
        QElapsedTimer timer;
        timer.start();
        while (!m_waiting.empty()) {
            if (timer.nsecsElapsed() >= quickNs) {
                m_eventsFirst = true;
                QMetaObject::invokeMethod(this, &TurnQueue::goOn, Qt::QueuedConnection);
                return;
            }
            const Work work = std::move(m_waiting.front());
            m_waiting.pop_front(); // before it runs: it may turn a loop of its own
            if (work.context) {
                work.run();
            }
        }
    }

    void goOn()
    {
        m_eventsFirst = false;
        run();
    }

    std::deque<Work> m_waiting;
    bool m_eventsFirst = false; ///< `goOn` is on its way, behind the events that have come
};
} // namespace

void inNextTurn(QObject *context, std::function<void()> work)
{
    // One for the program; goes with the application object, and comes back with the next one in tests.
    static QPointer<TurnQueue> queue;
    if (!queue) {
        if (QCoreApplication::eventDispatcher() == nullptr) {
            return; // before or after the program's own time: nothing turns any more
        }
        queue = new TurnQueue(QCoreApplication::instance());
    }
    queue->add(context, std::move(work));
}

} // namespace bram
