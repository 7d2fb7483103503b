// SPDX-License-Identifier: Apache-2.0
#include "monitor/DiagnosticsSnapshot.h"

#include "audit/Redaction.h"
#include "gateway/GatewayStatus.h"
#include "model/UtcTime.h"
#include "monitor/ApprovalMonitor.h"
#include "monitor/TelegramStatus.h"

#include <QDateTime>
#include <QJsonArray>
#include <QSysInfo>
#include <QUrl>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
QString timeText(qint64 ms)
{
    return utcTime(ms).toString(Qt::ISODateWithMs);
}

/// An absent text, and one that says nothing, is null: a helper sees that it was looked for.
QJsonValue known(const QString &text)
{
    return text.isEmpty() ? QJsonValue(QJsonValue::Null) : QJsonValue(text);
}

QJsonObject machine()
{
    return {
        {u"distribution"_s, QSysInfo::prettyProductName()},
        {u"kernel"_s, QString(QSysInfo::kernelType() + u' ' + QSysInfo::kernelVersion())},
        {u"architecture"_s, QSysInfo::currentCpuArchitecture()},
    };
}

QJsonObject surfaceObject(const SurfaceFacts &surface)
{
    return {
        {u"kind"_s, known(surface.surface)},
        {u"displayServer"_s, known(surface.displayServer)},
        {u"desktopEnvironment"_s, known(surface.desktopEnvironment)},
        {u"trayHost"_s, known(surface.trayHost)},
        {u"notificationService"_s, known(surface.notificationService)},
        {u"screens"_s, QJsonArray::fromStringList(surface.screens)},
    };
}

QJsonObject connectionObject(const GatewayStatus::Lines &lines)
{
    return {
        {u"status"_s, lines.connectionStatus},
        {u"indicator"_s, rawText(lines.connectionIndicator)},
        {u"tokenIndicator"_s, rawText(tokenIndicator(lines.tokenState))},
        {u"tokenStatus"_s, tokenStatusText(lines.tokenState)},
        {u"remoteApprovalLocked"_s, lines.remoteApprovalLocked},
        {u"remoteApprovalLockReason"_s, known(lines.remoteApprovalLockReason.value_or(QString()))},
    };
}

QJsonObject queueObject(const ApprovalBoard &board)
{
    return {
        {u"displayed"_s, board.menuBadgeCount()},
        {u"pending"_s, board.items().size()},
        {u"popupOpen"_s, board.activePopupItem().has_value()},
        {u"historyRows"_s, board.history().size()},
        {u"activityRows"_s, board.activity().size()},
    };
}

QJsonObject counters(const ApprovalMetrics &metrics)
{
    return {
        {u"requested"_s, metrics.requestedCount},
        {u"resolved"_s, metrics.resolvedCount},
        {u"externalResolved"_s, metrics.externalResolvedCount},
        {u"unknownApproval"_s, metrics.unknownApprovalCount},
        {u"allowOnce"_s, metrics.allowOnceCount},
        {u"allowAlways"_s, metrics.allowAlwaysCount},
        {u"deny"_s, metrics.denyCount},
        {u"averageLatencyMs"_s, metrics.averageLatencyMs()},
        {u"latencySamples"_s, metrics.latencySamples},
    };
}

QString modeText(TelegramMode mode)
{
    switch (mode) {
    case TelegramMode::Polling:
        return u"polling"_s;
    case TelegramMode::PublishOnlyCommandPolling:
        return u"publish-only command polling"_s;
    case TelegramMode::PublishOnlySafe:
        return u"publish-only safe mode"_s;
    }
    Q_UNREACHABLE();
}

QJsonValue masked(const QJsonValue &value)
{
    if (value.isString()) {
        return redacted(value.toString());
    }
    if (value.isArray()) {
        QJsonArray result;
        for (const auto &element : value.toArray()) {
            result.append(masked(element));
        }
        return result;
    }
    if (value.isObject()) {
        QJsonObject result = value.toObject();
        for (auto field = result.begin(); field != result.end(); ++field) {
            *field = masked(QJsonValue(*field));
        }
        return result;
    }
    return value;
}
} // namespace

QJsonObject diagnosticsSnapshot(const ApprovalMonitor &monitor, const SurfaceFacts &surface,
                                const QJsonObject &settings, qint64 nowMs)
{
    const QJsonObject snapshot {
        {u"generatedAt"_s, timeText(nowMs)},
        {u"version"_s, u"" BRAM_VERSION ""_s},
        {u"qt"_s, QString::fromLatin1(qVersion())},
        {u"machine"_s, machine()},
        {u"surface"_s, surfaceObject(surface)},
        {u"gateway"_s, connectionObject(monitor.gatewayStatus().lines())},
        {u"approvals"_s, queueObject(monitor.board())},
        {u"counters"_s, counters(monitor.metrics())},
        {u"settings"_s, settings},
    };
    return masked(snapshot).toObject();
}

QJsonObject telegramForDiagnostics(const TelegramStatus &status)
{
    return {
        {u"mode"_s, status.mode ? modeText(*status.mode) : u"disabled"_s},
        {u"tokenSource"_s, rawText(status.tokenSource)},
        {u"chats"_s, status.chatIds.size()},
        {u"chatsBoundToAgents"_s, status.boundChatCount},
        {u"dryRun"_s, status.dryRun},
        {u"environmentSetAside"_s, status.isEnvironmentSetAside},
        {u"waitingForKeyring"_s, status.isWaitingForKeyring},
        {u"problem"_s, known(status.problem)},
    };
}

QString addressWithoutSecrets(const QString &url)
{
    const QUrl address(url);
    if (!address.isValid() || address.host().isEmpty()) {
        return u"invalid"_s;
    }
    return address.toString(QUrl::RemoveUserInfo | QUrl::RemovePath | QUrl::RemoveQuery
                            | QUrl::RemoveFragment);
}

} // namespace bram
