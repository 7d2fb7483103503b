// SPDX-License-Identifier: Apache-2.0
#include "audit/AuditLogHealth.h"

namespace bram
{

void AuditLogHealth::report(const AuditLogCondition &condition)
{
    QMetaObject::invokeMethod(
        this,
        [this, condition] {
            if (m_condition != condition) {
                m_condition = condition;
                Q_EMIT changed();
            }
        },
        Qt::QueuedConnection);
}

} // namespace bram
