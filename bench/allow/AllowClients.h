// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

namespace bram::bench
{

/// The command that the core of `runAllowingClient` has on its always-allow list.
extern const QString allowedCommand;

/// The real core, which answers by its always-allow list. Its state goes to `folder`, its log lines to syslog
/// and to standard error. Returns when told to end.
int runAllowingClient(const QString &url, const QString &folder);

/// How long loading and merging takes with so many entries in both lists, half of them shared.
double loadingMs(const QString &folder, int entries);

} // namespace bram::bench
