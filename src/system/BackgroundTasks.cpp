// SPDX-License-Identifier: Apache-2.0
#include "system/BackgroundTasks.h"

#include "system/NextTurn.h"
#include "system/SystemLog.h"

#include <QCoreApplication>
#include <QMap>

#include <exception>
#include <vector>

namespace bram
{

using namespace Qt::StringLiterals;

struct BackgroundTasks::Registry {
    SystemLog *log = nullptr; ///< null once the owner is gone
    QMap<quint64, QString> running; ///< names by serial number
    quint64 lastSerial = 0;
    std::vector<std::function<void()>> idleCallbacks;

    void ended(quint64 serial, const QString &failure)
    {
        const QString name = running.take(serial);
        if (log != nullptr && !failure.isEmpty()) {
            log->write(QString(u"[Brackwen] task "_s + name + u" failed: "_s + failure));
        }
        if (running.isEmpty()) {
            for (const auto &callback : std::exchange(idleCallbacks, {})) {
                callback();
            }
        }
    }
};

BackgroundTasks::BackgroundTasks(SystemLog &log)
    : m_registry(std::make_shared<Registry>())
{
    m_registry->log = &log;
}

BackgroundTasks::~BackgroundTasks()
{
    m_registry->log = nullptr;
    m_registry->idleCallbacks.clear();
}

void BackgroundTasks::spawn(QCoro::Task<> task, const QString &name)
{
    const quint64 serial = ++m_registry->lastSerial;
    m_registry->running.insert(serial, name);
    // The only task nobody awaits; it ends by itself and lets nothing escape.
    [[maybe_unused]] const auto supervised = supervise(std::move(task), serial, m_registry);
}

QStringList BackgroundTasks::running() const
{
    return m_registry->running.values();
}

void BackgroundTasks::whenIdle(std::function<void()> callback)
{
    if (m_registry->running.isEmpty()) {
        inNextTurn(QCoreApplication::instance(), std::move(callback));
        return;
    }
    m_registry->idleCallbacks.push_back(std::move(callback));
}

QCoro::Task<> BackgroundTasks::supervise(QCoro::Task<> task, quint64 serial,
                                         std::shared_ptr<Registry> registry)
{
    QString failure;
    try {
        co_await task;
    } catch (const std::exception &error) {
        failure = QString::fromUtf8(error.what());
    } catch (...) {
        failure = u"unknown exception"_s;
    }
    registry->ended(serial, failure);
}

} // namespace bram
