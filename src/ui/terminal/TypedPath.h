// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/Error.h"
#include "monitor/OperatorPrompts.h"

#include <QString>

#include <expected>

namespace bram
{

/// The absolute path that the operator has typed: `~` is their home, and what does not begin with `/` lies
/// in the folder in which the program was started. Nothing else is expanded.
QString absoluteTypedPath(const QString &typed);

/// The path if it can serve for what is asked, else why not, in one line. A folder that is missing is made.
std::expected<QString, Error> usableTypedPath(const QString &typed, FileQuestion::Kind kind);

} // namespace bram
