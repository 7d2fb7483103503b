// SPDX-License-Identifier: Apache-2.0
#include "gateway/DeviceIdentity.h"

#include <QCryptographicHash>

#include <array>
#include <sodium.h>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
/// The expanded key pair of a seed. The secret half does not outlive this object.
class KeyPair
{
public:
    /// Nothing when the bytes are not a seed, or the library cannot be used.
    static std::optional<QByteArray> publicKeyOf(const QByteArray &seed)
    {
        KeyPair pair;
        if (!pair.expand(seed)) {
            return std::nullopt;
        }
        return QByteArray(reinterpret_cast<const char *>(pair.m_public.data()),
                          static_cast<qsizetype>(pair.m_public.size()));
    }

    KeyPair() = default;
    ~KeyPair() { sodium_memzero(m_secret.data(), m_secret.size()); }
    Q_DISABLE_COPY_MOVE(KeyPair)

    bool expand(const QByteArray &seed)
    {
        return seed.size() == qsizetype(crypto_sign_SEEDBYTES) && sodium_init() >= 0
            && crypto_sign_seed_keypair(m_public.data(), m_secret.data(), bytesOf(seed)) == 0;
    }

    QByteArray sign(const QByteArray &message) const
    {
        QByteArray signature(crypto_sign_BYTES, Qt::Uninitialized);
        crypto_sign_detached(reinterpret_cast<unsigned char *>(signature.data()), nullptr,
                             bytesOf(message), static_cast<unsigned long long>(message.size()),
                             m_secret.data());
        return signature;
    }

private:
    static const unsigned char *bytesOf(const QByteArray &bytes)
    {
        return reinterpret_cast<const unsigned char *>(bytes.constData());
    }

    std::array<unsigned char, crypto_sign_PUBLICKEYBYTES> m_public = {};
    std::array<unsigned char, crypto_sign_SECRETKEYBYTES> m_secret = {};
};

QString toBase64Url(const QByteArray &bytes)
{
    return QString::fromLatin1(
        bytes.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals));
}
} // namespace

std::expected<QString, Error> DeviceIdentity::sign(const QString &payload) const
{
    KeyPair pair;
    if (!pair.expand(privateKeyRaw)) {
        return std::unexpected(Error {u"the device's private key is not a valid key"_s});
    }
    return toBase64Url(pair.sign(payload.toUtf8()));
}

QString makeDeviceId(const QByteArray &publicKeyRaw)
{
    return QString::fromLatin1(
        QCryptographicHash::hash(publicKeyRaw, QCryptographicHash::Sha256).toHex());
}

std::expected<DeviceIdentity, Error> makeNewIdentity()
{
    if (sodium_init() < 0) {
        return std::unexpected(Error {u"no random numbers for a new device key"_s});
    }
    QByteArray seed(crypto_sign_SEEDBYTES, Qt::Uninitialized);
    randombytes_buf(seed.data(), static_cast<std::size_t>(seed.size()));
    const auto publicKey = KeyPair::publicKeyOf(seed);
    if (!publicKey) {
        return std::unexpected(Error {u"no device key could be made"_s});
    }
    return DeviceIdentity {makeDeviceId(*publicKey), toBase64Url(*publicKey), seed};
}

std::optional<DeviceIdentity> validatedIdentity(const QString &deviceId, const QString &publicKey,
                                                const QByteArray &privateKeyRaw)
{
    const auto derived = KeyPair::publicKeyOf(privateKeyRaw);
    if (!derived || toBase64Url(*derived) != publicKey || makeDeviceId(*derived) != deviceId) {
        return std::nullopt;
    }
    return DeviceIdentity {deviceId, publicKey, privateKeyRaw};
}

QString privateKeyToText(const QByteArray &privateKeyRaw)
{
    return QString::fromLatin1(privateKeyRaw.toBase64());
}

std::optional<QByteArray> privateKeyFromText(const QString &text)
{
    const QByteArray encoded = text.toUtf8();
    QByteArray decoded(encoded.size(), '\0'); // never shorter than what it decodes to
    std::size_t size = 0;
    const int failed = sodium_base642bin(
        reinterpret_cast<unsigned char *>(decoded.data()), static_cast<std::size_t>(decoded.size()),
        encoded.constData(), static_cast<std::size_t>(encoded.size()), nullptr, &size, nullptr,
        sodium_base64_VARIANT_ORIGINAL);
    if (failed != 0) {
        return std::nullopt;
    }
    decoded.truncate(static_cast<qsizetype>(size));
    return decoded;
}

} // namespace bram
