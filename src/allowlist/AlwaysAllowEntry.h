// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/AlwaysAllowSource.h"

#include <QString>

namespace bram
{

/// One row of the merged always-allow list.
struct AlwaysAllowEntry {
    QString digest; ///< of the command; the entry's identity
    /// The platform's pattern, or else the preview that this application has kept; empty when there is
    /// neither. From outside: to be shown honestly.
    QString command;
    AlwaysAllowSource source = AlwaysAllowSource::LocalOnly;
    bool isSecuritySensitive = false;
    /// The command that the digest was made of has a line break or an unusual blank, so that on the own list
    /// it answers nothing (`AlwaysAllowVerdict::LineBreak`).
    bool hasLineBreak = false;

    bool operator==(const AlwaysAllowEntry &) const = default;
};

} // namespace bram
