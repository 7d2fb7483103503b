// SPDX-License-Identifier: Apache-2.0
#include "practice/HandshakeVerifier.h"
#include "practice/RawClient.h"

#include <QJsonArray>

#include <gtest/gtest.h>

namespace bram
{
namespace
{
using namespace Qt::StringLiterals;
using test::connectParams;
using test::DeviceKey;

QString verdict(const QJsonObject &params, const HandshakeExpectations &expected)
{
    const auto result = verifyHandshake(params, expected);
    return result ? u"ok"_s : result.error().message;
}

/// `params` with one field replaced; `path` is "name" or "object.name". An undefined value removes it.
QJsonObject with(QJsonObject params, const QString &path, const QJsonValue &value)
{
    const auto put = [&value](QJsonObject &object, const QString &name) {
        value.isUndefined() ? object.remove(name) : void(object.insert(name, value));
    };
    const QString outer = path.section(u'.', 0, 0);
    const QString inner = path.section(u'.', 1);
    if (inner.isEmpty()) {
        put(params, outer);
        return params;
    }
    QJsonObject object = params.value(outer).toObject();
    put(object, inner);
    params.insert(outer, object);
    return params;
}

TEST(HandshakeVerifier, NamesEachWrongField)
{
    const DeviceKey key;
    const DeviceKey other;
    const HandshakeExpectations expected {.issuedNonce = u"N-1"_s};
    const QJsonObject good = connectParams(key, {.nonce = u"N-1"_s});
    ASSERT_EQ(verdict(good, expected), u"ok"_s);

    const QString signature = good.value("device"_L1).toObject().value("signature"_L1).toString();
    const QString badSignature = u"device signature invalid"_s;
    const QString badKey = u"device public key invalid"_s;
    const QJsonValue none(QJsonValue::Undefined);
    const struct {
        QString path;
        QJsonValue value;
        QString message; ///< a part of it
    } rows[] {
        {u"minProtocol"_s, 4, u"protocol mismatch"_s},
        {u"maxProtocol"_s, 2, u"protocol mismatch"_s},
        {u"minProtocol"_s, u"3"_s, u"whole numbers"_s},
        {u"client.id"_s, u"someone"_s, u"unknown client"_s},
        {u"client.mode"_s, u"cli"_s, u"unknown client"_s},
        {u"client.version"_s, none, u"\"version\""_s},
        {u"client.instanceId"_s, other.id(), u"instanceId"_s},
        {u"role"_s, u"node"_s, u"role"_s},
        {u"scopes"_s, QJsonArray {u"operator.admin"_s}, u"operator.approvals"_s},
        {u"scopes"_s, QJsonArray {u"operator.approvals"_s, 1}, u"list of texts"_s},
        {u"scopes"_s, QJsonArray {u"operator.approvals"_s}, badSignature},
        {u"caps"_s, none, u"\"caps\""_s},
        {u"locale"_s, u""_s, u"\"locale\""_s},
        {u"userAgent"_s, none, u"\"userAgent\""_s},
        {u"device"_s, none, u"instanceId"_s},
        {u"device.publicKey"_s, other.publicKey(), u"device id does not match"_s},
        {u"device.publicKey"_s, key.publicKey() + u'=', badKey},
        {u"device.publicKey"_s, key.publicKey().chopped(1), badKey},
        {u"device.signature"_s, other.sign(u"x"_s), badSignature},
        {u"device.signature"_s, signature + u"=="_s, badSignature},
        {u"device.signature"_s, none, badSignature},
        {u"device.signedAt"_s, qint64 {1'718'000'000'001}, badSignature},
        {u"device.signedAt"_s, 1.5, u"\"signedAt\""_s},
        {u"device.nonce"_s, u"N-2"_s, u"device nonce mismatch"_s},
        {u"device.nonce"_s, QJsonValue::Null, u"device nonce mismatch"_s},
        {u"device.nonce"_s, none, badSignature},
        {u"device.extra"_s, 1, u"unexpected field \"extra\""_s},
        {u"extra"_s, 1, u"unexpected field \"extra\""_s},
        {u"auth"_s, QJsonObject {}, u"auth must be"_s},
        {u"auth"_s, QJsonObject {{u"token"_s, u"t"_s}}, u"auth must be"_s},
        {u"auth"_s, QJsonObject {{u"token"_s, 1}, {u"password"_s, u""_s}}, u"auth must be"_s},
    };
    for (const auto &row : rows) {
        const QString message = verdict(with(good, row.path, row.value), expected);
        EXPECT_TRUE(message.contains(row.message)) << qPrintable(row.path + u": "_s + message);
        EXPECT_FALSE(message.startsWith("unauthorized"_L1)) << qPrintable(message);
    }
}

TEST(HandshakeVerifier, ANonceIsOptionalUnlessRequired)
{
    const DeviceKey key;
    const QJsonObject plain = connectParams(key);
    EXPECT_EQ(verdict(plain, {.issuedNonce = u"N"_s}), u"ok"_s);
    EXPECT_EQ(verdict(plain, {.issuedNonce = u"N"_s, .requireNonce = true}),
              u"device nonce required"_s);
    // A nonce nobody issued is no nonce.
    EXPECT_EQ(verdict(connectParams(key, {.nonce = u""_s}), {}), u"device nonce mismatch"_s);
}

TEST(HandshakeVerifier, ChecksTokenAndPassword)
{
    const DeviceKey key;
    const QString ok = u"ok"_s;
    const QString wrongToken = u"unauthorized: token mismatch"_s;
    const QString noToken = u"unauthorized: token missing"_s;
    const QString wrongPassword = u"unauthorized: password missing or wrong"_s;
    using Secret = std::optional<QString>;
    const auto tokenAuth = [](const QString &token, const QString &password = {}) {
        return QJsonObject {{u"token"_s, token}, {u"password"_s, password}};
    };
    const QJsonObject passwordAuth {{u"password"_s, u"pw"_s}};
    const struct {
        Secret token;
        Secret password;
        QString signedToken;
        QJsonObject auth;
        QString message;
    } rows[] {
        {u"abc"_s, {}, u"abc"_s, tokenAuth(u"abc"_s), ok},
        {u"abc"_s, {}, u"abd"_s, tokenAuth(u"abd"_s), wrongToken},
        {u"abc"_s, {}, u""_s, {}, noToken},
        {u"abc"_s, {}, u""_s, passwordAuth, noToken},
        // Shown but not signed, or the reverse.
        {u"abc"_s, {}, u""_s, tokenAuth(u"abc"_s), u"device signature invalid"_s},
        // Both sides keep the same padded token: trimmed on the wire, whole in the signature.
        {u"  abc  "_s, {}, u"  abc  "_s, tokenAuth(u"abc"_s), ok},
        {u"  "_s, {}, u""_s, {}, ok},
        {{}, {}, u"abc"_s, tokenAuth(u"abc"_s), ok},
        {{}, u"pw"_s, u""_s, passwordAuth, ok},
        {{}, u"pw"_s, u""_s, {}, wrongPassword},
        {{}, u"pw"_s, u"abc"_s, tokenAuth(u"abc"_s, u" pw "_s), ok},
        {{}, u"pw"_s, u"abc"_s, tokenAuth(u"abc"_s, u"no"_s), wrongPassword},
        {u"abc"_s, u"pw"_s, u""_s, passwordAuth, ok},
        {u"abc"_s, u"pw"_s, u"old"_s, tokenAuth(u"old"_s, u"pw"_s), wrongToken},
    };
    int index = 0;
    for (const auto &row : rows) {
        const QJsonObject params
            = connectParams(key, {.signedToken = row.signedToken, .auth = row.auth});
        EXPECT_EQ(verdict(params, {.token = row.token, .password = row.password}), row.message)
            << "row " << index;
        ++index;
    }
}

} // namespace
} // namespace bram
