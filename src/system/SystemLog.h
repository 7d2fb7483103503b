// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QStringView>

namespace bram
{

/// Where log lines go. Implemented for Linux by `SyslogLog`; tests record the lines. There are no
/// levels. Safe to call from any thread: the audit store writes from its own.
class SystemLog
{
public:
    virtual ~SystemLog() = default;

    /// Writes one line, exactly as given but for line breaks and control characters, which outside
    /// input may have brought in and which are replaced so that one call is one line. Never fails
    /// visibly: there is nowhere left to report to.
    virtual void write(QStringView line) = 0;
};

} // namespace bram
