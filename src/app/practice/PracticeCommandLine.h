// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "practice/PracticeGateway.h"
#include "practice/PracticeScript.h"
#include "practice/PracticeSession.h"

#include <QString>
#include <QStringList>

#include <expected>
#include <optional>
#include <vector>

namespace bram
{

/// What the command line of the practice gateway asks for.
struct PracticeProgram {
    PracticeGatewayOptions gateway;
    PracticeSessionOptions session;
    std::optional<std::vector<ScriptStep>> script; ///< in place of the session when present
};

/// The command line asks for no run: a text to print, and the exit status.
struct CommandLineEnd {
    QString text; ///< for standard output when the status is 0, else one line for standard error
    int status = 0;
};

/// Reads the arguments, program name first, and the script file that they may name.
std::expected<PracticeProgram, CommandLineEnd>
parsePracticeCommandLine(const QStringList &arguments);

} // namespace bram
