// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "allowlist/ExactJson.h"

#include <QSet>
#include <QStringList>

#include <optional>

namespace bram
{

// What is read from and changed in the content of an exec-approvals file. Every edit says whether it
// changed something, or why the file does not lend itself to it; it is then unchanged.

/// The command that an element of an allow-list stands for; nothing when it has none.
std::optional<QString> allowlistPattern(const ExactJson &element);

/// The patterns of all agents, in the order of the file.
QStringList allowlistPatterns(const ExactJson &root);

/// Adds the commands that the default agent's list does not have yet.
std::expected<bool, Error> appendCommands(ExactJson &root, const QStringList &commands);

/// Takes out of every agent's list what has one of these digests.
std::expected<bool, Error> removeDigests(ExactJson &root, const QSet<QString> &digests);

/// The agents whose lists hold what has this digest.
QStringList agentsAllowing(const ExactJson &root, const QString &digest);

/// Leaves every agent with an empty list.
std::expected<bool, Error> clearAllowlists(ExactJson &root);

/// Those of the texts that are commands and can be registered as patterns: previews, which are cut with
/// an ellipsis, and single words are not. Each once, in their order.
QStringList concreteCommandsForBrackwen(const QStringList &texts);

} // namespace bram
