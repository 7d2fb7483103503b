// SPDX-License-Identifier: Apache-2.0
#pragma once

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

/// The lines of menu and window: gateway, token, notifications, Telegram, and the lock on remote approvals while it
/// is set. `notifications` comes as it is; texts from outside are made honest here.
QList<StatusLine> statusLines(const GatewayStatus::Lines &gateway, const StatusLine &notifications,
                              const TelegramStatus &telegram, MenuLanguage language);

/// What the tray icon says when the pointer rests on it: the number of requests and the connection.
QString trayToolTip(const GatewayStatus::Lines &gateway, qsizetype badgeCount);

} // namespace bram
