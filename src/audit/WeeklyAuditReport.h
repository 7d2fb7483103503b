// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "audit/WeeklyAuditAggregation.h"
#include "model/MenuLanguage.h"

#include <QString>

#include <optional>

namespace bram
{

/// The period of a report, back from now.
inline constexpr qint64 weeklyAuditWindowMs = 7LL * 24 * 60 * 60 * 1000;

/// How many events of high risk a report lists.
inline constexpr qsizetype weeklyAuditMaxRows = 100;

/// A report as Markdown, in UTF-8 text. Its wording is fixed in both languages, whatever language the program
/// itself speaks at the moment.
QString weeklyAuditReportMarkdown(const WeeklyAuditFindings &findings, qint64 generatedAtMs,
                                  MenuLanguage language);

/// The report over what these files hold of the period before `nowMs`; nothing when cancelled. For a thread other
/// than the main one.
std::optional<QString> weeklyAuditReport(const std::vector<AuditLogFile> &files, qint64 nowMs,
                                         MenuLanguage language, AggregationProgress &progress,
                                         SystemLog &log);

/// "2026-01-31 23:59:59", local time.
QString auditTimestampText(qint64 ms);

/// What may stand in a cell of a table: one line of at most 96 characters, and "-" for nothing. Vertical bars
/// get a backslash before them.
QString markdownTableCell(const std::optional<QString> &text);

/// The kind of an event in words; the kind itself where there are none.
QString auditKindText(const QString &kind, MenuLanguage language);

} // namespace bram
