// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "config/BrackwenConfig.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace bram
{

/// In place of an agent id: every agent. An agent of this name cannot be told apart from it, and
/// is left out wherever agents are read.
inline constexpr QLatin1StringView everyAgent("__all__");

/// The agents that the platform's configuration files name, all files together, ascending and without
/// duplicates: the elements of "agents" → "list", and every key of "agents" but "list" and "defaults".
QStringList loadAvailableAgentIdsFromBrackwenConfig(const QList<BrackwenConfig::File> &files);

/// The agent that is bound to a private chat with the operator: of the first binding, in the order of the
/// files, whose chat is one of those that the files list for approvals.
std::optional<QString>
loadPairedAgentIdFromBrackwenConfig(const QList<BrackwenConfig::File> &files);

} // namespace bram
