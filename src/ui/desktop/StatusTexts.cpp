// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/StatusTexts.h"

#include "model/HonestDisplay.h"
#include "ui/language/Words.h"

#include <QCoreApplication>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
class StatusTr
{
    Q_DECLARE_TR_FUNCTIONS(Status)
};

/// The token's line is one fixed Korean text; who reads English gets its meaning.
QString tokenText(TokenSyncState state, MenuLanguage language)
{
    return language == MenuLanguage::Korean
        ? tokenStatusText(state)
        : StatusTr::tr("Gateway token: %1").arg(tokenStateWords(state));
}
} // namespace

QList<StatusLine> statusLines(const GatewayStatus::Lines &gateway, const StatusLine &notifications,
                              MenuLanguage language)
{
    QList<StatusLine> lines {
        {honestLine(gateway.connectionStatus).text, gateway.connectionIndicator},
        {tokenText(gateway.tokenState, language), tokenIndicator(gateway.tokenState)},
        {honestLine(notifications.text).text, notifications.indicator},
    };
    if (gateway.remoteApprovalLocked) {
        lines.append(
            {StatusTr::tr("Remote approval is locked: %1")
                 .arg(honestLine(gateway.remoteApprovalLockReason.value_or(QString())).text),
             IndicatorState::Red});
    }
    return lines;
}

QString trayToolTip(const GatewayStatus::Lines &gateway, qsizetype badgeCount)
{
    const QString label = badgeCount > 0 ? u"Brackwen %1"_s.arg(badgeCount) : u"Brackwen"_s;
    const QString pending = badgeCount > 0
        ? StatusTr::tr("%1 waiting for a decision").arg(badgeCount)
        : StatusTr::tr("nothing waits for a decision");
    return label + u"\n"_s + honestLine(gateway.connectionStatus).text + u"\n"_s + pending;
}

} // namespace bram
