// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "system/NextTurn.h"

#include <QCoreApplication>

#include <coroutine>
#include <memory>
#include <optional>
#include <utility>

namespace bram
{

/// One answer that a coroutine waits for, and the only thing in this program that one may await
/// besides a task: never a bare signal, which may fire twice or never.
///
/// The asking side makes a `ReplySource`, hands it to whatever will answer (a signal handler, a timer,
/// a table of open requests) and awaits its `reply()` once. The first answer wins, later ones are
/// ignored. A source that goes away unanswered answers with the value it was given for that, so that no
/// coroutine stays suspended for ever. The waiting coroutine goes on in a later turn of the event
/// loop, never inside the call that answered. Main thread only.
template<typename T>
class Reply
{
public:
    bool await_ready() const noexcept { return m_state->answer.has_value(); }
    void await_suspend(std::coroutine_handle<> waiter) noexcept { m_state->waiter = waiter; }
    T await_resume() { return std::move(*m_state->answer); }

private:
    template<typename>
    friend class ReplySource;

    struct State {
        std::optional<T> answer;
        std::coroutine_handle<> waiter;

        void settle(T value)
        {
            if (answer) {
                return;
            }
            answer.emplace(std::move(value));
            if (const auto handle = std::exchange(waiter, {})) {
                inNextTurn(QCoreApplication::instance(), [handle] { handle.resume(); });
            }
        }
    };

    explicit Reply(std::shared_ptr<State> state)
        : m_state(std::move(state))
    {
    }

    std::shared_ptr<State> m_state;
};

/// The answering end of a `Reply`. Copies answer the same reply.
template<typename T>
class ReplySource
{
public:
    /// `abandoned` is the answer if every copy of this source goes away without one.
    explicit ReplySource(T abandoned)
        : m_end(std::make_shared<End>(std::move(abandoned)))
    {
    }

    Reply<T> reply() const { return Reply<T>(m_end->state); }
    void answer(T value) const { m_end->state->settle(std::move(value)); }
    bool isAnswered() const { return m_end->state->answer.has_value(); }

private:
    struct End {
        explicit End(T value)
            : abandoned(std::move(value))
        {
        }
        ~End() { state->settle(std::move(abandoned)); }
        Q_DISABLE_COPY_MOVE(End)

        T abandoned;
        std::shared_ptr<typename Reply<T>::State> state
            = std::make_shared<typename Reply<T>::State>();
    };

    std::shared_ptr<End> m_end;
};

} // namespace bram
