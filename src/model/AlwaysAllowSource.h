// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace bram
{

/// Where an always-allow entry is registered.
enum class AlwaysAllowSource {
    LocalOnly, ///< only in this application's own list
    BrackwenOnly, ///< only in the platform's exec-approvals files
    Both,
};

} // namespace bram
