// SPDX-License-Identifier: Apache-2.0
#include "app/SingleInstanceLock.h"

#include "config/Environment.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
/// What keeps this user from locking what lies at a path or was opened there; empty for nothing.
QString obstacle(const struct stat &info)
{
    return info.st_uid != geteuid() ? u"it belongs to another user"_s
        : !S_ISREG(info.st_mode)    ? u"it is no regular file"_s
                                    : QString();
}

QString folderObstacle(const QString &folder)
{
    struct stat info = {};
    if (lstat(QFile::encodeName(folder).constData(), &info) != 0) {
        return qt_error_string(errno);
    }
    return !S_ISDIR(info.st_mode)                                ? u"it is no folder"_s
        : info.st_uid != geteuid() || (info.st_mode & 077U) != 0 ? u"it is not this user's alone"_s
                                                                 : QString();
}

std::optional<qint64> processIn(int fd)
{
    std::array<char, 24> text {};
    const ssize_t size = pread(fd, text.data(), text.size(), 0);
    bool isNumber = false;
    const qint64 process
        = QByteArray(text.data(), std::max<ssize_t>(size, 0)).trimmed().toLongLong(&isNumber);
    return isNumber && process > 0 ? std::optional(process) : std::nullopt;
}

/// For the copy that finds it locked; the lock holds without it.
void writeProcess(int fd)
{
    const QByteArray text = QByteArray::number(getpid()) + '\n';
    if (ftruncate(fd, 0) == 0) {
        [[maybe_unused]] const ssize_t written
            = pwrite(fd, text.constData(), static_cast<std::size_t>(text.size()), 0);
    }
}
} // namespace

SingleInstanceLock::Paths SingleInstanceLock::Paths::of(const Environment &environment)
{
    if (const auto named = environment.trimmed(u"BRACKWEN_APPROVALS_LOCK_FILE"_s)) {
        return {.usual = *named};
    }
    // A copy that was started without the variable has to meet one that was started with it.
    const QString folder = environment.trimmed(u"XDG_RUNTIME_DIR"_s)
                               .value_or(u"/run/user/"_s + QString::number(geteuid()));
    return {.own = folder + u"/BrackwenApprovalsMenu.lock"_s};
}

SingleInstanceLock::SingleInstanceLock(Paths paths)
    : m_paths(std::move(paths))
{
}

SingleInstanceLock::~SingleInstanceLock()
{
    release();
}

void SingleInstanceLock::release()
{
    for (const int fd : std::exchange(m_descriptors, {})) {
        close(fd);
    }
    m_path.clear();
}

SingleInstanceLock::Result SingleInstanceLock::acquire()
{
    if (!m_descriptors.empty()) {
        return Result::Acquired;
    }
    m_reason.clear();
    if (lock(m_paths.usual) == Attempt::HeldElsewhere) {
        return Result::HeldByAnotherCopy;
    }
    if (!m_paths.own.isEmpty()) {
        const QString folder = QFileInfo(m_paths.own).path();
        if (const QString why = folderObstacle(folder); !why.isEmpty()) {
            explain(folder, why);
        } else if (lock(m_paths.own) == Attempt::HeldElsewhere) {
            release();
            return Result::HeldByAnotherCopy;
        }
    }
    return m_descriptors.empty() ? Result::Impossible : Result::Acquired;
}

void SingleInstanceLock::explain(const QString &path, const QString &why)
{
    m_reason += (m_reason.isEmpty() ? QString() : u"; "_s) + path + u": "_s + why;
}

SingleInstanceLock::Attempt SingleInstanceLock::lock(const QString &path)
{
    const QByteArray name = QFile::encodeName(path);
    const auto unusable = [&](const QString &why) {
        explain(path, why);
        return Attempt::Unusable;
    };
    struct stat info = {};
    // Asked before it is opened, because the system refuses to open some of these with a vaguer word.
    if (lstat(name.constData(), &info) == 0 && !obstacle(info).isEmpty()) {
        return unusable(obstacle(info));
    }
    // Never through a symbolic link: in a folder everybody may write to, it could point anywhere.
    const int fd = open(name.constData(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK,
                        S_IRUSR | S_IWUSR);
    if (fd < 0) {
        return unusable(qt_error_string(errno));
    }
    // What was opened may not be what lay there a moment before.
    const QString why = fstat(fd, &info) == 0 ? obstacle(info) : qt_error_string(errno);
    if (!why.isEmpty()) {
        close(fd);
        return unusable(why);
    }
    if (flock(fd, LOCK_EX | LOCK_NB) != 0) {
        const int error = errno;
        m_holder = processIn(fd);
        close(fd);
        return error == EWOULDBLOCK ? Attempt::HeldElsewhere : unusable(qt_error_string(error));
    }
    writeProcess(fd);
    m_descriptors.push_back(fd);
    m_path = m_path.isEmpty() ? path : m_path;
    return Attempt::Locked;
}

} // namespace bram
