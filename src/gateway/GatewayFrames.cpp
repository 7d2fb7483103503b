// SPDX-License-Identifier: Apache-2.0
#include "gateway/GatewayFrames.h"

#include "model/TextRules.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QStringBuilder>

#include <algorithm>
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

IncomingFrame toRequested(const QJsonObject &payload)
{
    const QJsonObject request = payload.value("request"_L1).toObject();
    const auto id = textField(payload, "id"_L1);
    const auto command = textField(request, "command"_L1);
    const auto createdAtMs = toInt64(payload.value("createdAtMs"_L1));
    const auto expiresAtMs = toInt64(payload.value("expiresAtMs"_L1));
    if (!id || !command || !createdAtMs || !expiresAtMs) {
        return IgnoredFrame {};
    }
    return ApprovalRequested {{*id, *command, trimmedOrAbsent(textField(request, "agentId"_L1)),
                               *createdAtMs, *expiresAtMs}};
}

IncomingFrame toResolved(const QJsonObject &payload)
{
    auto id = textField(payload, "id"_L1);
    return id ? IncomingFrame(ApprovalResolved {*std::move(id)}) : IncomingFrame(IgnoredFrame {});
}

IncomingFrame toEvent(const QString &name, const QJsonObject &payload)
{
    if (name == connectChallengeEvent) {
        return ChallengeFrame {textField(payload, "nonce"_L1)};
    }
    if (name == approvalRequestedEvent) {
        return toRequested(payload);
    }
    if (name == approvalResolvedEvent) {
        return toResolved(payload);
    }
    return IgnoredFrame {};
}

/// The parser takes no number, text or other single value for a whole document, though it is one.
bool isSingleValue(const QByteArray &utf8)
{
    const QJsonArray values = QJsonDocument::fromJson('[' + utf8 + ']').array();
    return values.size() == 1 && !values.first().isObject() && !values.first().isArray();
}

/// The parser takes a U+FEFF at the beginning of any text for a mark of the encoding and drops it; a command
/// would be shown, and allowed, without it. Escaped it stays. Behind a quote it can only be the first
/// character of a text, or stand behind an escaped quote, where it means the same.
QByteArray withInitialMarksEscaped(const QByteArray &utf8)
{
    constexpr QByteArrayView mark("\"\xef\xbb\xbf");
    return utf8.contains(mark) ? QByteArray(utf8).replace(mark, "\"\\ufeff") : utf8;
}

bool isPlain(QChar character)
{
    return character >= u' ' && character != u'"' && character != u'\\'
        && character != QChar::ByteOrderMark && !character.isSurrogate();
}

/// As the inside of a JSON text. Escapes halves of surrogate pairs as well, which UTF-8 cannot carry (and
/// whole pairs with them), and U+FEFF, which readers drop at the beginning of a text.
QString escaped(const QString &text)
{
    if (std::ranges::all_of(text, isPlain)) {
        return text;
    }
    QString result;
    for (const QChar character : text) {
        if (isPlain(character)) {
            result += character;
        } else {
            result += "\\u"_L1 % QString::number(character.unicode(), 16).rightJustified(4, u'0');
        }
    }
    return result;
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

std::expected<IncomingFrame, Error> parseFrame(const QByteArray &received)
{
    const QByteArray utf8 = withInitialMarksEscaped(received);
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
        return toEvent(frame.value("event"_L1).toString(), frame.value("payload"_L1).toObject());
    }
    if (*type == "res"_L1) {
        const auto id = textField(frame, "id"_L1);
        return id ? IncomingFrame(toResponse(*id, frame)) : IncomingFrame(IgnoredFrame {});
    }
    return IgnoredFrame {};
}

QString encodeRequest(const QString &id, QLatin1StringView method, const QJsonObject &params)
{
    // Id and method are ours and need no escaping; only the parameters carry text from outside.
    return R"({"type":"req","id":")"_L1 % id % R"(","method":")"_L1 % method % R"(","params":)"_L1
        % QString::fromUtf8(QJsonDocument(params).toJson(QJsonDocument::Compact)) % u'}';
}

QString encodeResolveRequest(const QString &id, const QString &approvalId,
                             ApprovalDecision decision)
{
    return R"({"type":"req","id":")"_L1 % id % R"(","method":")"_L1 % resolveMethod
        % R"(","params":{"id":")"_L1 % escaped(approvalId) % R"(","decision":")"_L1
        % rawText(decision) % R"("}})"_L1;
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
