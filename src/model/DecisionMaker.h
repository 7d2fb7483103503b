// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace bram
{

/// Who took a decision of this program.
enum class DecisionMaker {
    Person,
    AlwaysAllowList, ///< without a question, because a person has allowed the command always
};

} // namespace bram
