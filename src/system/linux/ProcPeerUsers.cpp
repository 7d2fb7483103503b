// SPDX-License-Identifier: Apache-2.0
#include "system/linux/ProcPeerUsers.h"

#include <QFile>
#include <QtEndian>

#include <array>
#include <cstring>

#include <pwd.h>
#include <unistd.h>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr uid_t root = 0;
constexpr QByteArrayView listening("0A");

struct Endpoint {
    QHostAddress address;
    quint16 port = 0;

    bool operator==(const Endpoint &) const = default;
};

/// An IPv4 address that is written as an IPv6 one is the same address.
QHostAddress plain(const QHostAddress &address)
{
    bool isV4 = false;
    const quint32 v4 = address.toIPv4Address(&isV4);
    QHostAddress found = isV4 ? QHostAddress(v4) : address;
    found.setScopeId({});
    return found;
}

/// "0100007F:4955": the address as words in the processor's order of bytes, each of eight digits.
std::optional<Endpoint> endpointFrom(const QByteArray &text)
{
    constexpr qsizetype wordDigits = 8;
    const qsizetype colon = text.indexOf(':');
    if (colon != wordDigits && colon != 4 * wordDigits) {
        return std::nullopt;
    }
    bool isNumber = false;
    const quint16 port = text.sliced(colon + 1).toUShort(&isNumber, 16);
    std::array<quint32, 4> words {};
    for (qsizetype i = 0; isNumber && i < colon / wordDigits; ++i) {
        words.at(static_cast<std::size_t>(i))
            = text.sliced(i * wordDigits, wordDigits).toUInt(&isNumber, 16);
    }
    if (!isNumber) {
        return std::nullopt;
    }
    if (colon == wordDigits) {
        return Endpoint {QHostAddress(qFromBigEndian(words[0])), port};
    }
    Q_IPV6ADDR bytes;
    std::memcpy(bytes.c, words.data(), sizeof bytes.c);
    return Endpoint {plain(QHostAddress(bytes)), port};
}

bool isAnyAddress(const QHostAddress &address)
{
    return address == QHostAddress(QHostAddress::AnyIPv4)
        || address == QHostAddress(QHostAddress::AnyIPv6);
}

QString nameOf(uid_t user)
{
    const passwd *entry = getpwuid(user);
    const QString id = u"id "_s + QString::number(user);
    return entry != nullptr ? QString(QString::fromLocal8Bit(entry->pw_name) + u", "_s + id) : id;
}
} // namespace

ProcPeerUsers::ProcPeerUsers(QString folder)
    : ProcPeerUsers(std::move(folder), geteuid())
{
}

ProcPeerUsers::ProcPeerUsers(QString folder, uid_t ourUser)
    : m_folder(std::move(folder))
    , m_ourUser(ourUser)
{
}

std::optional<QString> ProcPeerUsers::strangerBehind(const TcpEnds &ends) const
{
    for (const QString &name : {u"/tcp"_s, u"/tcp6"_s}) {
        QFile list(m_folder + name);
        if (!list.open(QIODevice::ReadOnly)) {
            continue;
        }
        if (const auto stranger = strangerIn(list.readAll(), ends)) {
            return nameOf(*stranger);
        }
    }
    return std::nullopt;
}

std::optional<uid_t> ProcPeerUsers::strangerIn(const QByteArray &list, const TcpEnds &ends) const
{
    enum Column { LocalAddress = 1, RemoteAddress = 2, State = 3, User = 7 };
    const Endpoint local {plain(ends.local), ends.localPort};
    const Endpoint peer {plain(ends.peer), ends.peerPort};
    const bool isLoopback = peer.address.isLoopback();
    for (const QByteArray &line : list.split('\n')) {
        const QList<QByteArray> fields = line.simplified().split(' ');
        if (fields.size() <= User) {
            continue;
        }
        const auto here = endpointFrom(fields[LocalAddress]);
        if (!here || here->port != peer.port) {
            continue;
        }
        const bool isListener = fields[State] == listening && isLoopback
            && (here->address == peer.address || isAnyAddress(here->address));
        const bool isOtherEnd = *here == peer && endpointFrom(fields[RemoteAddress]) == local;
        bool isNumber = false;
        const uid_t user = fields[User].toUInt(&isNumber);
        if ((isListener || isOtherEnd) && isNumber && user != root && user != m_ourUser) {
            return user;
        }
    }
    return std::nullopt;
}

} // namespace bram
