// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace bram
{

/// Whether a command is answered without a question.
enum class AlwaysAllowVerdict {
    Unknown, ///< not on the application's list
    Allowed,
    /// Its digest is on the list, but what was allowed is not known to be the same to a shell. So a person has to
    /// look.
    NotExact,
};

} // namespace bram
