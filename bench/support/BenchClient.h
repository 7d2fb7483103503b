// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QCommandLineParser>

#include <csignal>

#include <sys/prctl.h>

namespace bram::bench
{

/// The options with which a benchmark starts itself once more, as one of its clients.
inline QList<QCommandLineOption> clientOptions()
{
    using namespace Qt::StringLiterals;
    return {
        {u"client"_s, u"Used by the benchmark itself: which client to be."_s, u"NAME"_s},
        {u"url"_s, u"Used by the benchmark itself: where to connect."_s, u"URL"_s},
    };
}

/// Which client this process is, empty for none. One that is goes when its server does.
inline QString clientRole(const QCommandLineParser &parser)
{
    const QString role = parser.value(QStringLiteral("client"));
    if (!role.isEmpty()) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
    }
    return role;
}

} // namespace bram::bench
