// SPDX-License-Identifier: Apache-2.0
#include "practice/HandshakeVerifier.h"

#include "model/TextRules.h"

#include <QByteArray>
#include <QCryptographicHash>
#include <QJsonArray>
#include <QStringList>

#include <sodium.h>

#include <algorithm>
#include <initializer_list>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr int protocolVersion = 3;

/// What is wrong, in one line; nothing when all is well.
using Fault = std::optional<QString>;

/// A field that a gateway with a strict schema does not know is a fault of the client.
Fault unknownField(const QJsonObject &object, std::initializer_list<QLatin1StringView> known,
                   const QString &where)
{
    for (const QString &key : object.keys()) {
        if (std::ranges::none_of(known, [&key](QLatin1StringView name) { return key == name; })) {
            return u"%1: unexpected field \"%2\""_s.arg(where, key.left(40));
        }
    }
    return std::nullopt;
}

Fault emptyText(const QJsonObject &object, std::initializer_list<QLatin1StringView> names,
                const QString &where)
{
    for (const QLatin1StringView name : names) {
        if (object.value(name).toString().isEmpty()) {
            return u"%1: \"%2\" must be a non-empty text"_s.arg(where, name);
        }
    }
    return std::nullopt;
}

/// A positive whole number, or 0.
qint64 positiveInteger(const QJsonValue &value)
{
    return std::max<qint64>(value.toInteger(0), 0);
}

Fault checkFrame(const QJsonObject &params, const HandshakeExpectations &)
{
    if (auto fault
        = unknownField(params,
                       {"minProtocol"_L1, "maxProtocol"_L1, "client"_L1, "role"_L1, "scopes"_L1,
                        "device"_L1, "caps"_L1, "userAgent"_L1, "locale"_L1, "auth"_L1},
                       u"connect"_s)) {
        return fault;
    }
    if (!params.value("caps"_L1).isArray()) {
        return u"connect: \"caps\" must be a list"_s;
    }
    return emptyText(params, {"userAgent"_L1, "locale"_L1}, u"connect"_s);
}

Fault checkProtocol(const QJsonObject &params, const HandshakeExpectations &)
{
    const qint64 lowest = positiveInteger(params.value("minProtocol"_L1));
    const qint64 highest = positiveInteger(params.value("maxProtocol"_L1));
    if (lowest == 0 || highest == 0) {
        return u"connect: minProtocol and maxProtocol must be whole numbers"_s;
    }
    if (lowest > protocolVersion || highest < protocolVersion) {
        return u"protocol mismatch: this gateway speaks version %1"_s.arg(protocolVersion);
    }
    return std::nullopt;
}

Fault checkClient(const QJsonObject &params, const HandshakeExpectations &)
{
    const auto names = {"id"_L1, "version"_L1, "platform"_L1, "mode"_L1, "instanceId"_L1};
    const QJsonObject client = params.value("client"_L1).toObject();
    if (auto fault = unknownField(client, names, u"client"_s)) {
        return fault;
    }
    if (auto fault = emptyText(client, names, u"client"_s)) {
        return fault;
    }
    if (client.value("id"_L1) != "brackwen-macos"_L1 || client.value("mode"_L1) != "webchat"_L1) {
        return u"unknown client id or mode"_s;
    }
    if (client.value("instanceId"_L1) != params.value("device"_L1).toObject().value("id"_L1)) {
        return u"client.instanceId is not the device id"_s;
    }
    return std::nullopt;
}

Fault checkRole(const QJsonObject &params, const HandshakeExpectations &)
{
    if (params.value("role"_L1) != "operator"_L1) {
        return u"role must be operator"_s;
    }
    const QJsonArray scopes = params.value("scopes"_L1).toArray();
    if (!std::ranges::all_of(scopes, [](const QJsonValue &scope) { return scope.isString(); })) {
        return u"connect: \"scopes\" must be a list of texts"_s;
    }
    if (!scopes.contains(QJsonValue("operator.approvals"_L1))) {
        return u"scope operator.approvals is missing"_s;
    }
    return std::nullopt;
}

/// Token and password, or the password alone; no field when there is nothing to show.
Fault checkAuthShape(const QJsonObject &params, const HandshakeExpectations &)
{
    if (!params.contains("auth"_L1)) {
        return std::nullopt;
    }
    const QJsonObject auth = params.value("auth"_L1).toObject();
    const bool tokenIsText = !auth.contains("token"_L1) || auth.value("token"_L1).isString();
    if (!auth.value("password"_L1).isString() || !tokenIsText) {
        return u"auth must be a token and a password, or a password"_s;
    }
    return unknownField(auth, {"token"_L1, "password"_L1}, u"auth"_s);
}

Fault checkSecrets(const QJsonObject &params, const HandshakeExpectations &expected)
{
    const QJsonObject auth = params.value("auth"_L1).toObject();
    const auto token = trimmedOrAbsent(expected.token);
    const auto password = trimmedOrAbsent(expected.password);
    const QString shownToken = auth.value("token"_L1).toString();
    // Where either would do, the token counts as soon as one is shown.
    if (token && (!password || !shownToken.isEmpty())) {
        if (shownToken.isEmpty()) {
            return u"unauthorized: token missing"_s;
        }
        return shownToken == *token ? Fault() : u"unauthorized: token mismatch"_s;
    }
    if (password && trimmedOrAbsent(auth.value("password"_L1).toString()) != password) {
        return u"unauthorized: password missing or wrong"_s;
    }
    return std::nullopt;
}

