// SPDX-License-Identifier: Apache-2.0
#include "system/Worker.h"

#include <utility>

namespace bram
{

namespace
{
constexpr int idleThreadMs = 1'000;
} // namespace

Worker::Worker()
{
    m_pool.setMaxThreadCount(1);
    m_pool.setExpiryTimeout(idleThreadMs);
}

Worker::~Worker()
{
    m_pool.clear();
    m_pool.waitForDone();
}

void Worker::start(std::function<void()> work, std::function<void()> finished)
{
    const quint64 serial = ++m_serial;
    m_finished.emplace(serial, std::move(finished));
    m_pool.start([this, serial, work = std::move(work)] {
        work();
        QMetaObject::invokeMethod(
            this,
            [this, serial] {
                const auto node = m_finished.extract(serial);
                node.mapped()();
            },
            Qt::QueuedConnection);
    });
}

} // namespace bram
