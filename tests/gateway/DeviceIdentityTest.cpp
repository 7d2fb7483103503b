// SPDX-License-Identifier: Apache-2.0
#include "gateway/DeviceIdentity.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

namespace bram
{
namespace
{

using namespace Qt::StringLiterals;

/// The first test vector of RFC 8032.
const QByteArray seed
    = QByteArray::fromHex("9d61b19deffd5a60ba844af492ec2cc44449c5697b326919703bac031cae7f60");
const QByteArray publicKey
    = QByteArray::fromHex("d75a980182b10ab7d54bfed3c964073a0ee172f3daa62325af021a68f707511a");
const QByteArray signatureOfNothing
    = QByteArray::fromHex("e5564300c360ac729086e2cc806e828a84877f1eb8e5d974d873e065224901555fb88215"
                          "90a33bacc61e39701cf9b46b"
                          "d25bf5f0595bbe24655141438e7a100b");
const QString publicKeyText = u"11qYAYKxCrfVS_7TyWQHOg7hcvPapiMlrwIaaPcHURo"_s;
const QString deviceId = u"21fe31dfa154a261626bf854046fd2271b7bed4b6abe45aa58877ef47f9721b9"_s;

TEST(DeviceIdentity, SignsLikeThePublishedVector)
{
    EXPECT_EQ(makeDeviceId(publicKey), deviceId);
    const auto identity = validatedIdentity(deviceId, publicKeyText, seed);
    ASSERT_TRUE(identity);
    const auto signature = identity->sign({});
    ASSERT_TRUE(signature);
    EXPECT_EQ(QByteArray::fromBase64(signature->toLatin1(), QByteArray::Base64UrlEncoding),
              signatureOfNothing);

    static const QRegularExpression form(u"\\A[A-Za-z0-9_-]{86}\\z"_s);
    for (const QString &payload : {u""_s, u"v2|한글|\U0001F512"_s, QString(100'000, u'x')}) {
        const auto once = identity->sign(payload);
        ASSERT_TRUE(once);
        EXPECT_TRUE(form.match(*once).hasMatch()) << qPrintable(*once);
        EXPECT_EQ(*once, identity->sign(payload));
    }
}

TEST(DeviceIdentity, IsTrustedOnlyAsAWhole)
{
    const auto other = makeNewIdentity();
    ASSERT_TRUE(other);
    const struct {
        const char *name;
        QString deviceId;
        QString publicKey;
        QByteArray privateKey;
    } cases[] = {
        {"id in upper case", deviceId.toUpper(), publicKeyText, seed},
        {"id of another", other->deviceId, publicKeyText, seed},
        {"id with a blank", deviceId + u' ', publicKeyText, seed},
        {"no id", {}, publicKeyText, seed},
        {"padded public key", deviceId, publicKeyText + u'=', seed},
        {"public key in standard base64", deviceId, QString(publicKeyText).replace(u'_', u'/'),
         seed},
        {"public key of another", deviceId, other->publicKeyBase64Url, seed},
        {"private key of another", deviceId, publicKeyText, other->privateKeyRaw},
        {"short private key", deviceId, publicKeyText, seed.first(31)},
        {"expanded private key", deviceId, publicKeyText, seed + publicKey},
        {"no private key", deviceId, publicKeyText, {}},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(validatedIdentity(c.deviceId, c.publicKey, c.privateKey), std::nullopt) << c.name;
    }
    EXPECT_FALSE((DeviceIdentity {deviceId, publicKeyText, seed.first(31)}.sign(u"x"_s)));
}

TEST(DeviceIdentity, EveryNewOneIsDifferentAndValid)
{
    const auto one = makeNewIdentity();
    const auto two = makeNewIdentity();
    ASSERT_TRUE(one && two);
    EXPECT_NE(one->privateKeyRaw, two->privateKeyRaw);
    EXPECT_EQ(validatedIdentity(one->deviceId, one->publicKeyBase64Url, one->privateKeyRaw), *one);
}

TEST(DeviceIdentity, PrivateKeyTextIsStrictStandardBase64)
{
    const QByteArray key
        = QByteArray::fromHex("fbff00112233445566778899aabbccddeeff00112233445566778899aabbccfe");
    const QString text = privateKeyToText(key);
    EXPECT_EQ(text, u"+/8AESIzRFVmd4iZqrvM3e7/ABEiM0RVZneImaq7zP4="_s);
    EXPECT_EQ(privateKeyFromText(text), key);
    EXPECT_EQ(privateKeyFromText({}), QByteArray());
    for (const QString &bad :
         {u' ' + text, text + u'\n', QString(text).insert(8, u' '),
          QString(text).replace(u'+', u'-'), QString(text).replace(u'/', u'_'), text.chopped(1),
          text + u'=', text + text, QString(text).replace(u'8', u'\uff18'), u"===="_s, u"A"_s,
          QString(text).replace(u'8', QChar(0))}) {
        EXPECT_EQ(privateKeyFromText(bad), std::nullopt) << qPrintable(bad);
    }
}

} // namespace
} // namespace bram
