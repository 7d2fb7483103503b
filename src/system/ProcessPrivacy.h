// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace bram
{

/// Keeps the secrets in this process's memory and environment from other programs of the same user, which
/// could otherwise trace it or read its files under /proc, and from files: no core dump is written. To be
/// called once, at start.
void keepProcessPrivate();

} // namespace bram
