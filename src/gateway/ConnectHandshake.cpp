// SPDX-License-Identifier: Apache-2.0
#include "gateway/ConnectHandshake.h"

#include "model/TextRules.h"

#include <QJsonArray>
#include <QStringList>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr QLatin1StringView clientId("brackwen-macos");
constexpr QLatin1StringView clientMode("webchat");
constexpr QLatin1StringView role("operator");
constexpr int protocolVersion = 3;

QStringList requestedScopes()
{
    return {u"operator.admin"_s, u"operator.approvals"_s, u"operator.pairing"_s};
}

QJsonObject deviceParams(const HandshakeInput &input, const QString &signature)
{
    QJsonObject device {
        {u"id"_s, input.identity.deviceId},
        {u"publicKey"_s, input.identity.publicKeyBase64Url},
        {u"signature"_s, signature},
        {u"signedAt"_s, input.signedAtMs},
    };
    if (input.nonce) {
        device.insert(u"nonce"_s, *input.nonce);
    }
    return device;
}
} // namespace

QString signedPayload(const HandshakeInput &input)
{
    QStringList fields {
        input.nonce ? u"v2"_s : u"v1"_s,
        input.identity.deviceId,
        clientId,
        clientMode,
        role,
        requestedScopes().join(u','),
        QString::number(input.signedAtMs),
        input.credentials.token.value_or(QString()),
    };
    if (input.nonce) {
        fields.append(*input.nonce);
    }
    return fields.join(u'|');
}

std::optional<QJsonObject> authParams(const GatewayCredentials &credentials)
{
    if (const auto token = trimmedOrAbsent(credentials.token)) {
        return QJsonObject {{u"token"_s, *token},
                            {u"password"_s, credentials.password.value_or(u""_s)}};
    }
    if (const auto password = trimmedOrAbsent(credentials.password)) {
        return QJsonObject {{u"password"_s, *password}};
    }
    return std::nullopt;
}

std::expected<QJsonObject, Error> connectParams(const HandshakeInput &input)
{
    const auto signature = input.identity.sign(signedPayload(input));
    if (!signature) {
        return std::unexpected(signature.error());
    }
    QJsonObject params {
        {u"minProtocol"_s, protocolVersion},
        {u"maxProtocol"_s, protocolVersion},
        {u"client"_s,
         QJsonObject {
             {u"id"_s, clientId},
             {u"version"_s, u"1.0.0"_s},
             {u"platform"_s, u"macOS"_s},
             {u"mode"_s, clientMode},
             {u"instanceId"_s, input.identity.deviceId},
         }},
        {u"role"_s, role},
        {u"scopes"_s, QJsonArray::fromStringList(requestedScopes())},
        {u"device"_s, deviceParams(input, *signature)},
        {u"caps"_s, QJsonArray()},
        {u"userAgent"_s, userAgent},
        {u"locale"_s, input.locale},
    };
    if (const auto auth = authParams(input.credentials)) {
        params.insert(u"auth"_s, *auth);
    }
    return params;
}

std::optional<QString> gatewayOrigin(const QUrl &url)
{
    if (url.host().isEmpty()) {
        return std::nullopt;
    }
    const QString scheme = url.scheme().toLower() == "wss"_L1 ? u"https"_s : u"http"_s;
    // An IPv6 address keeps its brackets only in the encoded authority.
    const QString host = url.host().contains(u':') ? u'[' + url.host() + u']' : url.host();
    const QString port = url.port() < 0 ? QString() : u':' + QString::number(url.port());
    return scheme + "://"_L1 + host + port;
}

} // namespace bram
