// SPDX-License-Identifier: Apache-2.0

// A second program that edits exec-approvals files: `allowlist_writer FOLDER NAME COUNT` registers the
// commands "NAME 0" to "NAME COUNT-1", one at a time.

#include "allowlist/ExecApprovalsFiles.h"
#include "support/Doubles.h"

#include <QCoreApplication>

#include <cstdio>

using namespace Qt::StringLiterals;

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    bram::test::RecordingLog log;
    bram::ExecApprovalsFiles files(arguments.value(1), log);
    for (int i = 0; i < arguments.value(3).toInt(); ++i) {
        if (!files.appendCommands({arguments.value(2) + u' ' + QString::number(i)})) {
            std::fprintf(stderr, "%s\n", qPrintable(log.lines().join(u'\n')));
            return 1;
        }
    }
    return 0;
}
