// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QCoreApplication>
#include <QCoro/QCoroTask>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

#include <optional>
#include <utility>

namespace bram::test
{

/// Turns the event loop until `condition` holds; false when that did not happen in time. Tests wait
/// for the thing itself, never for a length of time.
template<typename Condition>
[[nodiscard]] bool waitUntil(Condition condition, int timeoutMs = 10'000)
{
    const QDeadlineTimer deadline(timeoutMs);
    while (!condition()) {
        if (deadline.hasExpired()) {
            return false;
        }
        // Wakes now and then by itself, for conditions that no event of this process announces.
        QTimer tick;
        tick.start(5);
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    }
    return true;
}

namespace detail
{
template<typename T>
QCoro::Task<> collect(QCoro::Task<T> task, std::optional<T> *result)
{
    result->emplace(co_await task);
}
inline QCoro::Task<> collectVoid(QCoro::Task<> task, bool *done)
{
    co_await task;
    *done = true;
}
} // namespace detail

/// Runs the event loop until the task has ended, and gives its result. Fails the program when it never
/// ends: a test could not go on.
template<typename T>
T waitFor(QCoro::Task<T> task)
{
    auto result = std::make_unique<std::optional<T>>();
    const auto collector = detail::collect(std::move(task), result.get());
    if (!waitUntil([&] { return result->has_value(); })) {
        qFatal("a task did not end in time");
    }
    return std::move(**result);
}

inline void waitFor(QCoro::Task<> task)
{
    bool done = false;
    const auto collector = detail::collectVoid(std::move(task), &done);
    if (!waitUntil([&] { return done; })) {
        qFatal("a task did not end in time");
    }
}

} // namespace bram::test
