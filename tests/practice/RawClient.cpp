// SPDX-License-Identifier: Apache-2.0
#include "practice/RawClient.h"

#include "support/Waiting.h"

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QUuid>

#include <sodium.h>

namespace bram::test
{

using namespace Qt::StringLiterals;

namespace
{
QString base64Url(const QByteArray &bytes)
{
    return QString::fromLatin1(
        bytes.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals));
}

unsigned char *data(QByteArray &bytes)
{
    return reinterpret_cast<unsigned char *>(bytes.data());
}
} // namespace

DeviceKey::DeviceKey()
    : m_publicKey(crypto_sign_PUBLICKEYBYTES, '\0')
    , m_secretKey(crypto_sign_SECRETKEYBYTES, '\0')
{
    if (sodium_init() < 0 || crypto_sign_keypair(data(m_publicKey), data(m_secretKey)) != 0) {
        qFatal("no key pair");
    }
}

QString DeviceKey::id() const
{
    return QString::fromLatin1(
        QCryptographicHash::hash(m_publicKey, QCryptographicHash::Sha256).toHex());
}

QString DeviceKey::publicKey() const
{
    return base64Url(m_publicKey);
}

QString DeviceKey::sign(const QString &payload) const
{
    QByteArray message = payload.toUtf8();
    QByteArray secretKey = m_secretKey;
    QByteArray signature(crypto_sign_BYTES, '\0');
    crypto_sign_detached(data(signature), nullptr, data(message),
                         static_cast<unsigned long long>(message.size()), data(secretKey));
    return base64Url(signature);
}

QJsonObject connectParams(const DeviceKey &key, const HandshakeParts &parts)
{
    QString payload = u"%1|%2|brackwen-macos|webchat|operator|operator.admin,operator.approvals,"
                      "operator.pairing|1718000000000|%3"_s.arg(parts.nonce ? u"v2"_s : u"v1"_s,
                                                                key.id(), parts.signedToken);
    QJsonObject device {{u"id"_s, key.id()},
                        {u"publicKey"_s, key.publicKey()},
                        {u"signedAt"_s, qint64 {1'718'000'000'000}}};
    if (parts.nonce) {
        payload += u'|' + *parts.nonce;
        device.insert(u"nonce"_s, *parts.nonce);
    }
    device.insert(u"signature"_s, key.sign(payload));
    QJsonObject params {
        {u"minProtocol"_s, 3},
        {u"maxProtocol"_s, 3},
        {u"client"_s,
         QJsonObject {{u"id"_s, u"brackwen-macos"_s},
                      {u"version"_s, u"1.0.0"_s},
                      {u"platform"_s, u"macOS"_s},
                      {u"mode"_s, u"webchat"_s},
                      {u"instanceId"_s, key.id()}}},
        {u"role"_s, u"operator"_s},
        {u"scopes"_s,
         QJsonArray {u"operator.admin"_s, u"operator.approvals"_s, u"operator.pairing"_s}},
        {u"device"_s, device},
        {u"caps"_s, QJsonArray {}},
        {u"userAgent"_s, u"BrackwenApprovalsMenu/1.0"_s},
        {u"locale"_s, u"en_US"_s},
    };
    if (!parts.auth.isEmpty()) {
        params.insert(u"auth"_s, parts.auth);
    }
    return params;
}

RawClient::RawClient(const QUrl &url, const QString &origin)
    : m_socket(
        std::make_unique<QWebSocket>(origin.isEmpty() ? u"http://"_s + url.authority() : origin))
{
    QObject::connect(m_socket.get(), &QWebSocket::textMessageReceived, m_socket.get(),
                     [this](const QString &text) {
                         texts.append(text);
                         m_frames.append(QJsonDocument::fromJson(text.toUtf8()).object());
                     });
    QObject::connect(m_socket.get(), &QWebSocket::binaryMessageReceived, m_socket.get(),
                     [this](const QByteArray &bytes) { binaries.append(bytes); });
    bool settled = false;
    QObject scope;
    QObject::connect(m_socket.get(), &QWebSocket::connected, &scope, [&] { settled = true; });
    QObject::connect(m_socket.get(), &QWebSocket::disconnected, &scope, [&] { settled = true; });
    m_socket->open(url);
    static_cast<void>(waitUntil([&] { return settled; }));
}

bool RawClient::isOpen() const
{
    return m_socket->state() == QAbstractSocket::ConnectedState;
}

bool RawClient::waitClosed()
{
    return waitUntil([this] { return m_socket->state() == QAbstractSocket::UnconnectedState; });
}

std::optional<QJsonObject> RawClient::take(QLatin1StringView key, const QString &value)
{
    std::optional<QJsonObject> found;
    static_cast<void>(waitUntil([&] {
        for (qsizetype i = 0; i < m_frames.size() && !found; ++i) {
            if (m_frames.at(i).value(key) == value) {
                found = m_frames.takeAt(i);
            }
        }
        return found || m_socket->state() == QAbstractSocket::UnconnectedState;
    }));
    return found;
}

QJsonObject RawClient::takeEvent(const QString &name)
{
    return take("event"_L1, name).value_or(QJsonObject()).value("payload"_L1).toObject();
}

QString RawClient::send(const QString &method, const QJsonObject &params)
{
    const QString requestId = QUuid::createUuid().toString(QUuid::WithoutBraces);
    const QJsonObject frame {
        {u"type"_s, u"req"_s}, {u"id"_s, requestId}, {u"method"_s, method}, {u"params"_s, params}};
    m_socket->sendTextMessage(QString::fromUtf8(QJsonDocument(frame).toJson()));
    return requestId;
}

QJsonObject RawClient::takeResponse(const QString &requestId)
{
    return take("id"_L1, requestId).value_or(QJsonObject());
}

QJsonObject RawClient::call(const QString &method, const QJsonObject &params)
{
    return takeResponse(send(method, params));
}

bool RawClient::logIn()
{
    const QString nonce = takeEvent(u"connect.challenge"_s).value("nonce"_L1).toString();
    const DeviceKey key;
    return outcome(call(u"connect"_s, connectParams(key, {.nonce = nonce}))) == "ok"_L1;
}

QString outcome(const QJsonObject &response)
{
    if (response.value("type"_L1) != "res"_L1) {
        return u"no response"_s;
    }
    return response.value("ok"_L1).toBool()
        ? u"ok"_s
        : response.value("error"_L1).toObject().value("message"_L1).toString();
}

} // namespace bram::test
