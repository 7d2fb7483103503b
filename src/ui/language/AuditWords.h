// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "audit/AuditLogHealth.h"
#include "model/IndicatorState.h"

#include <QList>
#include <QString>

namespace bram
{

/// Something that must be known of the audit log.
struct AuditNotice {
    QString text;
    IndicatorState indicator = IndicatorState::Red;

    bool operator==(const AuditNotice &) const = default;
};

/// Fit to be shown in one line each. Empty while all is well.
QList<AuditNotice> auditNotices(const AuditLogCondition &condition);

} // namespace bram
