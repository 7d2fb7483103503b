// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/StatusTexts.h"

#include "model/HonestDisplay.h"
#include "ui/language/AuditWords.h"
#include "ui/language/TelegramWords.h"
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

StatusLine telegramLine(const TelegramStatus &telegram)
{
    const QString words = telegramModeWords(telegram);
    const bool hasToken = telegram.tokenSource != TelegramTokenSource::Missing;
    return {hasToken ? StatusTr::tr("Telegram: %1 (bot token %2)")
                           .arg(words, telegramTokenSourceWords(telegram))
                     : StatusTr::tr("Telegram: %1").arg(words),
            !telegram.problem.isEmpty()             ? IndicatorState::Red
                : telegram.isWaitingForKeyring      ? IndicatorState::Yellow
                : !telegram.mode                    ? IndicatorState::Gray
                : telegramHints(telegram).isEmpty() ? IndicatorState::Green
                                                    : IndicatorState::Yellow};
}
} // namespace

QList<StatusLine> statusLines(const GatewayStatus::Lines &gateway, const StatusLine &notifications,
                              const TelegramStatus &telegram, const AuditLogCondition &audit,
                              MenuLanguage language)
{
    QList<StatusLine> lines {
        {honestLine(gateway.connectionLine()).text, gateway.connectionIndicator},
        {tokenText(gateway.tokenState, language), tokenIndicator(gateway.tokenState)},
        {honestLine(notifications.text).text, notifications.indicator},
        telegramLine(telegram),
    };
    if (gateway.remoteApprovalLocked) {
        lines.append(
            {StatusTr::tr("Remote approval is locked: %1")
                 .arg(honestLine(gateway.remoteApprovalLockReason.value_or(QString())).text),
             IndicatorState::Red});
    }
    for (const AuditNotice &notice : auditNotices(audit)) {
        lines.append({notice.text, notice.indicator});
    }
    return lines;
}

QString trayToolTip(const GatewayStatus::Lines &gateway, const AuditLogCondition &audit,
                    qsizetype badgeCount, bool isPractice)
{
    QString label = badgeCount > 0 ? u"BRAM %1"_s.arg(badgeCount) : u"BRAM"_s;
    if (isPractice) {
        label += u" · "_s + practiceMark();
    }
    const QString pending = badgeCount > 0
        ? StatusTr::tr("%1 waiting for a decision").arg(badgeCount)
        : StatusTr::tr("nothing waits for a decision");
    QStringList lines {label, honestLine(gateway.connectionLine()).text, pending};
    for (const AuditNotice &notice : auditNotices(audit)) {
        lines.append(notice.text);
    }
    return lines.join(u'\n');
}

} // namespace bram
