// SPDX-License-Identifier: Apache-2.0
#include "system/TcpSocketState.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/stat.h>

namespace bram
{

std::optional<quint64> closedTcpSocket(qintptr descriptor)
{
    tcp_info info = {};
    socklen_t size = sizeof info;
    struct stat status = {};
    const int number = static_cast<int>(descriptor);
    if (number < 0 || getsockopt(number, IPPROTO_TCP, TCP_INFO, &info, &size) != 0
        || info.tcpi_state != TCP_CLOSE || fstat(number, &status) != 0) {
        return std::nullopt;
    }
    return status.st_ino;
}

} // namespace bram
