// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace bram
{

/// Where the operator is asked.
enum class SurfaceKind {
    Desktop,
    Terminal,
};

} // namespace bram
