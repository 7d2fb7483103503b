// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "system/Clock.h"
#include "system/SystemLog.h"

#include <QString>
#include <QStringList>

#include <mutex>

namespace bram::test
{

/// Keeps the lines, for tests that look for one.
class RecordingLog final : public SystemLog
{
public:
    void write(QStringView line) override
    {
        const std::scoped_lock lock(m_mutex);
        m_lines.append(line.toString());
    }
    void clear()
    {
        const std::scoped_lock lock(m_mutex);
        m_lines.clear();
    }
    QStringList lines() const
    {
        const std::scoped_lock lock(m_mutex);
        return m_lines;
    }

private:
    mutable std::mutex m_mutex;
    QStringList m_lines;
};

/// Time that passes only when a test says so.
class ManualClock final : public Clock
{
public:
    qint64 nowMs() const override { return current; }
    qint64 current = 1'718'000'000'000;
};

} // namespace bram::test
