// SPDX-License-Identifier: Apache-2.0
#include "system/FileReplacement.h"

#include "system/Files.h"
#include "system/SystemErrors.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <limits>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr int lockPatienceMs = 3000;
constexpr int lockStepMs = 2;
/// How often a file is put back that yet another program keeps replacing.
constexpr int mostExchanges = 20;

std::unexpected<Error> failure(const QString &what, const QString &path)
{
    return std::unexpected(Error {u"%1 %2: %3"_s.arg(what, path, systemErrorText(errno))});
}

/// A new file beside another one, gone at the end unless it was renamed.
class Sibling
{
public:
    explicit Sibling(const QString &path)
        : m_path(QFile::encodeName(QFileInfo(path).absolutePath() + u"/.bram-XXXXXX"_s))
        , m_descriptor(::mkostemp(m_path.data(), O_CLOEXEC))
    {
    }
    ~Sibling()
    {
        if (m_descriptor >= 0) {
            ::close(m_descriptor);
            if (!m_isRenamed) {
                ::unlink(m_path.constData());
            }
        }
    }
    Q_DISABLE_COPY_MOVE(Sibling)

    bool isOpen() const { return m_descriptor >= 0; }
    const char *path() const { return m_path.constData(); }

    bool takeOver(const struct stat &facts)
    {
        struct stat own = {};
        if (::fstat(m_descriptor, &own) != 0) {
            return false;
        }
        const bool isOwners = own.st_uid == facts.st_uid && own.st_gid == facts.st_gid;
        return (isOwners || ::fchown(m_descriptor, facts.st_uid, facts.st_gid) == 0)
            && ::fchmod(m_descriptor, facts.st_mode & 07777) == 0;
    }

    bool write(QByteArrayView content)
    {
        while (!content.isEmpty()) {
            const auto written
                = ::write(m_descriptor, content.data(), static_cast<size_t>(content.size()));
            if (written < 0 && errno != EINTR) {
                return false;
            }
            content = content.sliced(std::max<qsizetype>(written, 0));
        }
        return ::fsync(m_descriptor) == 0;
    }

    bool renameTo(const QString &target)
    {
        m_isRenamed = ::rename(path(), QFile::encodeName(target).constData()) == 0;
        return m_isRenamed;
    }

    bool exchangeWith(const QString &target)
    {
        return ::renameat2(AT_FDCWD, path(), AT_FDCWD, QFile::encodeName(target).constData(),
                           RENAME_EXCHANGE)
            == 0;
    }

private:
    QByteArray m_path;
    int m_descriptor;
    bool m_isRenamed = false;
};

std::expected<QByteArray, Error> contentOf(const QString &path)
{
    return readRegularFile(path, std::numeric_limits<int>::max() - 1);
}

/// Where the two cannot be exchanged in one step (some network file systems).
std::expected<Replacement, Error> compareAndRename(Sibling &sibling, const QString &target,
                                                   const QByteArray &expected)
{
    if (contentOf(target) != expected) {
        return Replacement::ChangedMeanwhile;
    }
    if (!sibling.renameTo(target)) {
        return failure(u"cannot replace"_s, target);
    }
    return Replacement::Done;
}
} // namespace

std::expected<void, Error> writePrivateFile(const QString &path, const QByteArray &content)
{
    const QFileInfo info(path);
    const QString target = info.isSymLink() && info.exists() ? info.canonicalFilePath() : path;
    if (const QFileInfo there(target); there.exists() && !there.isFile()) {
        return std::unexpected(Error {u"cannot write %1: %2"_s.arg(
            target, there.isDir() ? u"it is a folder"_s : u"not a regular file"_s)});
    }
    Sibling sibling(target);
    if (!sibling.isOpen() || !sibling.write(content) || !sibling.renameTo(target)) {
        return failure(u"cannot write"_s, target);
    }
    return {};
}

std::expected<Replacement, Error> replaceFile(const QString &path, const QByteArray &expected,
                                              const QByteArray &content)
{
    const QString target = QFileInfo(path).canonicalFilePath();
    struct stat facts = {};
    if (target.isEmpty() || ::stat(QFile::encodeName(target).constData(), &facts) != 0) {
        return failure(u"cannot write"_s, path);
    }
    if (!S_ISREG(facts.st_mode)) {
        return std::unexpected(Error {u"cannot write %1: not a regular file"_s.arg(path)});
    }
    if ((facts.st_mode & 0222) == 0 || ::access(QFile::encodeName(target).constData(), W_OK) != 0) {
        return std::unexpected(Error {u"cannot write %1: it is write-protected"_s.arg(path)});
    }
    Sibling sibling(target);
    if (!sibling.isOpen() || !sibling.takeOver(facts) || !sibling.write(content)) {
        return failure(u"cannot write"_s, path);
    }
    if (!sibling.exchangeWith(target)) {
        return compareAndRename(sibling, target, expected);
    }
    // The sibling is now what the file was. If that is not what was expected, it goes back; and so on
    // for what others have put there in between, until what comes out is what was put in last.
    const QString sideways = QFile::decodeName(sibling.path());
    auto held = contentOf(sideways);
    if (held == expected) {
        return Replacement::Done;
    }
    std::expected<QByteArray, Error> lastPutIn = content;
    for (int i = 0; i < mostExchanges; ++i) {
        if (!sibling.exchangeWith(target)) {
            return failure(u"cannot write"_s, path);
        }
        auto cameOut = contentOf(sideways);
        if (cameOut == lastPutIn) {
            break;
        }
        lastPutIn = std::exchange(held, std::move(cameOut));
    }
    return Replacement::ChangedMeanwhile;
}

std::expected<FolderLock, Error> FolderLock::acquire(const QString &folder)
{
    const int descriptor
        = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) {
        return failure(u"cannot open"_s, folder);
    }
    FolderLock lock(descriptor);
    const QDeadlineTimer deadline(lockPatienceMs);
    while (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) {
            return failure(u"cannot lock"_s, folder);
        }
        if (deadline.hasExpired()) {
            return std::unexpected(Error {u"cannot lock %1: another program has it"_s.arg(folder)});
        }
        QThread::msleep(lockStepMs);
    }
    return lock;
}

FolderLock::FolderLock(FolderLock &&other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1))
{
}

FolderLock::~FolderLock()
{
    if (m_descriptor >= 0) {
        ::close(m_descriptor);
    }
}

} // namespace bram
