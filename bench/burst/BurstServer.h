// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace bram::bench
{

/// The gateway's side, in a process of its own. Prints its address, then takes orders from standard
/// input, one a line: "request N" sends N requests back to back, "resolve N" announces the same ones as
/// resolved. Ends with standard input.
int runBurstServer();

/// The client's name in the address.
inline constexpr char burstClient[] = "burst";

} // namespace bram::bench
