// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace bram
{

/// Gives memory that the program has freed back to the operating system, as far as that is possible. Takes a
/// few milliseconds; to be called when much has been freed, such as after a burst of requests.
void returnFreeMemory();

} // namespace bram
