// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "system/Reply.h"

#include <QCoro/QCoroTask>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

namespace bram
{

class SystemLog;

/// The coroutines that run without anybody awaiting them. A dropped task would swallow its exception
/// and nobody would know at the end whether work is still open; here a failure becomes a log line and
/// the open tasks are known by name. Main thread only; outlives nothing: tasks keep what they need.
class BackgroundTasks
{
public:
    explicit BackgroundTasks(SystemLog &log);
    ~BackgroundTasks();
    Q_DISABLE_COPY_MOVE(BackgroundTasks)

    /// Takes over a task that has been started. An exception that leaves it is logged as
    /// "[Brackwen] task NAME failed: " and the exception's text.
    void spawn(QCoro::Task<> task, const QString &name);

    /// Names of the tasks that have not ended, in the order of their start.
    QStringList running() const;

    /// Calls `callback` once, in a later turn of the event loop, as soon as no task is running.
    void whenIdle(std::function<void()> callback);

private:
    struct Registry;
    static QCoro::Task<> supervise(QCoro::Task<> task, quint64 serial,
                                   std::shared_ptr<Registry> registry);

    std::shared_ptr<Registry> m_registry;
};

} // namespace bram
