// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "system/PeerUsers.h"

#include <QByteArray>

#include <sys/types.h>

namespace bram
{

/// Looks the users up in the kernel's lists of TCP sockets. Two of them count: that of the socket at the
/// other end, which has been accepted once the peer has said something, and that of the listening one, which
/// may be closed by then. Users of another user namespace all look like the user "nobody", a stranger.
class ProcPeerUsers final : public PeerUsers
{
public:
    explicit ProcPeerUsers(QString folder = QStringLiteral("/proc/net"));
    ProcPeerUsers(QString folder, uid_t ourUser);

    std::optional<QString> strangerBehind(const TcpEnds &ends) const override;

private:
    std::optional<uid_t> strangerIn(const QByteArray &list, const TcpEnds &ends) const;

    QString m_folder;
    uid_t m_ourUser;
};

} // namespace bram
