// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QHostAddress>
#include <QString>

#include <optional>

namespace bram
{

/// The two ends of a TCP connection, seen from this one.
struct TcpEnds {
    QHostAddress local;
    quint16 localPort = 0;
    QHostAddress peer;
    quint16 peerPort = 0;
};

/// Tells whose program is at the other end of a connection, where that is on this machine too. A port above
/// 1023 belongs to whoever listens on it first.
class PeerUsers
{
public:
    virtual ~PeerUsers() = default;

    /// The name of the user that the peer belongs to, if that is neither root nor the user of this program.
    /// Nothing also when it cannot be known: the peer is on another machine, or the connection was
    /// redirected to where we do not see it, which only root can do.
    virtual std::optional<QString> strangerBehind(const TcpEnds &ends) const = 0;
};

} // namespace bram
