// SPDX-License-Identifier: Apache-2.0
#include "system/Files.h"

#include "system/SystemErrors.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
std::unexpected<Error> failure(const QString &what, const QString &path, int errorNumber)
{
    return std::unexpected(Error {u"%1 %2: %3"_s.arg(what, path, systemErrorText(errorNumber))});
}

std::unexpected<Error> refusal(const QString &path, const QString &why)
{
    return std::unexpected(Error {u"cannot read %1: %2"_s.arg(path, why)});
}
} // namespace

std::expected<QByteArray, Error> readRegularFile(const QString &path, qint64 maxBytes)
{
    // Without O_NONBLOCK, opening a FIFO waits for a writer. It changes nothing for regular files.
    const int descriptor
        = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (descriptor < 0) {
        return failure(u"cannot open"_s, path, errno);
    }
    const EnglishErrorTexts english;
    QFile file;
    if (!file.open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        ::close(descriptor);
        return refusal(path, file.errorString());
    }
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0) {
        return failure(u"cannot read"_s, path, errno);
    }
    if (!S_ISREG(status.st_mode)) {
        return refusal(path, u"not a regular file"_s);
    }
    const auto tooLarge = [&] { return refusal(path, u"larger than %1 bytes"_s.arg(maxBytes)); };
    if (status.st_size > maxBytes) {
        return tooLarge();
    }
    // Counted while reading: the file may grow, and a size of 0 says nothing in /proc. The room is that of the
    // file and not the limit's, which may be a hundred thousand times as much.
    constexpr qint64 leastRoom = 4096;
    QByteArray content;
    qint64 size = 0;
    while (size <= maxBytes) {
        if (size == content.size()) {
            const qint64 room = std::max({qint64(status.st_size) + 1, 2 * size, leastRoom});
            content.resize(std::min(room, maxBytes + 1));
        }
        const qint64 count = file.read(content.data() + size, content.size() - size);
        if (count < 0) {
            return refusal(path, file.errorString());
        }
        if (count == 0) {
            break;
        }
        size += count;
    }
    if (size > maxBytes) {
        return tooLarge();
    }
    content.resize(size);
    return content;
}

std::expected<void, Error> makePrivateFolder(const QString &path)
{
    const QFileInfo folder(path);
    if (folder.isDir()) {
        return {};
    }
    const QString parent = folder.absolutePath();
    if (parent != folder.absoluteFilePath()) {
        if (const auto made = makePrivateFolder(parent); !made) {
            return made;
        }
    }
    // Another process may have made it since; what counts is that it is there.
    if (::mkdir(QFile::encodeName(path).constData(), 0700) != 0) {
        const int errorNumber = errno;
        if (!QFileInfo(path).isDir()) {
            return failure(u"cannot make the folder"_s, path, errorNumber);
        }
    }
    return {};
}

std::expected<void, Error> writeWholeFile(const QString &path, const QByteArray &content)
{
    const auto failed = [&path](const QString &why) {
        return std::unexpected(Error {u"cannot write %1: %2"_s.arg(path, why)});
    };
    const QFileInfo existing(path);
    if (existing.exists() && !existing.isFile()) {
        return failed(u"not a regular file"_s);
    }
    const EnglishErrorTexts english;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        return failed(file.errorString());
    }
    if (!existing.exists()) {
        file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    }
    // Flushed before: a failure to write what is still buffered does not keep commit() from its work.
    if (file.write(content) != content.size() || !file.flush() || !file.commit()) {
        return failed(file.errorString());
    }
    return {};
}

} // namespace bram
