// SPDX-License-Identifier: Apache-2.0
#include "gateway/GatewayFrames.h"

#include "model/TextRules.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <cmath>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
std::optional<QString> textField(const QJsonObject &object, QLatin1StringView key)
{
    const QJsonValue value = object.value(key);
    return value.isString() ? std::optional(value.toString()) : std::nullopt;
}

std::optional<ApprovalItem> parseApprovalRequested(const QJsonObject &payload)
{
    const QJsonObject request = payload.value("request"_L1).toObject();
    const auto id = textField(payload, "id"_L1);
    const auto command = textField(request, "command"_L1);
    const auto createdAtMs = toInt64(payload.value("createdAtMs"_L1));
    const auto expiresAtMs = toInt64(payload.value("expiresAtMs"_L1));
    if (!id || !command || !createdAtMs || !expiresAtMs) {
        return std::nullopt;
    }
    return ApprovalItem {*id, *command, trimmedOrAbsent(textField(request, "agentId"_L1)),
                         *createdAtMs, *expiresAtMs};
}

/// The parser takes no number, text or other single value for a whole document, though it is one.
bool isSingleValue(const QByteArray &utf8)
{
    const QJsonArray values = QJsonDocument::fromJson('[' + utf8 + ']').array();
    return values.size() == 1 && !values.first().isObject() && !values.first().isArray();
}

ResponseFrame toResponse(const QString &id, const QJsonObject &frame)
{
    const QJsonValue ok = frame.value("ok"_L1);
    if (ok.isBool() && ok.toBool()) {
        const QJsonValue payload = frame.value("payload"_L1);
        return {id, payload.isUndefined() ? QJsonValue(QJsonObject()) : payload};
    }
    return {id,
            std::unexpected(textField(frame.value("error"_L1).toObject(), "message"_L1)
                                .value_or(u"Request failed"_s))};
}
} // namespace

std::expected<IncomingFrame, Error> parseFrame(const QByteArray &utf8)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(utf8, &parseError);
    if (parseError.error == QJsonParseError::IllegalValue && isSingleValue(utf8)) {
        return UntypedFrame {};
    }
    if (parseError.error != QJsonParseError::NoError) {
        return std::unexpected(
            Error {u"Gateway sent an invalid frame: "_s + parseError.errorString()});
    }
    const QJsonObject frame = document.object();
    const auto type = textField(frame, "type"_L1);
    if (!type) {
        return UntypedFrame {};
    }
    if (*type == "event"_L1) {
        return EventFrame {frame.value("event"_L1).toString(),
                           frame.value("payload"_L1).toObject()};
    }
    if (*type == "res"_L1) {
        const auto id = textField(frame, "id"_L1);
        return id ? IncomingFrame(toResponse(*id, frame)) : IncomingFrame(IgnoredFrame {});
    }
    return IgnoredFrame {};
}

std::optional<GatewayEvent> toGatewayEvent(const EventFrame &frame)
{
    if (frame.name == approvalRequestedEvent) {
        auto item = parseApprovalRequested(frame.payload);
        return item ? std::optional<GatewayEvent>(ApprovalRequested {*std::move(item)})
                    : std::nullopt;
    }
    if (frame.name == approvalResolvedEvent) {
        auto id = textField(frame.payload, "id"_L1);
        return id ? std::optional<GatewayEvent>(ApprovalResolved {*std::move(id)}) : std::nullopt;
    }
    return std::nullopt;
}

std::optional<QString> challengeNonce(const EventFrame &frame)
{
    return textField(frame.payload, "nonce"_L1);
}

QByteArray encodeRequest(const QString &id, QLatin1StringView method, const QJsonObject &params)
{
    // Id and method are ours and need no escaping; only the parameters carry text from outside.
    return R"({"type":"req","id":")" + id.toLatin1() + R"(","method":")"
        + QByteArrayView(method.data(), method.size()).toByteArray() + R"(","params":)"
        + QJsonDocument(params).toJson(QJsonDocument::Compact) + '}';
}

std::optional<qint64> toInt64(const QJsonValue &value)
{
    if (!value.isDouble()) {
        return std::nullopt;
    }
    const QVariant number = value.toVariant();
    if (number.typeId() == QMetaType::LongLong) {
        return number.toLongLong();
    }
    // 2^63 is exact as a double; the largest 64-bit integer is not.
    constexpr double limit = 9'223'372'036'854'775'808.0;
    const double truncated = std::trunc(number.toDouble());
    if (!(truncated >= -limit && truncated < limit)) {
        return std::nullopt;
    }
    return static_cast<qint64>(truncated);
}

} // namespace bram
