// SPDX-License-Identifier: Apache-2.0
#include "app/SingleInstanceLock.h"

#include <QFile>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace bram
{

namespace
{
bool belongsToAnotherUser(const QByteArray &path)
{
    struct stat info = {};
    return lstat(path.constData(), &info) == 0 && info.st_uid != geteuid();
}

/// Never through a symbolic link: in a folder everybody may write to, it could point anywhere.
int openLockFile(const QByteArray &path)
{
    return open(path.constData(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK,
                S_IRUSR | S_IWUSR);
}

/// What was opened may not be what lay there a moment before.
bool isOwnRegularFile(int fd)
{
    struct stat info = {};
    return fstat(fd, &info) == 0 && S_ISREG(info.st_mode) && info.st_uid == geteuid();
}
} // namespace

SingleInstanceLock::SingleInstanceLock(const QString &lockPath)
    : m_lockPath(lockPath)
{
}

SingleInstanceLock::~SingleInstanceLock()
{
    if (m_fd >= 0) {
        close(m_fd);
    }
}

bool SingleInstanceLock::acquire()
{
    if (isHeld()) {
        return true;
    }
    QByteArray path = QFile::encodeName(m_lockPath);
    if (belongsToAnotherUser(path)) {
        path += '.' + QByteArray::number(geteuid());
    }
    const int fd = openLockFile(path);
    if (fd < 0) {
        return false;
    }
    if (!isOwnRegularFile(fd) || flock(fd, LOCK_EX | LOCK_NB) != 0) {
        close(fd);
        return false;
    }
    m_fd = fd;
    m_lockPath = QFile::decodeName(path);
    return true;
}

} // namespace bram
