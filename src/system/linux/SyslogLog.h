// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "system/SystemLog.h"

#include <QElapsedTimer>
#include <QFlags>

#include <mutex>

namespace bram
{

/// Writes each line to syslog(3), to standard error, or to both.
class SyslogLog final : public SystemLog
{
public:
    enum Target {
        Syslog = 1,
        StandardError = 2,
    };
    Q_DECLARE_FLAGS(Targets, Target)

    explicit SyslogLog(Targets targets);
    ~SyslogLog() override;
    Q_DISABLE_COPY_MOVE(SyslogLog)

    void write(QStringView line) override;

private:
    bool hasListener();

    const Targets m_targets;
    std::mutex m_mutex;
    QElapsedTimer m_missing; ///< since syslog's socket was last found missing; else invalid
};

Q_DECLARE_OPERATORS_FOR_FLAGS(SyslogLog::Targets)

} // namespace bram
