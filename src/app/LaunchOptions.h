// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "config/Environment.h"
#include "model/Error.h"

#include <QString>
#include <QStringList>

#include <expected>
#include <optional>
#include <variant>

namespace bram
{

/// What the command line asks for.
struct LaunchOptions {
    enum class Practice {
        No,
        Yes,
        IfUnconfigured, ///< when no platform is configured on this machine
    };

    Practice practice = Practice::No;
    /// The unattended check; its result goes to `selfTestOutput`, or where it usually goes.
    bool selfTest = false;
    std::optional<QString> selfTestOutput {};
    /// Made-up requests at the start.
    bool startupSimulation = false;
    /// The desktop's menu offers them, too.
    bool simulationMenuEnabled = false;
};

/// A text to print before ending with success: the help or the version.
struct LaunchText {
    QString text;
};

/// Reads the command line, `arguments[0]` being the program, and the environment. Unknown options and
/// stray words are an error of one line.
std::expected<std::variant<LaunchOptions, LaunchText>, Error>
parseLaunchOptions(const QStringList &arguments, const Environment &environment);

} // namespace bram
