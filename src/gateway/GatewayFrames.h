// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalDecision.h"
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
    bool operator==(const IgnoredFrame &) const = default;
};

/// Wants the handshake to be signed (anew), over the nonce if there is one.
struct ChallengeFrame {
    std::optional<QString> nonce;

    bool operator==(const ChallengeFrame &) const = default;
};

struct ResponseFrame {
    QString id;
    /// The payload on success (an empty object when missing), else the gateway's error text.
    std::expected<QJsonValue, QString> result;

    bool operator==(const ResponseFrame &) const = default;
};

/// A frame without even a type: it says nothing about the peer.
struct UntypedFrame {
    bool operator==(const UntypedFrame &) const = default;
};

using IncomingFrame
    = std::variant<UntypedFrame, IgnoredFrame, ChallengeFrame, GatewayEvent, ResponseFrame>;

/// Reads one message of the gateway. Fails only on what is not JSON, with the parser's text. Events that
/// nobody here knows are ignored, and so are those with a required field missing or of the wrong type.
std::expected<IncomingFrame, Error> parseFrame(const QByteArray &utf8);

/// One request as compact JSON. `id` and `method` are plain ASCII without quotes.
QString encodeRequest(const QString &id, QLatin1StringView method, const QJsonObject &params);

/// The request that every decision is, without the detour over a tree of values.
QString encodeResolveRequest(const QString &id, const QString &approvalId,
                             ApprovalDecision decision);

/// A JSON number as a signed 64-bit integer: a fraction is cut off, a number outside the range (or no
/// number at all) is nothing.
std::optional<qint64> toInt64(const QJsonValue &value);

inline constexpr QLatin1StringView connectChallengeEvent("connect.challenge");
inline constexpr QLatin1StringView approvalRequestedEvent("exec.approval.requested");
inline constexpr QLatin1StringView approvalResolvedEvent("exec.approval.resolved");
inline constexpr QLatin1StringView connectMethod("connect");
inline constexpr QLatin1StringView resolveMethod("exec.approval.resolve");

} // namespace bram
