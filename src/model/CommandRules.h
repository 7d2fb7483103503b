// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

namespace bram
{

enum class CommandRisk {
    Low,
    High,
};

/// "low" or "high", as audit records spell it.
QString rawText(CommandRisk risk);

/// How a single request is rated: decides titles, marks and the audit risk. Ignores case.
CommandRisk commandRiskLevel(QStringView command);

/// Whether a standing permission for this command would let system-changing commands through
/// unasked. A different list from `commandRiskLevel` on purpose: one rates a request, the other
/// warns about a rule.
bool isSecuritySensitiveCommand(QStringView command);

/// The program's name, and " …" when arguments follow: never an argument, so that it may stand in
/// audit records and lists. Empty for a blank command.
QString commandPreview(QStringView command);

} // namespace bram
