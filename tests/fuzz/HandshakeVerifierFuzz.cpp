// SPDX-License-Identifier: Apache-2.0
#include "Fuzz.h"

#include "gateway/ConnectHandshake.h"
#include "practice/HandshakeVerifier.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <sodium.h>

using namespace bram;
using namespace Qt::StringLiterals;
using bram::fuzz::require;

namespace
{
DeviceIdentity fixedIdentity()
{
    require(sodium_init() >= 0, "sodium works");
    QByteArray publicKey(crypto_sign_PUBLICKEYBYTES, 0);
    QByteArray secretKey(crypto_sign_SECRETKEYBYTES, 0);
    const QByteArray seed(crypto_sign_SEEDBYTES, 's');
    const auto bytes = [](auto &array) { return reinterpret_cast<unsigned char *>(array.data()); };
    crypto_sign_seed_keypair(bytes(publicKey), bytes(secretKey),
                             reinterpret_cast<const unsigned char *>(seed.constData()));
    const auto base64Url = QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals;
    return {makeDeviceId(publicKey), QString::fromLatin1(publicKey.toBase64(base64Url)), seed};
}

QJsonObject goodParams()
{
    const auto params = connectParams({.identity = fixedIdentity(),
                                       .credentials = {u"t-1"_s, u"p-1"_s},
                                       .nonce = u"N-1"_s,
                                       .signedAtMs = 1'718'000'000'000,
                                       .locale = u"en_US"_s});
    require(params.has_value(), "a handshake can be signed");
    return *params;
}

/// `params` with the fields of `changes` written over it; null removes one.
QJsonObject patched(QJsonObject params, const QJsonObject &changes)
{
    for (auto change = changes.begin(); change != changes.end(); ++change) {
        const QJsonValue value = change.value();
        if (value.isNull()) {
            params.remove(change.key());
        } else if (value.isObject() && params.value(change.key()).isObject()) {
            params.insert(change.key(),
                          patched(params.value(change.key()).toObject(), value.toObject()));
        } else {
            params.insert(change.key(), value);
        }
    }
    return params;
}

QString scopesOf(const QJsonObject &params)
{
    QStringList scopes;
    for (const QJsonValue &scope : params.value("scopes"_L1).toArray()) {
        scopes.append(scope.toString());
    }
    return scopes.join(u',');
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const QJsonObject good = goodParams();
    const HandshakeExpectations expected {
        .token = u"t-1"_s, .password = u"p-1"_s, .issuedNonce = u"N-1"_s, .requireNonce = true};
    const QJsonObject changes = QJsonDocument::fromJson(fuzz::toBytes(data, size)).object();
    require(!verifyHandshake(changes, expected), "nobody without the key gets in");

    const QJsonObject params = patched(good, changes);
    const auto verdict = verifyHandshake(params, expected);
    require(verdict || params != good, "a faultless handshake gets in");
    if (!verdict) {
        require(!verdict.error().message.isEmpty(), "a refusal says why");
        return 0;
    }
    const auto sameObject = [&](QLatin1StringView object, QLatin1StringView field) {
        return params.value(object).toObject().value(field)
            == good.value(object).toObject().value(field);
    };
    require(params.value("device"_L1) == good.value("device"_L1),
            "the signature covers the device");
    require(sameObject("client"_L1, "id"_L1) && sameObject("client"_L1, "mode"_L1)
                && sameObject("client"_L1, "instanceId"_L1),
            "the signature covers the client");
    require(params.value("role"_L1) == good.value("role"_L1), "the signature covers the role");
    require(scopesOf(params) == scopesOf(good), "the signature covers the scopes");
    require(sameObject("auth"_L1, "token"_L1), "the token is needed");
    return 0;
}
