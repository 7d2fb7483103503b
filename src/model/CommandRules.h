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
/// audit records and lists. Assignments before it are shown without their values, as "NAME=…", since those are
/// often keys; where a shell's reading of a value is not certain, nothing that follows is shown. Of at most 200
/// UTF-16 units, and "…" for more. Empty for a blank command.
QString commandPreview(QStringView command);

} // namespace bram
