// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

namespace bram
{

/// `text` with its secrets masked: by four fixed rules, applied in this order to the whole text, each to every
/// match, and then by `withSecretsMasked`:
///   1. a Telegram bot token becomes "[REDACTED_BOT_TOKEN]";
///   2. "bearer" keeps the word and the blanks after it: "Bearer [REDACTED]";
///   3. token, password, passwd, secret or api key, then ":" or "=", become "KEY=[REDACTED]";
///   4. an assignment to a BRACKWEN_ variable for a token, password or secret keeps name and "=".
/// In rules 3 and 4 the masked value ends before the first backslash, letter s of either case,
/// quote, apostrophe, comma or semicolon, not at a blank: "token=abcsdef" becomes
/// "token=[REDACTED]sdef", of which the last step removes the rest. The rules are a fixed table that other
/// tools know as well; do not repair them, add to the last step.
///
/// For every text from outside that goes into a log, a record, a report or an export. Any thread. A
/// half of a surrogate pair, which would keep the rules from matching, becomes U+FFFD first. A
/// text that the rules cannot be applied to wholly, because it makes them try too much, becomes
/// "[REDACTED]" as a whole.
QString redacted(const QString &text);

} // namespace bram
