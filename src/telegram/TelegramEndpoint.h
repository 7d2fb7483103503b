// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "config/Environment.h"
#include "model/Error.h"

#include <QUrl>

#include <expected>

namespace bram
{

/// Where the Bot API is: what `BRACKWEN_TELEGRAM_API_URL` names (a Bot API server of one's own, a test), else
/// the public one. An error when that is no http or https address, or one that would send the token over the
/// network unencrypted: plain http is for this machine only.
std::expected<QUrl, Error> telegramApiUrl(const Environment &environment);

} // namespace bram
