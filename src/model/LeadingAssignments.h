// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QList>
#include <QStringView>

#include <optional>

namespace bram
{

/// The assignments to shell variables that a command begins with, as in `TOKEN=x make`.
struct LeadingAssignments {
    QList<QStringView> names;
    /// What follows them. Nothing where it takes more of a shell's grammar than is known here to tell where a
    /// value ends.
    std::optional<QStringView> rest;
};

/// Both are parts of `command`, which has been trimmed. Takes time in proportion to the values.
LeadingAssignments leadingAssignments(QStringView command);

} // namespace bram
