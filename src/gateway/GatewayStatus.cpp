// SPDX-License-Identifier: Apache-2.0
#include "gateway/GatewayStatus.h"

namespace bram
{

using namespace Qt::StringLiterals;

QString GatewayStatus::Lines::connectionLine() const
{
    return connectionDetail.isEmpty() ? connectionStatus
                                      : connectionStatus + u' ' + connectionDetail;
}

void GatewayStatus::setConnection(const QString &text, IndicatorState indicator,
                                  const QString &detail)
{
    Lines lines = m_lines;
    lines.connectionStatus = text;
    lines.connectionDetail = detail;
    lines.connectionIndicator = indicator;
    lines.isAboutDecision = false;
    publish(lines);
}

void GatewayStatus::setConnectionText(const QString &text)
{
    setConnection(text, m_lines.connectionIndicator);
}

void GatewayStatus::setDecisionText(const QString &text)
{
    Lines lines = m_lines;
    lines.connectionStatus = text;
    lines.connectionDetail.clear();
    lines.isAboutDecision = true;
    publish(lines);
}

void GatewayStatus::showWaitingForKeyring()
{
    setConnection(u"Connecting to gateway: waiting for the keyring to be unlocked"_s,
                  IndicatorState::Yellow);
}

void GatewayStatus::setTokenState(TokenSyncState state)
{
    Lines lines = m_lines;
    lines.tokenState = state;
    publish(lines);
}

void GatewayStatus::lockRemoteApproval(const QString &reason)
{
    Lines lines = m_lines;
    lines.remoteApprovalLocked = true;
    lines.remoteApprovalLockReason = reason;
    publish(lines);
}

void GatewayStatus::unlockRemoteApproval()
{
    Lines lines = m_lines;
    lines.remoteApprovalLocked = false;
    lines.remoteApprovalLockReason.reset();
    publish(lines);
}

void GatewayStatus::publish(const Lines &lines)
{
    if (lines == m_lines) {
        return;
    }
    m_lines = lines;
    Q_EMIT statusLinesChanged();
}

} // namespace bram
