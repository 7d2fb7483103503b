// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace bram
{

/// Whether a command is answered without a question.
enum class AlwaysAllowVerdict {
    Unknown, ///< not on the application's list
    Allowed,
    /// On the list, but the command has a line break or an unusual blank, or had one when it was remembered.
    /// The digest does not tell those from a space; a shell does. So a person has to look.
    LineBreak,
};

} // namespace bram
