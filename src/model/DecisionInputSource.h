// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace bram
{

/// How a decision arrived from a chat.
enum class DecisionInputSource {
    CallbackButton,
    CommandMessage,
};

} // namespace bram
