// SPDX-License-Identifier: Apache-2.0
#include "monitor/MenuStateLog.h"

#include "gateway/GatewayStatus.h"
#include "monitor/ApprovalBoard.h"
#include "system/NextTurn.h"
#include "system/SystemLog.h"

#include <QStringBuilder>

namespace bram
{

using namespace Qt::StringLiterals;

MenuStateLog::MenuStateLog(const ApprovalBoard &board, const GatewayStatus &status, SystemLog &log)
    : m_board(board)
    , m_status(status)
    , m_log(log)
{
}

void MenuStateLog::note(const QString &reason)
{
    if (m_reason) {
        return;
    }
    m_reason = reason;
    inNextTurn(this, [this] { writeIfChanged(); });
}

void MenuStateLog::writeIfChanged()
{
    const QString reason = *std::exchange(m_reason, std::nullopt);
    const auto &active = m_board.activePopupItem();
    const QString snapshot = "conn="_L1 % rawText(m_status.lines().connectionIndicator)
        % " token="_L1 % rawText(tokenIndicator(m_status.lines().tokenState)) % " pending="_L1
        % QString::number(m_board.publishedCount()) % " active="_L1
        % (active ? active->approvalId : u"none"_s);
    if (snapshot == m_lastSnapshot) {
        return;
    }
    m_lastSnapshot = snapshot;
    m_log.write(QString("[BrackwenState] reason="_L1 % reason % u' ' % snapshot));
}

} // namespace bram
