// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

namespace bram::bench
{

/// What the requests of a burst are, on both sides.
inline QString burstId(int number)
{
    return QStringLiteral("9b2f6c1e-4d7a-4c55-8f0e-%1").arg(number, 12, 16, QChar(u'0'));
}

inline QString burstCommand(int number)
{
    return QStringLiteral("git push --force-with-lease origin feature/%1").arg(number);
}

} // namespace bram::bench
