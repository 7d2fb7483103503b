// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "system/Reply.h"

#include <QObject>
#include <QThreadPool>

#include <functional>
#include <map>
#include <memory>
#include <optional>

namespace bram
{

/// Does what takes long (a whole log, files on a slow disk) away from the main thread, one piece of work after
/// the other, and answers on the main thread. There is a thread only while there is work.
///
/// Going away waits for the work that has begun, which is told to end by its owner, and forgets the rest; replies
/// still open answer with the value they were given for that.
class Worker final : public QObject
{
    Q_OBJECT

public:
    Worker();
    ~Worker() override;

    /// `work` runs on the other thread and owns what it needs, or refers to what outlives this object.
    template<typename T>
    Reply<T> run(T abandoned, std::function<T()> work)
    {
        const ReplySource<T> source(std::move(abandoned));
        const auto result = std::make_shared<std::optional<T>>();
        start([result, work = std::move(work)] { result->emplace(work()); },
              [result, source] { source.answer(std::move(**result)); });
        return source.reply();
    }

private:
    void start(std::function<void()> work, std::function<void()> finished);

    quint64 m_serial = 0;
    std::map<quint64, std::function<void()>> m_finished; ///< what to do here when the work is done
    QThreadPool m_pool;
};

} // namespace bram
