// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QDateTime>

#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
#include <QTimeZone>
#endif

namespace bram
{

/// A moment, in milliseconds since the Unix epoch, as a date and time in UTC. Qt 6.5 has another name for UTC
/// and warns about the older one.
inline QDateTime utcTime(qint64 ms)
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
    return QDateTime::fromMSecsSinceEpoch(ms, QTimeZone::UTC);
#else
    return QDateTime::fromMSecsSinceEpoch(ms, Qt::UTC);
#endif
}

} // namespace bram
