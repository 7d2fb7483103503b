// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/Error.h"
#include "model/GatewayEvent.h"

#include <QByteArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>

#include <expected>
#include <optional>
#include <variant>

namespace bram
{

/// A well-formed frame that the client has no use for.
struct IgnoredFrame {
};

struct EventFrame {
    QString name;
    QJsonObject payload; ///< empty when missing or not an object
};

struct ResponseFrame {
    QString id;
    /// The payload on success (an empty object when missing), else the gateway's error text.
    std::expected<QJsonValue, QString> result;
};

/// A frame without even a type: it says nothing about the peer.
struct UntypedFrame {
};

using IncomingFrame = std::variant<UntypedFrame, IgnoredFrame, EventFrame, ResponseFrame>;

/// Reads one message of the gateway. Fails only on what is not JSON, with the parser's text.
std::expected<IncomingFrame, Error> parseFrame(const QByteArray &utf8);

/// The event as the coordinator understands it; nothing for other events and for payloads with a
/// required field missing or of the wrong type.
std::optional<GatewayEvent> toGatewayEvent(const EventFrame &frame);

/// The `nonce` of a "connect.challenge" payload.
std::optional<QString> challengeNonce(const EventFrame &frame);

/// One request as compact JSON. `id` and `method` are plain ASCII without quotes.
QByteArray encodeRequest(const QString &id, QLatin1StringView method, const QJsonObject &params);

/// A JSON number as a signed 64-bit integer: a fraction is cut off, a number outside the range (or no
/// number at all) is nothing.
std::optional<qint64> toInt64(const QJsonValue &value);

inline constexpr QLatin1StringView connectChallengeEvent("connect.challenge");
inline constexpr QLatin1StringView approvalRequestedEvent("exec.approval.requested");
inline constexpr QLatin1StringView approvalResolvedEvent("exec.approval.resolved");
inline constexpr QLatin1StringView connectMethod("connect");
inline constexpr QLatin1StringView resolveMethod("exec.approval.resolve");

} // namespace bram
