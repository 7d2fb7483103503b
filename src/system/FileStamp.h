// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

namespace bram
{

/// What tells one content of a file from another without reading it. A file that is not there has one, too.
struct FileStamp {
    quint64 device = 0;
    quint64 inode = 0;
    qint64 size = -1;
    qint64 modifiedNs = 0;

    /// Of the file that the path leads to.
    static FileStamp of(const QString &path);

    bool operator==(const FileStamp &) const = default;
};

} // namespace bram
