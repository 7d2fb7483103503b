// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace bram
{

/// Why a person is asked about a request.
enum class AskReason {
    Usual, ///< nobody has allowed it always
    NotExact, ///< the always-allow list has it, but perhaps with other blanks or line breaks
    NotRecordable, ///< it is on the always-allow list, but events cannot be put on record now
    AutomaticAnswerFailed, ///< it is on the always-allow list, but the answer did not get through
};

} // namespace bram
