// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QJsonObject>
#include <QString>

namespace bram
{

class TokenMask;

/// What would have been sent, for the log: JSON with its keys in order, secrets and the bot's own token
/// masked, and cut after 450 characters.
QString dryRunPayloadDescription(const QJsonObject &payload, const TokenMask &mask);

/// What the Bot API might have answered to `method`.
QJsonObject dryRunAnswer(const QString &method);

} // namespace bram
