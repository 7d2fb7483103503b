// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

namespace bram
{

/// How a decision arrived from a chat.
enum class DecisionInputSource {
    CallbackButton,
    CommandMessage,
};

/// "telegram-callback" or "telegram-command", as audit records name the source of a decision.
QString rawText(DecisionInputSource source);

} // namespace bram
