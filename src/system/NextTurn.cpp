// SPDX-License-Identifier: Apache-2.0
#include "system/NextTurn.h"

#include <QCoreApplication>
#include <QPointer>

#include <utility>
#include <vector>

namespace bram
{

namespace
{
class TurnQueue final : public QObject
{
public:
    using QObject::QObject;

    void add(QObject *context, std::function<void()> work)
    {
        if (m_waiting.empty()) {
            QMetaObject::invokeMethod(
                this, [this] { run(); }, Qt::QueuedConnection);
        }
        m_waiting.push_back({context, std::move(work)});
    }

private:
    struct Work {
        QPointer<QObject> context;
        std::function<void()> run;
    };

    void run()
    {
        // What is added meanwhile belongs to the turn after this one.
        for (const auto &work : std::exchange(m_waiting, {})) {
            if (work.context) {
                work.run();
            }
        }
    }

    std::vector<Work> m_waiting;
};
} // namespace

void inNextTurn(QObject *context, std::function<void()> work)
{
    // One for the program; goes with the application object, and comes back with the next one in tests.
    static QPointer<TurnQueue> queue;
    if (!queue) {
        queue = new TurnQueue(QCoreApplication::instance());
    }
    queue->add(context, std::move(work));
}

} // namespace bram
