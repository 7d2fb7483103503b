// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalItem.h"

#include <QList>
#include <QString>

namespace bram
{

enum class SecretsInExport {
    Shown, ///< the operator takes their own data out
    Masked,
};

/// The displayed requests as plain text, to be pasted or saved: a head of three lines, then some lines for
/// each request, numbered from 1, with a blank line before each. What
/// could mislead, or a terminal would act on, stands with marks, and a line at the end says so.
QString pendingApprovalExportText(const QList<ApprovalItem> &displayItems, qint64 nowMs,
                                  SecretsInExport secrets);

} // namespace bram
