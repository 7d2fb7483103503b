// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

namespace bram
{

/// Why an operation did not succeed: one clear English line, fit for a log or a status line.
struct Error {
    QString message;

    bool operator==(const Error &) const = default;
};

} // namespace bram
