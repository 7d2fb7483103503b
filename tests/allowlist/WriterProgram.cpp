// SPDX-License-Identifier: Apache-2.0

// A second program that edits exec-approvals files: `allowlist_writer FOLDER NAME COUNT` registers the
// commands "NAME 0" to "NAME COUNT-1", one at a time.

#include "allowlist/ExecApprovalsFiles.h"
#include "support/Doubles.h"
#include "support/Waiting.h"

#include <QCoreApplication>
#include <QThread>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace
{
constexpr unsigned long pauseMs = 25;
}

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    bram::test::RecordingLog log;
    bram::ExecApprovalsFiles files(arguments.value(1), log);
    for (int i = 0; i < arguments.value(3).toInt(); ++i) {
        const QString command = arguments.value(2) + u' ' + QString::number(i);
        if (!bram::test::waitFor(files.appendCommandsToExecApprovalsFiles({command})).isChanged) {
            std::fprintf(stderr, "%s\n", qPrintable(log.lines().join(u'\n')));
            return 1;
        }
        // Whoever asks again at once always comes before those who wait for the lock, as no real program does.
        QThread::msleep(pauseMs);
    }
    return 0;
}
