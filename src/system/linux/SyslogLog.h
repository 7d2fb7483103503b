// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "system/SystemLog.h"

#include <mutex>

namespace bram
{

/// Writes each line to syslog(3) and to standard error.
class SyslogLog final : public SystemLog
{
public:
    enum class StandardError {
        Write,
        Skip, ///< for a terminal that the program draws on itself
    };

    SyslogLog();
    ~SyslogLog() override;
    Q_DISABLE_COPY_MOVE(SyslogLog)

    void write(QStringView line) override;
    void setStandardError(StandardError use);

private:
    std::mutex m_mutex;
    StandardError m_standardError = StandardError::Write;
};

} // namespace bram
