// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace bram
{

/// Why a person is asked about a request.
enum class AskReason {
    Usual, ///< nobody has allowed it always
    LineBreak, ///< it is on the always-allow list, but a line break makes it ambiguous
    AutomaticAnswerFailed, ///< it is on the always-allow list, but the answer did not get through
};

} // namespace bram
