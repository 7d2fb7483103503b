// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

namespace bram::bench
{

/// The real core, which allows every request as soon as it is displayed. Its audit log goes to
/// `folder`, its log lines to syslog and to standard error. Returns when told to end.
int runCoreClient(const QString &url, const QString &folder);

/// The least program that does the same: finds the id in the frame, puts it into a canned answer and
/// sends that. Keeps nothing, checks nothing.
int runFloorClient(const QString &url);

} // namespace bram::bench
