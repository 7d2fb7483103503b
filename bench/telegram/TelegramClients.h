// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "telegram/TelegramApprovalEntry.h"

#include <QList>
#include <QString>

namespace bram::bench
{

inline constexpr int burstRequests = 1000;
inline constexpr int burstMs = 1000;

/// The pending list after so many requests, the newest first, as long as the program keeps it.
QList<TelegramApprovalEntry> pendingAfter(int requests);

/// The bridge with three chats. A line of input makes the requests arrive; then it prints when the last
/// one came, in milliseconds since the epoch. Returns when told to end.
int runBridgeClient(const QString &url, const QString &token, const QList<qint64> &chatIds);

/// The least program that waits for updates: one call after the other, and nothing is done with the answer.
int runFloorPoller(const QString &url, const QString &token);

} // namespace bram::bench
