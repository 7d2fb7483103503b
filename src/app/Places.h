// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "config/BrackwenConfig.h"
#include "config/Environment.h"
#include "system/linux/AutostartEntry.h"

#include <QString>

#include <optional>

namespace bram
{

/// Everything outside the process that the program reads or keeps state in. The practice mode has its own,
/// all within a temporary folder.
struct Places {
    QString preferencesFile; ///< the user defaults
    QString dataFolder; ///< the application-support folder: audit log
    Environment environment;
    AccountFacts account;
    QString lockFile {}; ///< of the one copy per user; empty without one
    std::optional<AutostartEntry::Places> autostart {}; ///< where the start at login is set

    /// The operator's: below XDG_CONFIG_HOME and XDG_DATA_HOME.
    static Places ofOperator();

    /// All below `folder`, connecting to `gatewayUrl` with no credentials; nothing of the operator's
    /// environment is visible.
    static Places ofPractice(const QString &folder, const QString &gatewayUrl);
};

} // namespace bram
