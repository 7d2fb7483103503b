// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

namespace bram
{

/// A reason that the gateway gave in its own words, fit for the log, the audit record and the status
/// lines: its first 4,096 characters, with the secrets that it may quote masked.
QString maskedReason(const QString &reason);

} // namespace bram
