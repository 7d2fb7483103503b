// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "audit/AuditLogHealth.h"
#include "gateway/GatewayStatus.h"
#include "model/IndicatorState.h"
#include "model/MenuLanguage.h"
#include "monitor/TelegramStatus.h"

#include <QList>
#include <QString>

namespace bram
{

/// A status line with the colour of its dot.
struct StatusLine {
    QString text;
    IndicatorState indicator = IndicatorState::Gray;

    bool operator==(const StatusLine &) const = default;
};

/// The lines of menu and window: gateway, token, notifications, Telegram, and the lock on remote approvals and what
/// is wrong with the audit log, while that is so. `notifications` comes as it is; texts from outside are made honest here.
QList<StatusLine> statusLines(const GatewayStatus::Lines &gateway, const StatusLine &notifications,
                              const TelegramStatus &telegram, const AuditLogCondition &audit,
                              MenuLanguage language);

/// What the tray icon says when the pointer rests on it: the number of requests, the connection, and
/// what is wrong with the audit log.
/// `isPractice`: and that nothing is real.
QString trayToolTip(const GatewayStatus::Lines &gateway, const AuditLogCondition &audit,
                    qsizetype badgeCount, bool isPractice);

} // namespace bram
