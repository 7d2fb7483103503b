// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>
#include <QString>

#include <optional>

namespace bram
{

class ApprovalBoard;
class GatewayStatus;
class SystemLog;

/// Writes one log line for each real change of what the menu shows:
/// "[BrackwenState] reason=… conn=green token=green pending=2 active=none". Looks once a turn of the
/// event loop and names the first reason noted since.
class MenuStateLog final : public QObject
{
    Q_OBJECT

public:
    MenuStateLog(const ApprovalBoard &board, const GatewayStatus &status, SystemLog &log);

    void note(const QString &reason);

private:
    void writeIfChanged();

    const ApprovalBoard &m_board;
    const GatewayStatus &m_status;
    SystemLog &m_log;
    std::optional<QString> m_reason;
    QString m_lastSnapshot;
};

} // namespace bram
