// SPDX-License-Identifier: Apache-2.0
#include "system/linux/XdgFileOpener.h"

#include "system/ChildEnvironment.h"

#include <QFileInfo>
#include <QProcess>
#include <QTimer>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
FileOpened cannotOpen(const QString &path, const QString &why)
{
    return std::unexpected(Error {u"cannot open %1: %2"_s.arg(path, why)});
}

FileOpened opened(const QString &path, int exitCode)
{
    constexpr int commandNotFound = 127; // of setsid, which looks for it
    switch (exitCode) {
    case 0:
        return {};
    case commandNotFound:
        return cannotOpen(path, u"xdg-open (package xdg-utils) is not installed"_s);
    default:
        return cannotOpen(path, u"this desktop has no program for it"_s);
    }
}
} // namespace

XdgFileOpener::XdgFileOpener(std::chrono::milliseconds patience)
    : m_patience(patience)
{
}

Reply<FileOpened> XdgFileOpener::open(const QString &path)
{
    const ReplySource<FileOpened> source(FileOpened {});
    if (!QFileInfo::exists(path)) {
        source.answer(cannotOpen(path, u"it is not there"_s));
        return source.reply();
    }
    // In a session of its own, with a process in between: the end of ours would end our child.
    auto *process = new QProcess(this);
    process->setProcessEnvironment(childEnvironment());
    process->setProgram(u"setsid"_s);
    process->setArguments({u"--fork"_s, u"--wait"_s, u"xdg-open"_s, path});
    process->setStandardInputFile(QProcess::nullDevice());
    process->setStandardOutputFile(QProcess::nullDevice());
    process->setStandardErrorFile(QProcess::nullDevice());
    connect(process, &QProcess::finished, process,
            [process, source, path](int exitCode, QProcess::ExitStatus) {
                source.answer(opened(path, exitCode));
                process->deleteLater();
            });
    connect(process, &QProcess::errorOccurred, process,
            [process, source, path](QProcess::ProcessError error) {
                if (error == QProcess::FailedToStart) {
                    source.answer(cannotOpen(path, process->errorString()));
                    process->deleteLater();
                }
            });
    QTimer::singleShot(m_patience, process, [process, source] {
        source.answer({});
        process->kill(); // only the one in between
    });
    process->start();
    return source.reply();
}

} // namespace bram
