// SPDX-License-Identifier: Apache-2.0
#include "practice/PracticeHttpConnection.h"

#include <QTcpSocket>

#include <sys/socket.h>

namespace bram
{

namespace
{
constexpr qsizetype maxHeaderBytes = 16 * 1024;
constexpr qsizetype maxBodyBytes = 1024 * 1024;

QByteArray reasonPhrase(int status)
{
    switch (status) {
    case 200:
        return "OK";
    case 400:
        return "Bad Request";
    case 401:
        return "Unauthorized";
    case 404:
        return "Not Found";
    case 409:
        return "Conflict";
    case 413:
        return "Payload Too Large";
    case 429:
        return "Too Many Requests";
    case 502:
        return "Bad Gateway";
    default:
        return "Answer";
    }
}

QByteArray headerValue(const QList<QByteArray> &lines, const QByteArray &name)
{
    for (const QByteArray &line : lines) {
        const qsizetype colon = line.indexOf(':');
        if (colon > 0 && line.left(colon).trimmed().compare(name, Qt::CaseInsensitive) == 0) {
            return line.mid(colon + 1).trimmed();
        }
    }
    return {};
}
} // namespace

PracticeHttpConnection::PracticeHttpConnection(QTcpSocket *socket, QObject *parent)
    : QObject(parent)
    , m_socket(socket)
{
    m_socket->setParent(this);
    m_socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    connect(m_socket, &QTcpSocket::readyRead, this, &PracticeHttpConnection::read);
    connect(
        m_socket, &QTcpSocket::disconnected, this,
        [this] {
            m_isClosed = true;
            Q_EMIT closed();
        },
        Qt::QueuedConnection);
}

void PracticeHttpConnection::answer(int status, const QByteArray &contentType,
                                    const QByteArray &body, Delivery delivery)
{
    if (m_isClosed) {
        return;
    }
    QByteArray bytes = "HTTP/1.1 " + QByteArray::number(status) + ' ' + reasonPhrase(status)
        + "\r\nContent-Type: " + contentType
        + "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n";
    bytes += delivery == Delivery::Whole ? body : body.left(body.size() / 2);
    m_socket->write(bytes);
    if (delivery == Delivery::CutInBody) {
        m_socket->disconnectFromHost();
        return;
    }
    m_isAnswering = false;
    // Not from within the handling of the request that has just been answered.
    QMetaObject::invokeMethod(this, &PracticeHttpConnection::read, Qt::QueuedConnection);
}

void PracticeHttpConnection::reset()
{
    if (m_isClosed) {
        return;
    }
    // Without lingering, the end of a connection is a reset.
    const linger none {.l_onoff = 1, .l_linger = 0};
    setsockopt(static_cast<int>(m_socket->socketDescriptor()), SOL_SOCKET, SO_LINGER, &none,
               sizeof none);
    m_socket->abort();
}

void PracticeHttpConnection::read()
{
    if (m_isClosed) {
        return;
    }
    m_received += m_socket->readAll();
    PracticeHttpRequest request;
    if (!m_isAnswering && takeRequest(request)) {
        m_isAnswering = true;
        Q_EMIT requestReceived(request);
    }
}

bool PracticeHttpConnection::takeRequest(PracticeHttpRequest &request)
{
    const qsizetype headerEnd = m_received.indexOf("\r\n\r\n");
    if (headerEnd < 0) {
        if (m_received.size() > maxHeaderBytes) {
            refuse(400);
        }
        return false;
    }
    QList<QByteArray> lines = m_received.left(headerEnd).split('\n');
    const QList<QByteArray> words = lines.takeFirst().trimmed().split(' ');
    bool isNumber = true;
    const QByteArray length = headerValue(lines, "Content-Length");
    const qsizetype bodyBytes = length.isEmpty() ? 0 : length.toLongLong(&isNumber);
    if (words.size() != 3 || !isNumber || bodyBytes < 0
        || !headerValue(lines, "Transfer-Encoding").isEmpty()) {
        refuse(400);
        return false;
    }
    if (bodyBytes > maxBodyBytes) {
        refuse(413);
        return false;
    }
    const qsizetype bodyBegin = headerEnd + 4;
    if (m_received.size() < bodyBegin + bodyBytes) {
        return false;
    }
    request = {.method = words.at(0),
               .path = words.at(1),
               .contentType = headerValue(lines, "Content-Type"),
               .body = m_received.mid(bodyBegin, bodyBytes)};
    m_received.remove(0, bodyBegin + bodyBytes);
    return true;
}

void PracticeHttpConnection::refuse(int status)
{
    m_received.clear();
    answer(status, "text/plain", reasonPhrase(status));
    m_socket->disconnectFromHost();
}

} // namespace bram
