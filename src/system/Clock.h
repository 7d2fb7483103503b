// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtGlobal>

namespace bram
{

/// Wall-clock time. Implemented by `SystemClock` and, in tests, by a clock that is set by hand.
/// Called from the main thread.
class Clock
{
public:
    virtual ~Clock() = default;

    /// Milliseconds since the Unix epoch, truncated.
    virtual qint64 nowMs() const = 0;
};

/// The machine's clock.
class SystemClock final : public Clock
{
public:
    qint64 nowMs() const override;
};

} // namespace bram
