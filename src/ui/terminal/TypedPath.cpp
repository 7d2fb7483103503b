// SPDX-License-Identifier: Apache-2.0
#include "ui/terminal/TypedPath.h"

#include "system/Files.h"
#include "ui/terminal/TerminalTr.h"

#include <QDir>
#include <QFileInfo>

namespace bram
{

QString absoluteTypedPath(const QString &typed)
{
    const bool isInHome = typed == u'~' || typed.startsWith(QStringLiteral("~/"));
    const QString path = isInHome ? QDir::homePath() + typed.sliced(1) : typed;
    return QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}

std::expected<QString, Error> usableTypedPath(const QString &typed, FileQuestion::Kind kind)
{
    const QString path = absoluteTypedPath(typed);
    const QFileInfo there(path);
    const auto fault
        = [&path](const QString &what) { return std::unexpected(Error {what + path}); };
    switch (kind) {
    case FileQuestion::Kind::SaveFile:
        if (there.isDir()) {
            return fault(TerminalTr::tr("This is a folder: "));
        }
        if (!QFileInfo(there.absolutePath()).isDir()) {
            return fault(TerminalTr::tr("There is no folder for this file: "));
        }
        break;
    case FileQuestion::Kind::OpenFile:
        if (!there.isFile()) {
            return fault(TerminalTr::tr("There is no such file: "));
        }
        break;
    case FileQuestion::Kind::Folder:
        if (there.exists() && !there.isDir()) {
            return fault(TerminalTr::tr("This is not a folder: "));
        }
        if (!makePrivateFolder(path)) {
            return fault(TerminalTr::tr("This folder cannot be made: "));
        }
        break;
    }
    return path;
}

} // namespace bram
