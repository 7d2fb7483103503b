// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/AlwaysAllowSource.h"

#include <QString>
#include <QStringList>

namespace bram
{

/// One row of the merged always-allow list.
struct AlwaysAllowEntry {
    QString digest; ///< of the command; the entry's identity
    /// The platform's pattern, or else the preview that this application has kept; empty when there is
    /// neither. From outside: to be shown honestly.
    QString command;
    AlwaysAllowSource source = AlwaysAllowSource::LocalOnly;
    bool isSecuritySensitive = false; ///< of the whole command, where that is or was known
    /// Of the own list: which commands with this digest it answers for (`commandForm`), in a fixed order.
    QStringList forms {};

    /// Whether it is on the own list and answers nothing: how exactly the command is written is not known
    /// before it has been allowed once more.
    bool isAskedOnceMore() const
    {
        return source != AlwaysAllowSource::BrackwenOnly && forms.isEmpty();
    }

    bool operator==(const AlwaysAllowEntry &) const = default;
};

} // namespace bram
