// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QJsonObject>
#include <QList>
#include <QString>
#include <QUrl>
#include <QWebSocket>

#include <memory>
#include <optional>

namespace bram::test
{

/// A device key made for one test, which signs what a client would sign.
class DeviceKey
{
public:
    DeviceKey();

    QString id() const;
    QString publicKey() const;
    QString sign(const QString &payload) const;

private:
    QByteArray m_publicKey;
    QByteArray m_secretKey;
};

struct HandshakeParts {
    std::optional<QString> nonce {};
    QString signedToken {}; ///< as the client has it configured, blanks included
    QJsonObject auth {}; ///< empty: no auth field
};

/// The parameters of a handshake without a fault.
QJsonObject connectParams(const DeviceKey &key, const HandshakeParts &parts = {});

/// A client made of nothing but a socket: frames go out as a test writes them, and come in as they are.
class RawClient
{
public:
    /// Opens the connection; see `isOpen`. An empty origin sends the one a client derives from the URL.
    explicit RawClient(const QUrl &url, const QString &origin = {});

    bool isOpen() const;
    bool waitClosed();

    /// Waits for the event and takes its payload out of what came in; empty when it does not come.
    QJsonObject takeEvent(const QString &name);

    /// Sends a request and gives its response frame; empty when none comes.
    QJsonObject call(const QString &method, const QJsonObject &params);
    QString send(const QString &method, const QJsonObject &params);
    QJsonObject takeResponse(const QString &requestId);

    /// Handshake with the challenge's nonce and no secrets; whether it succeeded.
    bool logIn();

    QWebSocket &socket() { return *m_socket; }
    QStringList texts; ///< text frames, as they came
    QList<QByteArray> binaries;

private:
    std::optional<QJsonObject> take(QLatin1StringView key, const QString &value);

    QList<QJsonObject> m_frames;
    std::unique_ptr<QWebSocket> m_socket;
};

/// `error.message` of a response frame, or "ok".
QString outcome(const QJsonObject &response);

} // namespace bram::test
