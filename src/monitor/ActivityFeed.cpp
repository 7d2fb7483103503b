// SPDX-License-Identifier: Apache-2.0
#include "monitor/ActivityFeed.h"

#include "model/UtcTime.h"
#include "system/RandomUuid.h"

#include <QStringBuilder>

namespace bram
{

namespace
{
/// A detail may quote a word of a command, which can have megabytes.
constexpr qsizetype maxDetailUnits = 500;
} // namespace

void ActivityFeed::record(ActivityActor actor, ActivityAction action, const QString &detail,
                          qint64 nowMs)
{
    const QString unique = randomUuid().first(6).toUpper();
    m_entries.prepend(
        {.id = QString::number(nowMs) % u'-' % unique,
         .actor = actor,
         .action = action,
         .detail = detail.size() > maxDetailUnits ? detail.first(maxDetailUnits) + u'…' : detail,
         .createdAt = utcTime(nowMs)});
    if (m_entries.size() > maxActivityItems) {
        m_entries.resize(maxActivityItems);
    }
}

} // namespace bram
