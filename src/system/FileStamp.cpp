// SPDX-License-Identifier: Apache-2.0
#include "system/FileStamp.h"

#include <QFile>

#include <sys/stat.h>

namespace bram
{

FileStamp FileStamp::of(const QString &path)
{
    struct stat status = {};
    if (::stat(QFile::encodeName(path).constData(), &status) != 0) {
        return {};
    }
    return {.device = status.st_dev,
            .inode = status.st_ino,
            .size = status.st_size,
            .modifiedNs = status.st_mtim.tv_sec * 1'000'000'000LL + status.st_mtim.tv_nsec};
}

} // namespace bram
