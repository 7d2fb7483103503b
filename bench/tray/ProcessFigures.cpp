// SPDX-License-Identifier: Apache-2.0
#include "tray/ProcessFigures.h"

#include <QDir>
#include <QFile>

namespace bram::bench
{

using namespace Qt::StringLiterals;

namespace
{
/// The sum of the numbers behind the labels that end with `label` in such a file of the kernel's.
qint64 sumOf(const QString &path, const QByteArray &label)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return 0;
    }
    qint64 sum = 0;
    for (const QByteArray &line : file.readAll().split('\n')) {
        const qsizetype colon = line.indexOf(':');
        if (colon > 0 && line.left(colon).endsWith(label)) {
            sum += line.mid(colon + 1).simplified().split(' ').value(0).toLongLong();
        }
    }
    return sum;
}
} // namespace

double proportionalMebibytes(qint64 pid)
{
    return static_cast<double>(sumOf(u"/proc/%1/smaps_rollup"_s.arg(QString::number(pid)), "Pss"))
        / 1024;
}

ThreadSwitches threadSwitches(qint64 pid)
{
    ThreadSwitches switches;
    const QString tasks = u"/proc/%1/task"_s.arg(QString::number(pid));
    for (const QString &id : QDir(tasks).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        switches.insert(id, sumOf(u"%1/%2/status"_s.arg(tasks, id), "_ctxt_switches"));
    }
    return switches;
}

qint64 switchesBetween(const ThreadSwitches &before, const ThreadSwitches &after)
{
    qint64 count = 0;
    for (auto it = after.begin(); it != after.end(); ++it) {
        count += it.value() - before.value(it.key());
    }
    for (auto it = before.begin(); it != before.end(); ++it) {
        count += after.contains(it.key()) ? 0 : 1;
    }
    return count;
}

} // namespace bram::bench
