// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/Error.h"

#include <QString>
#include <QStringList>

#include <expected>
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
};

/// A text to print before ending with success: the help or the version.
struct LaunchText {
    QString text;
};

/// Reads the command line, `arguments[0]` being the program. Unknown options and stray words are an
/// error of one line.
std::expected<std::variant<LaunchOptions, LaunchText>, Error>
parseLaunchOptions(const QStringList &arguments);

} // namespace bram
