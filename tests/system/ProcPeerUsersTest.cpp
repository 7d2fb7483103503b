// SPDX-License-Identifier: Apache-2.0
#include "system/linux/ProcPeerUsers.h"

#include <QFile>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <unistd.h>

using namespace bram;
using namespace Qt::StringLiterals;

namespace
{

constexpr uid_t us = 1000;
const QHostAddress loopback(QHostAddress::LocalHost);
const QHostAddress loopbackV6(QHostAddress::LocalHostIPv6);

/// A row of the kernel's list, as this machine's order of bytes writes it.
QByteArray row(const char *ends, const char *state, const char *user)
{
    return QByteArray("   0: ") + ends + ' ' + state + " 00000000:00000000 00:00000000 00000000 "
        + user + "        0 1 1 0\n";
}

} // namespace

TEST(ProcPeerUsers, FindsTheStrangerBehindALocalPort)
{
    const TcpEnds v4 {loopback, 40000, loopback, 18789};
    const TcpEnds mapped {QHostAddress(u"::ffff:127.0.0.1"_s), 40000,
                          QHostAddress(u"::ffff:127.0.0.1"_s), 18789};
    const TcpEnds v6 {loopbackV6, 40000, loopbackV6, 18789};
    const TcpEnds remote {QHostAddress(u"192.0.2.5"_s), 40000, QHostAddress(u"192.0.2.1"_s), 18789};
    const char *listens = "0100007F:4965 00000000:0000";
    const char *accepted = "0100007F:4965 0100007F:9C40";
    const char *ownEnd = "0100007F:9C40 0100007F:4965";
    const char *any = "00000000:4965 00000000:0000";
    const char *any6
        = "00000000000000000000000000000000:4965 00000000000000000000000000000000:0000";
    const char *accepted6 = "00000000000000000000000001000000:4965 "
                            "00000000000000000000000001000000:9C40";
    const char *accepted46 = "0000000000000000FFFF00000100007F:4965 "
                             "0000000000000000FFFF00000100007F:9C40";
    const struct {
        const char *name;
        QByteArray rows;
        TcpEnds ends;
        bool isStranger;
    } cases[] {
        {"nothing is known", "", v4, false},
        {"root listens", row(listens, "0A", "0"), v4, false},
        {"we listen", row(listens, "0A", "1000"), v4, false},
        {"another listens", row(listens, "0A", "1001"), v4, true},
        {"another listens everywhere", row(any, "0A", "1001"), v4, true},
        {"on every IPv6 address", row(any6, "0A", "1001"), v4, true},
        {"at another port", row("0100007F:4966 00000000:0000", "0A", "1001"), v4, false},
        {"a connection of another's from that port",
         row("0100007F:4965 0100007F:0016", "01", "1001"), v4, false},
        {"has closed the listening one", row(ownEnd, "01", "1000") + row(accepted, "01", "1001"),
         v4, true},
        {"mapped", row(accepted46, "01", "1001"), v4, true},
        {"mapped here", row(accepted, "01", "1001"), mapped, true},
        {"IPv6", row(accepted6, "01", "1001"), v6, true},
        {"IPv6, ours", row(accepted6, "01", "1000"), v6, false},
        {"a local port that is not asked about", row(any, "0A", "1001"), remote, false},
        {"nonsense", "  1: zz:zz 0A\n0100007F:4965\n\n", v4, false},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        QTemporaryDir folder;
        QFile list(folder.filePath(u"tcp6"_s));
        ASSERT_TRUE(list.open(QFile::WriteOnly));
        list.write("  sl  local_address rem_address   st ...\n" + c.rows);
        list.close();
        EXPECT_EQ(ProcPeerUsers(folder.path(), us).strangerBehind(c.ends).has_value(),
                  c.isStranger);
    }
}

TEST(ProcPeerUsers, ReadsThisMachine)
{
    QTcpServer server;
    ASSERT_TRUE(server.listen(loopback));
    QTcpSocket socket;
    socket.connectToHost(loopback, server.serverPort());
    ASSERT_TRUE(socket.waitForConnected());
    ASSERT_TRUE(server.waitForNewConnection(1000));
    const TcpEnds ends {socket.localAddress(), socket.localPort(), socket.peerAddress(),
                        socket.peerPort()};
    EXPECT_EQ(ProcPeerUsers().strangerBehind(ends), std::nullopt);
    // Root is nobody's stranger, everybody else is one to another user.
    EXPECT_EQ(ProcPeerUsers(u"/proc/net"_s, geteuid() + 1).strangerBehind(ends).has_value(),
              geteuid() != 0);
}
