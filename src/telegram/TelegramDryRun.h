// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QJsonObject>
#include <QString>

namespace bram
{

/// What would have been sent, for the log: JSON with its keys in order, secrets masked, and cut after 450
/// characters.
QString dryRunPayloadDescription(const QJsonObject &payload);

/// What the Bot API might have answered to `method`.
QJsonObject dryRunAnswer(const QString &method);

} // namespace bram
