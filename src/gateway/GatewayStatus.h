// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "gateway/TokenSyncState.h"
#include "model/IndicatorState.h"

#include <QObject>
#include <QString>

#include <optional>

namespace bram
{

/// The status lines about the gateway that every surface shows, and the lock on remote approvals.
class GatewayStatus final : public QObject
{
    Q_OBJECT

public:
    struct Lines {
        QString connectionStatus = QStringLiteral("Not connected to a gateway yet");
        QString
            connectionDetail {}; ///< what belongs behind it: where, what is waited for, when next
        IndicatorState connectionIndicator = IndicatorState::Gray;
        /// What a decision met stands in `connectionStatus`; a surface that reports how each decision
        /// ended has said it already.
        bool isAboutDecision = false;
        TokenSyncState tokenState = TokenSyncState::Checking;
        bool remoteApprovalLocked = false; ///< decisions from chats are refused while set
        std::optional<QString>
            remoteApprovalLockReason; ///< the disconnect reason that set the lock

        /// The whole line about the connection, as an operator reads it.
        QString connectionLine() const;

        bool operator==(const Lines &) const = default;
    };

    const Lines &lines() const { return m_lines; }

    void setConnection(const QString &text, IndicatorState indicator, const QString &detail = {});
    /// Replaces the text and leaves the dot.
    void setConnectionText(const QString &text);
    /// The same with what a decision met, which is not a state of the connection.
    void setDecisionText(const QString &text);
    /// Nothing goes on before the operator has unlocked his keyring.
    void showWaitingForKeyring();
    void setTokenState(TokenSyncState state);
    void lockRemoteApproval(const QString &reason);
    void unlockRemoteApproval();

Q_SIGNALS:
    /// Some line really changed.
    void statusLinesChanged();

private:
    void publish(const Lines &lines);

    Lines m_lines;
};

} // namespace bram
