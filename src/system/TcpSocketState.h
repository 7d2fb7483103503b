// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtGlobal>

#include <optional>

namespace bram
{

/// A number of its own for the TCP socket behind `descriptor`, if its connection is over or has never begun;
/// nothing for one that is connecting or connected, and for what is no such socket. Changes nothing about it.
std::optional<quint64> closedTcpSocket(qintptr descriptor);

} // namespace bram
