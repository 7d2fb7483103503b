// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ActivityEntry.h"

#include <QList>

namespace bram
{

/// What the operator and the platform did lately: newest first, at most 80 rows.
class ActivityFeed
{
public:
    static constexpr qsizetype maxActivityItems = 80;

    const QList<ActivityEntry> &entries() const { return m_entries; }

    void record(ActivityActor actor, ActivityAction action, const QString &detail, qint64 nowMs);

private:
    QList<ActivityEntry> m_entries;
};

} // namespace bram
