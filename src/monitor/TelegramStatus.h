// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/TelegramTokenSource.h"
#include "telegram/TelegramBotConfig.h"

#include <QList>
#include <QString>

#include <optional>

namespace bram
{

/// What every surface shows about Telegram. Holds no secret.
struct TelegramStatus {
    TelegramTokenSource tokenSource = TelegramTokenSource::Missing;
    std::optional<TelegramMode> mode {}; ///< nothing: no bridge runs
    QList<qint64> chatIds {}; ///< of the bridge
    qsizetype boundChatCount = 0; ///< of these, how many may decide about some agent's requests
    bool dryRun = false;
    /// The environment has a token, which was set aside for this run.
    bool isEnvironmentSetAside = false;
    bool isWaitingForKeyring = false;
    /// Why the keyring, or the address of the Bot API, could not be used; one line, masked. Empty: no problem.
    QString problem {};

    bool operator==(const TelegramStatus &) const = default;
};

} // namespace bram