/// The bytes of base64url without padding, in its one canonical spelling; empty when it is not that.
QByteArray fromBase64Url(const QString &text)
{
    constexpr auto options = QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals;
    const QByteArray encoded = text.toUtf8();
    const auto decoded = QByteArray::fromBase64Encoding(
        encoded, options | QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded || decoded.decoded.toBase64(options) != encoded) {
        return {};
    }
    return decoded.decoded;
}

/// The token field of the signed text. Each side signs its own configured token, blanks included, of
/// which the wire shows only the trimmed form.
QString signedToken(const QJsonObject &params, const HandshakeExpectations &expected)
{
    const QString shown = params.value("auth"_L1).toObject().value("token"_L1).toString();
    const bool sameToken = trimmedOrAbsent(expected.token) == shown;
    return sameToken ? *expected.token : shown;
}

bool isSignedBy(const QByteArray &key, const QByteArray &signature, const QByteArray &payload)
{
    const auto bytes = [](const QByteArray &array) {
        return reinterpret_cast<const unsigned char *>(array.constData());
    };
    return signature.size() == qsizetype {crypto_sign_BYTES}
    && crypto_sign_verify_detached(bytes(signature), bytes(payload),
                                   static_cast<unsigned long long>(payload.size()), bytes(key))
        == 0;
}

/// The text that a faultless client has signed, from the other fields of its frame.
QByteArray expectedPayload(const QJsonObject &params, const HandshakeExpectations &expected)
{
    const QJsonObject client = params.value("client"_L1).toObject();
    const QJsonObject device = params.value("device"_L1).toObject();
    QStringList scopes;
    const QJsonArray listed = params.value("scopes"_L1).toArray();
    for (const auto &scope : listed) {
        scopes.append(scope.toString());
    }
    const bool withNonce = device.contains("nonce"_L1);
    QStringList fields {
        withNonce ? u"v2"_s : u"v1"_s,
        device.value("id"_L1).toString(),
        client.value("id"_L1).toString(),
        client.value("mode"_L1).toString(),
        params.value("role"_L1).toString(),
        scopes.join(u','),
        QString::number(device.value("signedAt"_L1).toInteger()),
        signedToken(params, expected),
    };
    if (withNonce) {
        fields.append(device.value("nonce"_L1).toString());
    }
    return fields.join(u'|').toUtf8();
}

Fault checkNonce(const QJsonObject &params, const HandshakeExpectations &expected)
{
    const QJsonObject device = params.value("device"_L1).toObject();
    if (!device.contains("nonce"_L1)) {
        return expected.requireNonce ? u"device nonce required"_s : Fault();
    }
    const QString nonce = device.value("nonce"_L1).toString();
    if (nonce.isEmpty() || nonce != expected.issuedNonce) {
        return u"device nonce mismatch"_s;
    }
    return std::nullopt;
}

Fault checkDevice(const QJsonObject &params, const HandshakeExpectations &expected)
{
    const QJsonObject device = params.value("device"_L1).toObject();
    if (auto fault
        = unknownField(device, {"id"_L1, "publicKey"_L1, "signature"_L1, "signedAt"_L1, "nonce"_L1},
                       u"device"_s)) {
        return fault;
    }
    if (positiveInteger(device.value("signedAt"_L1)) == 0) {
        return u"device: \"signedAt\" must be milliseconds since the epoch"_s;
    }
    const QByteArray key = fromBase64Url(device.value("publicKey"_L1).toString());
    if (key.size() != qsizetype {crypto_sign_PUBLICKEYBYTES}) {
        return u"device public key invalid"_s;
    }
    const auto hash = QCryptographicHash::hash(key, QCryptographicHash::Sha256).toHex();
    if (device.value("id"_L1).toString() != QString::fromLatin1(hash)) {
        return u"device id does not match its public key"_s;
    }
    const QByteArray signature = fromBase64Url(device.value("signature"_L1).toString());
    if (!isSignedBy(key, signature, expectedPayload(params, expected))) {
        return u"device signature invalid"_s;
    }
    return std::nullopt;
}
} // namespace

std::expected<void, Error> verifyHandshake(const QJsonObject &params,
                                           const HandshakeExpectations &expected)
{
    if (sodium_init() < 0) {
        return std::unexpected(Error {u"the gateway cannot check signatures"_s});
    }
    // The secrets before the signature: an operator with an old token is to read about the token.
    for (const auto check : {checkFrame, checkProtocol, checkClient, checkRole, checkAuthShape,
                             checkSecrets, checkNonce, checkDevice}) {
        if (const Fault fault = check(params, expected)) {
            return std::unexpected(Error {*fault});
        }
    }
    return {};
}

} // namespace bram
