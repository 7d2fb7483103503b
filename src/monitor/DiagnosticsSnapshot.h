// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "monitor/SurfaceFacts.h"

#include <QJsonObject>

namespace bram
{

class ApprovalMonitor;
struct TelegramStatus;

/// What a helper needs to know of the program as it is now: versions, the machine, what the desktop offers,
/// states, counters and settings. No commands; and every text goes through the masking of secrets.
QJsonObject diagnosticsSnapshot(const ApprovalMonitor &monitor, const SurfaceFacts &surface,
                                const QJsonObject &settings, qint64 nowMs);

/// How Telegram is set up: numbers and states, no chat and no token.
QJsonObject telegramForDiagnostics(const TelegramStatus &status);

/// Scheme, host and port of an address that may carry credentials elsewhere; "invalid" when it is no address.
QString addressWithoutSecrets(const QString &url);

} // namespace bram
