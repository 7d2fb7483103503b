// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/TelegramTokenSource.h"
#include "telegram/TelegramBotConfig.h"

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

#include <optional>

namespace bram
{

/// What every surface shows about Telegram. Holds no secret.
struct TelegramStatus {
    TelegramTokenSource tokenSource = TelegramTokenSource::Missing;
    std::optional<TelegramMode> mode {}; ///< nothing: no bridge runs
    QList<qint64> chatIds {}; ///< of the bridge
    qsizetype boundChatCount = 0; ///< of these, how many may decide about some agent's requests
    QMap<qint64, ChatRules> chatRules {}; ///< of chats that have rules
    QList<qint64> openGroups {}; ///< groups in which everybody may decide
    QStringList
        unreadableRules {}; ///< where rules stand that cannot be read, and so took rights away
    bool dryRun = false;
    /// The environment has a token, which was set aside for this run.
    bool isEnvironmentSetAside = false;
    /// The keyring is locked, or has not answered yet: it may hold a token.
    bool isWaitingForKeyring = false;
    /// Why the address of the Bot API cannot be used; one line, masked. Empty: no problem.
    QString problem {};

    bool operator==(const TelegramStatus &) const = default;
};

} // namespace bram
