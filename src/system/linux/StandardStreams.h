// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace bram
{

/// Opens /dev/null for each standard stream that the caller has closed: else the next file opened would
/// take its number, and what is meant for the stream would go there. First thing in a program.
void openClosedStandardStreams();

} // namespace bram
