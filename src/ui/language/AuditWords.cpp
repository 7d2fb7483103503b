// SPDX-License-Identifier: Apache-2.0
#include "ui/language/AuditWords.h"

#include "model/HonestDisplay.h"

#include <QCoreApplication>

namespace bram
{

QList<AuditNotice> auditNotices(const AuditLogCondition &condition)
{
    const QString problem = honestLine(condition.problem).text;
    QList<AuditNotice> notices;
    if (!condition.isWritable) {
        notices.append(
            {QCoreApplication::translate("Words",
                                         "The audit log cannot be written; nothing is allowed "
                                         "automatically meanwhile. %1")
                 .arg(problem),
             IndicatorState::Red});
    } else if (condition.lostEvents > 0) {
        notices.append({QCoreApplication::translate("Words",
                                                    "The audit log is written again. Events "
                                                    "missing from it: %1. %2")
                            .arg(QString::number(condition.lostEvents), problem),
                        IndicatorState::Yellow});
    }
    if (condition.archivesDeletedEarly > 0) {
        notices.append({QCoreApplication::translate(
                            "Words",
                            "The audit log had no more room: records younger than 30 days were "
                            "deleted (files: %1).")
                            .arg(condition.archivesDeletedEarly),
                        IndicatorState::Yellow});
    }
    return notices;
}

} // namespace bram
