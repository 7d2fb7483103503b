// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "audit/WeeklyAuditAggregation.h"
#include "model/Error.h"
#include "model/MenuLanguage.h"

#include <QByteArray>
#include <QString>

#include <expected>
#include <optional>

namespace bram
{

class AuditLogStore;
class SystemLog;

/// What a diagnostics bundle is made of, besides the audit log.
struct DiagnosticsBundle {
    QString parentFolder = {}; ///< made if it is missing
    qint64 nowMs = 0;
    MenuLanguage language = MenuLanguage::English;
    QByteArray snapshot = {}; ///< JSON, with no secret in it
    QString pendingText = {}; ///< the pending requests, with their secrets masked
    QString stateLog = {}; ///< path of the debug state log, which need not be there
};

/// Writes the folder "bram-diagnostics-…" for somebody who is to help: the snapshot, the weekly report
/// with its secrets masked, the pending requests, copies of the logs and a README that says what is what. All
/// for this user alone (folders 0700, files 0600). Returns its path.
///
/// Files that are missing are left out. A failure leaves what has been written; being cancelled removes it and
/// gives nothing. For a thread other than the main one.
std::optional<std::expected<QString, Error>> writeDiagnosticsBundle(const DiagnosticsBundle &bundle,
                                                                    AuditLogStore &store,
                                                                    AggregationProgress &progress,
                                                                    SystemLog &log);

} // namespace bram
